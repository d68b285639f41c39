#include "symbol_painter.h"

#include <QBuffer>
#include <QImage>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace marrowfin::service {

namespace {

const QColor kAccents[] = {QColor(0xC0, 0x30, 0x30), QColor(0x20, 0x60, 0xC0), QColor(0x20, 0x90, 0x40),
                           QColor(0xD0, 0x80, 0x00)};

void DrawDoor(QPainter& p, const QRectF& r, uint32_t v) {
    const double leaf = r.height() * (0.70 + 0.05 * (v % 4));
    const QPointF hinge(r.left() + r.width() * 0.2, r.bottom());
    // Wall stubs either side of the opening.
    p.drawLine(QPointF(r.left(), r.bottom()), hinge);
    p.drawLine(QPointF(hinge.x() + leaf, r.bottom()), QPointF(r.right(), r.bottom()));
    p.drawLine(hinge, QPointF(hinge.x(), r.bottom() - leaf));
    p.drawArc(QRectF(hinge.x() - leaf, r.bottom() - leaf, 2 * leaf, 2 * leaf), 0, 90 * 16);
    if (v % 2) p.drawLine(QPointF(hinge.x() + leaf, r.bottom()), QPointF(hinge.x() + leaf, r.bottom() - leaf / 2));
}

void DrawWindow(QPainter& p, const QRectF& r, uint32_t v) {
    const double y = r.center().y();
    const double depth = r.height() * 0.3;
    p.drawRect(QRectF(r.left(), y - depth / 2, r.width(), depth));
    const int panes = 2 + static_cast<int>(v % 3);
    p.drawLine(QPointF(r.left(), y), QPointF(r.right(), y));
    for (int i = 1; i < panes; ++i) {
        const double x = r.left() + r.width() * i / panes;
        p.drawLine(QPointF(x, y - depth / 2), QPointF(x, y + depth / 2));
    }
}

void DrawSofa(QPainter& p, const QRectF& r, uint32_t v) {
    const QRectF body = r.adjusted(r.width() * 0.05, r.height() * 0.25, -r.width() * 0.05, -r.height() * 0.1);
    p.drawRoundedRect(body, 4, 4);
    p.drawRect(QRectF(body.left(), body.top(), body.width(), body.height() * 0.25));
    const int seats = 2 + static_cast<int>(v % 2);
    const double arm = body.width() * 0.08;
    p.drawRect(QRectF(body.left(), body.top(), arm, body.height()));
    p.drawRect(QRectF(body.right() - arm, body.top(), arm, body.height()));
    const double seatW = (body.width() - 2 * arm) / seats;
    for (int i = 1; i < seats; ++i) {
        const double x = body.left() + arm + seatW * i;
        p.drawLine(QPointF(x, body.top() + body.height() * 0.25), QPointF(x, body.bottom()));
    }
}

void DrawBed(QPainter& p, const QRectF& r, uint32_t v) {
    const double w = r.width() * (v % 2 ? 0.45 : 0.7);
    const QRectF bed(r.center().x() - w / 2, r.top(), w, r.height());
    p.drawRect(bed);
    p.drawLine(QPointF(bed.left(), bed.top() + bed.height() * 0.3),
               QPointF(bed.right(), bed.top() + bed.height() * 0.45));
    const int pillows = v % 2 ? 1 : 2;
    const double pw = (bed.width() - 8) / pillows;
    for (int i = 0; i < pillows; ++i)
        p.drawRoundedRect(QRectF(bed.left() + 4 + i * pw, bed.top() + 4, pw - 4, bed.height() * 0.15), 3, 3);
}

void DrawTable(QPainter& p, const QRectF& r, uint32_t v) {
    const QRectF top = r.adjusted(r.width() * 0.25, r.height() * 0.25, -r.width() * 0.25, -r.height() * 0.25);
    if (v % 2) p.drawEllipse(top);
    else p.drawRect(top);
    const double c = std::min(r.width(), r.height()) * 0.14;
    const QPointF chairs[] = {
        QPointF(top.center().x(), top.top() - c * 0.8), QPointF(top.center().x(), top.bottom() + c * 0.8),
        QPointF(top.left() - c * 0.8, top.center().y()), QPointF(top.right() + c * 0.8, top.center().y())};
    const int n = 2 + static_cast<int>(v % 3);
    for (int i = 0; i < n && i < 4; ++i) p.drawRect(QRectF(chairs[i].x() - c / 2, chairs[i].y() - c / 2, c, c));
}

void DrawToilet(QPainter& p, const QRectF& r, uint32_t v) {
    const double w = r.width() * 0.35;
    const QRectF tank(r.center().x() - w / 2, r.top(), w, r.height() * 0.22);
    p.drawRect(tank);
    const QRectF bowl(r.center().x() - w * 0.4, tank.bottom(), w * 0.8, r.height() * (0.6 + 0.05 * (v % 3)));
    p.drawEllipse(bowl);
    p.drawEllipse(bowl.adjusted(bowl.width() * 0.18, bowl.height() * 0.2, -bowl.width() * 0.18, -bowl.height() * 0.1));
}

void DrawBasin(QPainter& p, const QRectF& r, uint32_t v) {
    const QRectF counter = r.adjusted(r.width() * 0.1, r.height() * 0.2, -r.width() * 0.1, -r.height() * 0.2);
    p.drawRect(counter);
    const int sinks = 1 + static_cast<int>(v % 2);
    const double sw = counter.width() / sinks;
    for (int i = 0; i < sinks; ++i) {
        const QRectF s(counter.left() + i * sw + sw * 0.2, counter.top() + counter.height() * 0.2, sw * 0.6,
                       counter.height() * 0.6);
        p.drawEllipse(s);
        p.drawEllipse(QRectF(s.center().x() - 2, s.center().y() - 2, 4, 4));
    }
}

void DrawLamp(QPainter& p, const QRectF& r, uint32_t v) {
    const double d = std::min(r.width(), r.height()) * (0.5 + 0.08 * (v % 3));
    const QRectF c(r.center().x() - d / 2, r.center().y() - d / 2, d, d);
    p.drawEllipse(c);
    const double k = d * 0.3535;
    p.drawLine(QPointF(c.center().x() - k, c.center().y() - k), QPointF(c.center().x() + k, c.center().y() + k));
    p.drawLine(QPointF(c.center().x() - k, c.center().y() + k), QPointF(c.center().x() + k, c.center().y() - k));
}

void DrawSocket(QPainter& p, const QRectF& r, uint32_t v) {
    const double d = std::min(r.width(), r.height()) * 0.9;
    const QPointF c(r.center().x(), r.center().y() + d * 0.2);
    p.drawArc(QRectF(c.x() - d / 2, c.y() - d / 2, d, d), 0, 180 * 16);
    p.drawLine(QPointF(c.x() - d / 2, c.y()), QPointF(c.x() + d / 2, c.y()));
    p.drawLine(QPointF(c.x(), c.y() - d / 2), QPointF(c.x(), c.y() - d * 0.7));
    if (v % 2) p.drawLine(QPointF(c.x() - d / 2, c.y() + 4), QPointF(c.x() + d / 2, c.y() + 4));
}

void DrawTitleBlock(QPainter& p, const QRectF& r, uint32_t v) {
    p.drawRect(r);
    p.drawRect(r.adjusted(4, 4, -4, -4));
    const QRectF box(r.right() - r.width() * 0.45, r.bottom() - r.height() * 0.3, r.width() * 0.45 - 4,
                     r.height() * 0.3 - 4);
    p.drawRect(box);
    const int rows = 3 + static_cast<int>(v % 2);
    for (int i = 1; i < rows; ++i) {
        const double y = box.top() + box.height() * i / rows;
        p.drawLine(QPointF(box.left(), y), QPointF(box.right(), y));
    }
    p.drawLine(QPointF(box.left() + box.width() * 0.35, box.top()),
               QPointF(box.left() + box.width() * 0.35, box.bottom()));
}

}  // namespace

QImage DrawSymbol(SymbolKind kind, uint32_t variant, int width, int height, bool smooth) {
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter p(&image);
    // The 8-bit previews of drawings are hard-edged line art.
    p.setRenderHint(QPainter::Antialiasing, smooth);
    QPen pen(Qt::black);
    pen.setWidth(1 + static_cast<int>(variant % 2));
    p.setPen(pen);
    const QRectF r(width * 0.1, height * 0.1, width * 0.8, height * 0.8);
    switch (kind) {
        case SymbolKind::Door: DrawDoor(p, r, variant); break;
        case SymbolKind::Window: DrawWindow(p, r, variant); break;
        case SymbolKind::Sofa: DrawSofa(p, r, variant); break;
        case SymbolKind::Bed: DrawBed(p, r, variant); break;
        case SymbolKind::Table: DrawTable(p, r, variant); break;
        case SymbolKind::Toilet: DrawToilet(p, r, variant); break;
        case SymbolKind::Basin: DrawBasin(p, r, variant); break;
        case SymbolKind::Lamp: DrawLamp(p, r, variant); break;
        case SymbolKind::Socket: DrawSocket(p, r, variant); break;
        case SymbolKind::TitleBlock: DrawTitleBlock(p, r, variant); break;
        case SymbolKind::Count: break;
    }
    // A small accent mark so that the colour table is really used.
    p.setPen(Qt::NoPen);
    p.setBrush(kAccents[variant % 4]);
    p.drawRect(QRectF(width - 12, height - 12, 8, 8));
    p.end();
    return image;
}

namespace {

uint8_t CubeLevel(int c) { return static_cast<uint8_t>((c * 5 + 127) / 255); }

void PutLe(std::string& out, uint32_t v, int bytes) {
    for (int i = 0; i < bytes; ++i) out.push_back(static_cast<char>((v >> (8 * i)) & 0xFF));
}

}  // namespace

std::string EncodeDib8(const QImage& source) {
    const QImage image = source.convertToFormat(QImage::Format_RGB32);
    const int w = image.width();
    const int h = image.height();
    const int stride = (w + 3) & ~3;
    std::string out;
    out.reserve(40 + 1024 + static_cast<size_t>(stride) * h);
    PutLe(out, 40, 4);
    PutLe(out, static_cast<uint32_t>(w), 4);
    PutLe(out, static_cast<uint32_t>(h), 4);
    PutLe(out, 1, 2);
    PutLe(out, 8, 2);
    PutLe(out, 0, 4);  // BI_RGB
    PutLe(out, static_cast<uint32_t>(stride * h), 4);
    PutLe(out, 0, 4);
    PutLe(out, 0, 4);
    PutLe(out, 256, 4);
    PutLe(out, 0, 4);
    // Colour table: 216-entry cube, then greys; each entry B, G, R, 0.
    for (int i = 0; i < 216; ++i) {
        const int r = i / 36, g = (i / 6) % 6, b = i % 6;
        out.push_back(static_cast<char>(b * 51));
        out.push_back(static_cast<char>(g * 51));
        out.push_back(static_cast<char>(r * 51));
        out.push_back(0);
    }
    for (int i = 0; i < 40; ++i) {
        const char v = static_cast<char>(i * 255 / 39);
        out.push_back(v);
        out.push_back(v);
        out.push_back(v);
        out.push_back(0);
    }
    for (int y = h - 1; y >= 0; --y) {
        const QRgb* line = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        for (int x = 0; x < w; ++x) {
            const QRgb px = line[x];
            out.push_back(
                static_cast<char>(CubeLevel(qRed(px)) * 36 + CubeLevel(qGreen(px)) * 6 + CubeLevel(qBlue(px))));
        }
        out.append(static_cast<size_t>(stride - w), '\0');
    }
    return out;
}

std::string EncodePng(const QImage& image) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return std::string(bytes.constData(), static_cast<size_t>(bytes.size()));
}

QImage DrawAdTile(uint32_t variant, int width, int height) {
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(kAccents[variant % 4].lighter(170));
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing, true);
    p.setPen(QPen(kAccents[variant % 4], 3));
    p.setBrush(Qt::white);
    p.drawRoundedRect(QRectF(8, 8, width - 16, height - 16), 10, 10);
    p.end();
    QImage symbol = DrawSymbol(static_cast<SymbolKind>(variant % static_cast<uint32_t>(SymbolKind::Count)), variant,
                               height - 24, height - 24);
    QPainter q(&image);
    q.drawImage(QPointF((width - symbol.width()) / 2.0, 12), symbol);
    q.end();
    return image;
}

}  // namespace marrowfin::service
