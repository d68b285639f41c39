#include "skin/skin_sheet.h"

#include <QHash>
#include <QPainter>

#include "skin/skin_scale.h"

namespace marrowfin {

namespace {
QImage& SheetStore() {
    static QImage sheet;
    return sheet;
}
}  // namespace

const QImage& SkinSheet() { return SheetStore(); }

QString SkinSheetPath() {
    return ModuleFolder() + QStringLiteral("/BrindleSkin/images") + SkinSuffix() + QStringLiteral(".png");
}

bool LoadSkinSheet() { return LoadSkinSheetFrom(SkinSheetPath()); }

bool LoadSkinSheetFrom(const QString& path) {
    QImage image;
    if (!image.load(path, "PNG")) {
        SheetStore() = QImage();
        return false;
    }
    // One format for every draw: premultiplied is what QPainter blends fastest.
    SheetStore() = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    return true;
}

void UnloadSkinSheetForTest() { SheetStore() = QImage(); }

void DrawCell(QPainter& painter, const QRect& target, int x, int y, int width, int height) {
    const QImage& sheet = SkinSheet();
    if (sheet.isNull() || width <= 0 || height <= 0 || target.isEmpty()) return;
    painter.save();
    painter.setRenderHint(QPainter::SmoothPixmapTransform, true);
    painter.drawImage(target, sheet, QRect(x, y, width, height));
    painter.restore();
}

void DrawSheetCell(QPainter& painter, const QRect& target, int x, int y, int width, int height) {
    DrawCell(painter, target, SheetPixels(x), SheetPixels(y), SheetPixels(width), SheetPixels(height));
}

QString SkinPicturePath(const QString& stem, bool withSuffix) {
    return ModuleFolder() + QStringLiteral("/BrindleSkin/") + stem + (withSuffix ? SkinSuffix() : QString()) +
           QStringLiteral(".png");
}

const QImage& SkinPicture(const QString& stem, bool withSuffix) {
    static QHash<QString, QImage> pictures;
    const QString path = SkinPicturePath(stem, withSuffix);
    auto it = pictures.find(path);
    if (it == pictures.end()) {
        QImage image(path, "PNG");
        it = pictures.insert(path, image.isNull() ? image : image.convertToFormat(QImage::Format_ARGB32_Premultiplied));
    }
    return it.value();
}

}  // namespace marrowfin
