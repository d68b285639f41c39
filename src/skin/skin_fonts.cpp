#include "skin/skin_fonts.h"

#include <QFontDatabase>
#include <QFontMetrics>
#include <algorithm>
#include <array>

#include "skin/skin_scale.h"

namespace marrowfin {

namespace {
std::array<QFont, 8>& Fonts() {
    static std::array<QFont, 8> fonts;
    return fonts;
}
bool g_fontsMade = false;
}  // namespace

int FontHeightForRate(float rate) {
    if (rate <= 1.0f) return 18;
    int base = static_cast<int>(18.0f * rate);
    if (rate < 2.0f) return base - static_cast<int>(10.0f * rate) % 10;
    return base - 10;
}

QStringList PreferredFontFamilies() {
    return {QStringLiteral("Microsoft YaHei"), QStringLiteral("Noto Sans CJK SC"),
            QStringLiteral("WenQuanYi Micro Hei")};
}

QString SkinFontFamily() {
    static const QString family = [] {
        const QStringList installed = QFontDatabase::families();
        for (const QString& name : PreferredFontFamilies()) {
            if (installed.contains(name, Qt::CaseInsensitive)) return name;
        }
        return QFontDatabase::systemFont(QFontDatabase::GeneralFont).family();
    }();
    return family;
}

bool HasCjkFont() {
    if (!PreferredFontFamilies().contains(SkinFontFamily(), Qt::CaseInsensitive)) return false;
    QFontMetrics metrics(QFont(SkinFontFamily(), 12));
    return metrics.inFont(QChar(0x753B));  // 画
}

namespace {
// Microsoft YaHei's cell (Windows ascent plus descent) over its em. The panel's
// captions were laid out for that face; a stand-in with a tighter cell would
// get a larger em from the same cell height and run wider than the room left
// for them.
constexpr int kYaHeiCellPer100Em = 132;
}  // namespace

int PixelSizeForCellHeight(int cellHeight) {
    // A positive height names the character cell (ascent plus descent), not
    // the em: find the largest pixel size whose cell still fits, and for a
    // stand-in face no larger than YaHei's em in that cell.
    int largest = std::max(1, cellHeight);
    if (SkinFontFamily().compare(QStringLiteral("Microsoft YaHei"), Qt::CaseInsensitive) != 0)
        largest = std::max(1, cellHeight * 100 / kYaHeiCellPer100Em);
    QFont probe(SkinFontFamily());
    probe.setPixelSize(100);
    const int cellAt100 = std::max(1, QFontMetrics(probe).height());
    int size = std::min(largest, std::max(1, cellHeight * 100 / cellAt100 + 1));
    while (size > 1) {
        probe.setPixelSize(size);
        if (QFontMetrics(probe).height() <= cellHeight) break;
        --size;
    }
    return size;
}

int FontCellHeight(SkinFont which) {
    static const int extra[8] = {0, 0, 0, 2, 2, 4, 4, 12};
    return FontHeightForRate(Rate()) + extra[static_cast<int>(which)];
}

void MakeSkinFonts(float rate) {
    const int h = FontHeightForRate(rate);
    struct Recipe {
        int height;
        int weight;
        bool underline;
    };
    const Recipe recipes[8] = {{h, 400, false},     {h, 400, true},      {h, 700, false},     {h + 2, 400, false},
                               {h + 2, 700, false}, {h + 4, 400, false}, {h + 4, 700, false}, {h + 12, 400, false}};
    for (int i = 0; i < 8; ++i) {
        QFont font(SkinFontFamily());
        font.setStyleHint(QFont::SansSerif, QFont::PreferQuality);
        font.setPixelSize(PixelSizeForCellHeight(recipes[i].height));
        font.setWeight(recipes[i].weight == 700 ? QFont::Bold : QFont::Normal);
        font.setUnderline(recipes[i].underline);
        font.setKerning(true);
        Fonts()[i] = font;
    }
    g_fontsMade = true;
}

const QFont& Font(SkinFont which) {
    if (!g_fontsMade) MakeSkinFonts(1.0f);
    return Fonts()[static_cast<int>(which)];
}

}  // namespace marrowfin
