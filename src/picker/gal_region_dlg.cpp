#include "picker/gal_region_dlg.h"

#include <QFontMetrics>
#include <QPainter>

#include "picker/picker_state.h"
#include "skin/sel_typeclass_button.h"
#include "skin/skin_fonts.h"
#include "skin/skin_scale.h"

namespace marrowfin {

namespace {
constexpr int kTabKind = 3;
constexpr int kFirstTabId = 5002;
}  // namespace

std::u16string CurrentKind(const KindMap& kinds, const std::u16string& remembered) {
    for (const auto& [key, items] : kinds)
        if (KindName(key) == remembered) return remembered;
    return kinds.empty() ? std::u16string() : KindName(kinds.begin()->first);
}

CGalFullTypeDlg::CGalFullTypeDlg(QWidget* region, const KindMap& kinds, bool isBoutique,
                                 std::function<void(CSelTypeclassButton*)> onSelect)
    : QWidget(region), m_isBoutique(isBoutique) {
    const std::u16string& current = isBoutique ? g_curBoutiqueKind : g_curGeneralKind;
    const QFontMetrics metrics(Font(SkinFont::Normal));
    const int height = ScaleUnits(40);
    int x = 0, id = kFirstTabId;
    for (const auto& [key, items] : kinds) {
        const std::u16string name = KindName(key);
        auto* tab = new CSelTypeclassButton(this);
        const QString caption = QString::fromStdU16String(name);
        const int width = metrics.horizontalAdvance(caption) + 2 * ScaleUnits(28);
        tab->Create(caption, true, QRect(x, 0, width, height), this, id++);
        tab->kind = kTabKind;
        tab->boutique = isBoutique ? 1 : 0;
        const auto seen = g_seenKinds.find(name);
        if (seen != g_seenKinds.end()) {
            tab->version = QString::fromStdU16String(seen->second.newest);
            // A kind first met in this run counts as seen at its newest version.
            if (isBoutique && seen->second.seen.empty()) seen->second.seen = seen->second.newest;
            tab->kindIsNew = isBoutique && seen->second.seen != seen->second.newest;
        }
        if (name == current) {
            tab->checked = 1;
            m_curTab = tab;
        }
        connect(tab, &QAbstractButton::clicked, this, [onSelect, tab] { onSelect(tab); });
        m_tabs.push_back(tab);
        x += width + ScaleUnits(10);
    }
    resize(x, height);
    show();
}

void CGalFullTypeDlg::paintEvent(QPaintEvent*) { QPainter(this).fillRect(rect(), Qt::white); }

CGalRegionDlg::CGalRegionDlg(QWidget* parent, const KindMap& kinds, bool isBoutique,
                             std::function<void(CSelTypeclassButton*)> onSelect)
    : QWidget(parent), m_isBoutique(isBoutique) {
    m_pStrip = new CGalFullTypeDlg(this, kinds, isBoutique, std::move(onSelect));
    m_overflow = m_pStrip->StripWidth() > ScaleUnits(800);
}

void CGalRegionDlg::ScrollStrip(int direction) {
    const QRect strip = m_pStrip->geometry();
    int step = ScaleUnits(50);
    if (direction > 0) {
        if (strip.left() >= 0) return;
        step = std::min(step, -strip.left());
    } else {
        const int overhang = strip.x() + strip.width() - width();
        if (overhang <= 0) return;
        step = std::min(step, overhang);
    }
    m_pStrip->move(strip.x() + direction * step, strip.y());
}

void CGalRegionDlg::paintEvent(QPaintEvent*) { QPainter(this).fillRect(rect(), Qt::white); }

}  // namespace marrowfin
