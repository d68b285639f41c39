#include "panel/lists/dwg_list_view.h"

#include <QFontMetrics>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QWheelEvent>
#include <algorithm>
#include <memory>
#include <unordered_map>

#include "panel/lists/list_scroller.h"
#include "panel/model/panel_messages.h"
#include "panel/preview/fit_thumbnail.h"
#include "panel/preview/preview_loader.h"
#include "platform/files.h"
#include "platform/qt/qt_window_system.h"
#include "platform/qt/window_message_event.h"
#include "skin/measure_text.h"
#include "skin/scroll_bar_ex.h"
#include "skin/skin_fonts.h"
#include "skin/skin_scale.h"
#include "skin/skin_sheet.h"

namespace marrowfin {

namespace {

// Cell geometry in base units: the spacing of the grid and the picture.
constexpr int kSpacingX = 148;
constexpr int kSpacingY = 112;
constexpr int kPictureTop = 2;
constexpr int kLabelGap = 3;
constexpr int kNameUnits = 132;
constexpr int kNameCutUnits = 132 - 5;
// Fitted previews kept beyond the shown cells: a few screens of scrolling back
// and forth cost no reading, and a long list never holds more than this. The
// read-ahead (a screen below and one above) fits in it, so what was read
// ahead is not dropped before it shows.
constexpr int kMinCachedCells = 48;
constexpr int kCachedScreens = 3;
constexpr int kReadAheadScreens = 1;

const QColor kSelectedBlue(0x2a, 0x75, 0xe5);
const QColor kBoutiqueGold(0xbb, 0x9d, 0x6a);
const QColor kTileVeil(0x2b, 0x7e, 0xec, 0x4c);

// What a cell shows: until its preview comes back it shows the spinner.
enum class Shown : uint8_t { Pending, Preview, PageMark, Spinner };

// The two placeholders fitted once per rate and shared by every cell.
const QImage& FittedPlaceholder(bool missing) {
    static float fittedAt[2] = {-1.0f, -1.0f};
    static QImage fitted[2];
    const int k = missing ? 1 : 0;
    if (fittedAt[k] != Rate()) {
        fittedAt[k] = Rate();
        const QImage& source =
            SkinPicture(missing ? QStringLiteral("placeholder_b") : QStringLiteral("placeholder_a"), true);
        fitted[k] = FitThumbnail(source, 0, 0, Rate());
    }
    return fitted[k];
}

}  // namespace

struct CDWGListView::Impl {
    explicit Impl(CDWGListView* self)
        : self(self), scroller(self, [self] { self->update(); }),
          loader(std::make_unique<PreviewLoader>([this](PreviewResult result) { Arrived(std::move(result)); })) {}

    struct Cached {
        QImage picture;
    };

    CDWGListView* self;
    std::vector<std::u16string> paths;
    std::vector<uint8_t> states;
    std::vector<Shown> shown;
    std::unordered_map<int, QString> renamed;
    std::unordered_map<int, Cached> cache;
    int selected = -1;
    int hintFirst = 0, hintLast = -1;
    bool hintDirty = true;
    bool drawPictures = true;
    // Bumped when the paths are replaced: what the loader still brings of an
    // older listing is dropped.
    uint64_t generation = 0;
    ListScroller scroller;
    // Last, so that it is joined before the rest goes.
    std::unique_ptr<PreviewLoader> loader;

    int Count() const { return static_cast<int>(paths.size()); }
    bool IsItem(int i) const { return i >= 0 && i < Count(); }

    int CellWidth() const { return ScaleUnits(kSpacingX); }
    int CellHeight() const { return ScaleUnits(kSpacingY); }
    int Columns() const {
        // The bar's width is always kept free, so the columns do not jump
        // when the bar comes and goes.
        const int usable = self->width() - scroller.Bar()->width();
        return std::max(1, usable / std::max(1, CellWidth()));
    }
    int Rows() const { return (Count() + Columns() - 1) / Columns(); }
    void Relayout() { scroller.Relayout(Rows(), CellHeight()); }

    QRect ItemRect(int i) const {
        if (!IsItem(i)) return {};
        const int cols = Columns();
        return QRect((i % cols) * CellWidth(), scroller.Window().RowTop(i / cols), CellWidth(), CellHeight());
    }
    QRect IconRect(int i) const {
        const QRect cell = ItemRect(i);
        if (cell.isEmpty()) return {};
        const int w = ScaleUnits(kThumbnailWidthUnits), h = ScaleUnits(kThumbnailHeightUnits);
        return QRect(cell.x() + (cell.width() - w) / 2, cell.y() + ScaleUnits(kPictureTop), w, h);
    }
    QRect LabelRect(int i) const {
        const QRect icon = IconRect(i);
        if (icon.isEmpty()) return {};
        const QFontMetrics metrics(Font(SkinFont::Normal));
        const int cell = CellWidth();
        const int width = std::min(cell - 4, metrics.horizontalAdvance(Name(i)) + 4);
        return QRect(icon.center().x() - width / 2 + 1, icon.bottom() + 1 + ScaleUnits(kLabelGap), width,
                     metrics.height() + 2);
    }
    int ItemAt(QPoint p) const {
        if (p.x() < 0 || p.x() >= Columns() * CellWidth() || p.x() >= scroller.RowsRight()) return -1;
        const int row = scroller.Window().RowAt(p.y());
        if (row < 0) return -1;
        const int i = row * Columns() + p.x() / CellWidth();
        return IsItem(i) ? i : -1;
    }
    int FirstVisible() const { return scroller.Window().first * Columns(); }
    int LastVisible() const {
        // The rows that show at least a part.
        const RowWindow& w = scroller.Window();
        const int rows = (w.clientHeight + w.rowHeight - 1) / w.rowHeight;
        return std::min(Count(), (w.first + rows) * Columns()) - 1;
    }

    QString Name(int i) const {
        auto hit = renamed.find(i);
        if (hit != renamed.end()) return hit->second;
        const std::u16string& path = paths[static_cast<size_t>(i)];
        // The tile's caption stands as the service gave it; the paint elides it.
        QString tileName;
        if (TileAt(i, nullptr, &tileName)) return tileName;
        return FitName(TitleOf(path));
    }
    // The owner's tile in the first cell, when that cell is the tile's.
    bool TileAt(int i, QImage* picture, QString* name) const {
        if (i != 0 || !IsItem(0) || !paths[0].empty() || !self->tileAtZero) return false;
        QImage unused;
        QString caption;
        if (!self->tileAtZero(picture ? picture : &unused, &caption)) return false;
        if (name) *name = caption;
        return true;
    }

    // What a shown cell asks of its path: the report of a missing or cut file.
    void AskForFile(int i) {
        if (isScanBusy()) return;
        const std::u16string& path = paths[static_cast<size_t>(i)];
        if (path.empty() || IsArriving(path)) return;  // the tile cell, or on its way
        if (FileExists(path)) {
            const int64_t size = FileSize(path);
            if (size < 0 || size >= kFailedDownloadBytes) return;
            (void)RemoveFile(path);
        }
        if (QWidget* owner = self->parentWidget())
            (void)PostWindowMessage(HandleOf(owner), MsgPanelEvent, PanelEvent::ThumbMissing, i);
    }
    bool isScanBusy() const { return self->isScanBusy && self->isScanBusy(); }
    bool IsArriving(const std::u16string& path) const { return self->isArriving && self->isArriving(path); }

    // The cache hint for the shown range: the loader is handed the shown
    // cells that still need their preview, then a screen of read-ahead on
    // either side; what it had queued for other cells is dropped. Nothing is
    // read here.
    void Hint(int first, int last) {
        std::vector<PreviewJob> jobs;
        auto want = [&](int i) {
            if (!IsItem(i)) return;
            const size_t k = static_cast<size_t>(i);
            const std::u16string& path = paths[k];
            if (path.empty()) return;
            // Final: a preview dropped from the cache is read again, a page
            // mark stays without a look at the file.
            if (states[k] == kStateFinal && (shown[k] == Shown::PageMark || cache.count(i))) return;
            if (IsArriving(path)) {
                shown[k] = Shown::Spinner;  // part-written: the refresh after it lands asks again
                return;
            }
            jobs.push_back({i, path});
        };
        for (int i = first; i <= last; ++i) want(i);
        const int screen = std::max(0, last - first + 1) * kReadAheadScreens;
        for (int i = last + 1; i <= last + screen; ++i) want(i);
        for (int i = first - 1; i >= first - screen; --i) want(i);
        loader->Want(generation, std::move(jobs), Rate());
        hintFirst = first;
        hintLast = last;
        hintDirty = false;
        Trim();
    }
    // A preview back from the loader; a file without one is tried twice, then
    // shows the page mark for good; a missing file keeps its state, so that
    // the next hint tries again.
    void Arrived(PreviewResult result) {
        const int i = result.item;
        // An old listing's result, or a cell renamed meanwhile: not this cell's.
        if (result.generation != generation || !IsItem(i)) return;
        const size_t k = static_cast<size_t>(i);
        if (paths[k] != result.path) return;
        switch (result.outcome) {
            case PreviewOutcome::Picture:
                cache[i].picture = std::move(result.picture);
                states[k] = kStateFinal;
                shown[k] = Shown::Preview;
                break;
            case PreviewOutcome::NoPicture:
                cache.erase(i);
                if (states[k] != kStateFinal) states[k] = states[k] == kStateFresh ? kStateTriedOnce : kStateFinal;
                shown[k] = Shown::PageMark;
                break;
            case PreviewOutcome::Missing:
                cache.erase(i);
                shown[k] = Shown::Spinner;
                break;
        }
        Trim();
        self->update(ItemRect(i));
    }
    // Drops the previews farthest from the shown range beyond the cache's size.
    void Trim() {
        const int capacity = std::max(kMinCachedCells, kCachedScreens * (hintLast - hintFirst + 1));
        if (static_cast<int>(cache.size()) <= capacity) return;
        std::vector<std::pair<int, int>> byDistance;  // distance, item
        byDistance.reserve(cache.size());
        for (const auto& [i, entry] : cache) {
            const int distance = i < hintFirst ? hintFirst - i : (i > hintLast ? i - hintLast : 0);
            byDistance.emplace_back(distance, i);
        }
        std::sort(byDistance.begin(), byDistance.end(), std::greater<>());
        for (size_t n = 0; n < byDistance.size() && static_cast<int>(cache.size()) > capacity; ++n) {
            const int i = byDistance[n].second;
            cache.erase(i);
            if (IsItem(i)) shown[static_cast<size_t>(i)] = Shown::Pending;
        }
    }

    const QImage* PictureOf(int i) const {
        auto hit = cache.find(i);
        if (hit != cache.end()) return &hit->second.picture;
        const Shown s = shown[static_cast<size_t>(i)];
        if (s == Shown::PageMark) return &FittedPlaceholder(false);
        return &FittedPlaceholder(true);
    }

    void Select(int i, bool notify) {
        if (!IsItem(i)) i = -1;
        if (i != selected) {
            // The label and the bar below it repaint on both items.
            for (int item : {selected, i})
                if (IsItem(item)) self->update(ItemRect(item));
            selected = i;
        }
        if (notify && IsItem(i)) Post(MsgPanelCommand, PanelCommand::SelectionChanged, i);
    }
    void Post(uint32_t message, std::uintptr_t code, int item) {
        if (QWidget* owner = self->parentWidget()) (void)PostWindowMessage(HandleOf(owner), message, code, item);
    }

    void PaintCell(QPainter& painter, int i);
};

void CDWGListView::Impl::PaintCell(QPainter& painter, int i) {
    const QRect icon = IconRect(i);
    const bool isSelected = i == selected;
    QImage tilePicture;
    QString tileName;
    if (TileAt(i, &tilePicture, &tileName)) {
        // The picture stretched over the whole icon, whatever its size.
        painter.drawImage(icon, tilePicture);
        const QRect label = LabelRect(i);
        if (isSelected) {
            painter.fillRect(icon, kTileVeil);
            painter.fillRect(QRect(label.left(), label.bottom() + 1, label.width(), 3), kSelectedBlue);
            painter.fillRect(label, Qt::white);
            painter.setFont(Font(SkinFont::Bold));
            painter.setPen(kSelectedBlue);
        } else {
            painter.fillRect(label, Qt::white);
            painter.setFont(Font(SkinFont::Normal));
            painter.setPen(Qt::black);
        }
        const QRect text = label.adjusted(-6, -4, 6, 3);
        painter.drawText(text, Qt::AlignCenter | Qt::TextSingleLine,
                         painter.fontMetrics().elidedText(tileName, Qt::ElideRight, text.width()));
        return;
    }

    const size_t k = static_cast<size_t>(i);
    if (drawPictures && !paths[k].empty()) {
        if (const QImage* picture = PictureOf(i); picture && !picture->isNull()) {
            // A placeholder is smaller than the cell at some rates: centre it.
            const QPoint at(icon.x() + (icon.width() - picture->width()) / 2,
                            icon.y() + (icon.height() - picture->height()) / 2);
            painter.drawImage(at, *picture);
        }
    }

    const bool boutique = self->isBoutique && self->isBoutique(i);
    const QString name = Name(i);
    const QRect label = LabelRect(i);
    if (isSelected) {
        const QColor colour = boutique ? kBoutiqueGold : kSelectedBlue;
        painter.fillRect(QRect(label.left(), label.bottom() + 1, label.width(), 3), colour);
        painter.fillRect(label, Qt::white);
        painter.setFont(Font(SkinFont::Bold));
        painter.setPen(colour);
        const QRect text = label.adjusted(-6, -4, 6, 3);
        painter.drawText(text, Qt::AlignCenter | Qt::TextSingleLine,
                         painter.fontMetrics().elidedText(name, Qt::ElideRight, text.width()));
    } else {
        painter.setFont(Font(SkinFont::Normal));
        painter.setPen(Qt::black);
        painter.drawText(label, Qt::AlignCenter | Qt::TextSingleLine, name);
    }
    if (boutique) {
        // The crown in the picture's upper left corner.
        const QRect crown(icon.x() + ScaleUnits(12), icon.y() + ScaleUnits(7), ScaleUnits(16), ScaleUnits(16));
        DrawSheetCell(painter, crown, 352, 88, 16, 16);
    }
}

CDWGListView::CDWGListView(QWidget* parent) : QWidget(parent), m_impl(new Impl(this)) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFocusPolicy(Qt::ClickFocus);
}

CDWGListView::~CDWGListView() { delete m_impl; }

void CDWGListView::SetPaths(const std::vector<std::u16string>& paths) {
    // A new set of items: states, names, pictures and the selection start
    // afresh; nothing is read from disk here.
    Impl& d = *m_impl;
    d.paths = paths;
    d.states.assign(paths.size(), kStateFresh);
    d.shown.assign(paths.size(), Shown::Pending);
    d.renamed.clear();
    d.cache.clear();
    d.selected = -1;
    d.hintDirty = true;
    // The old listing's jobs go now, not at the next paint.
    ++d.generation;
    d.loader->Want(d.generation, {}, Rate());
    d.Relayout();
    d.scroller.SetFirst(0);
    update();
}

int CDWGListView::GetItemCount() const { return m_impl->Count(); }

int CDWGListView::GetSelectedItem() const { return m_impl->selected; }

void CDWGListView::SetSelectedItem(int item) { m_impl->Select(item, false); }

void CDWGListView::EnsureVisible(int item) {
    if (!m_impl->IsItem(item)) return;
    m_impl->scroller.EnsureVisible(item / m_impl->Columns());
}

std::u16string CDWGListView::GetPath(int item) const {
    return m_impl->IsItem(item) ? m_impl->paths[static_cast<size_t>(item)] : std::u16string();
}

void CDWGListView::SetPath(int item, const std::u16string& path) {
    if (!m_impl->IsItem(item)) return;
    m_impl->paths[static_cast<size_t>(item)] = path;
}

void CDWGListView::RenameItem(int item, const QString& name) {
    if (!m_impl->IsItem(item)) return;
    m_impl->renamed[item] = FitName(name);
    update(ItemRect(item));
}

void CDWGListView::RedrawItem(int item) {
    if (!m_impl->IsItem(item)) return;
    // The next hint runs over the shown range; a final item stays as it is.
    m_impl->hintDirty = true;
    update(ItemRect(item));
}

int CDWGListView::ItemState(int item) const {
    return m_impl->IsItem(item) ? m_impl->states[static_cast<size_t>(item)] : -1;
}

QRect CDWGListView::ItemRect(int item) const { return m_impl->ItemRect(item); }
QRect CDWGListView::IconRect(int item) const { return m_impl->IconRect(item); }
QRect CDWGListView::LabelRect(int item) const { return m_impl->LabelRect(item); }
int CDWGListView::ItemAt(QPoint point) const { return m_impl->ItemAt(point); }
int CDWGListView::FirstVisibleItem() const { return m_impl->FirstVisible(); }
int CDWGListView::LastVisibleItem() const { return m_impl->LastVisible(); }
int CDWGListView::Columns() const { return m_impl->Columns(); }
CScrollBarEx* CDWGListView::ScrollBar() const { return m_impl->scroller.Bar(); }
int CDWGListView::CachedPictures() const { return static_cast<int>(m_impl->cache.size()); }
int CDWGListView::PreviewReads() const { return m_impl->loader->Decodes(); }
bool CDWGListView::PreviewsPending() const { return m_impl->loader->Busy(); }

QImage CDWGListView::CachedPicture(int item) const {
    auto hit = m_impl->cache.find(item);
    return hit == m_impl->cache.end() ? QImage() : hit->second.picture;
}

void CDWGListView::SetPreviewDecoder(PreviewDecoder decoder) { m_impl->loader->SetDecoder(std::move(decoder)); }

void CDWGListView::SetDrawPictures(bool draw) {
    m_impl->drawPictures = draw;
    update();
}

QString CDWGListView::TitleOf(const std::u16string& path) {
    const size_t slash = path.rfind(u'/');
    std::u16string title = slash == std::u16string::npos ? path : path.substr(slash + 1);
    const size_t dot = title.rfind(u'.');
    if (dot != std::u16string::npos) title.resize(dot);
    return QString::fromStdU16String(title);
}

QString CDWGListView::FitName(const QString& title) {
    if (MeasureText(title) <= ScaleUnits(kNameUnits)) return title;
    // The first prefix that passes the cut width, less its last two characters.
    QString cut = title;
    for (qsizetype n = 1; n <= title.size(); ++n) {
        if (MeasureText(title.left(n)) > ScaleUnits(kNameCutUnits)) {
            cut = title.left(std::max<qsizetype>(0, n - 2));
            break;
        }
    }
    return cut.size() < title.size() ? cut + QStringLiteral("...") : cut;
}

bool CDWGListView::event(QEvent* event) {
    if (event->type() == WindowMessageEvent::EventType()) {
        auto* message = static_cast<WindowMessageEvent*>(event);
        if (message->Message() == MsgListRefresh && message->WParam() == 1)
            RedrawItem(static_cast<int>(message->LParam()));
        message->result = 0;
        return true;
    }
    return QWidget::event(event);
}

void CDWGListView::paintEvent(QPaintEvent* event) {
    Impl& d = *m_impl;
    const int first = d.FirstVisible();
    const int last = d.LastVisible();

    // Each painted cell asks for its name and picture first (a cut file goes
    // and is asked for), then the hint hands the shown range to the loader;
    // cells paint what they have, a placeholder until their preview is back.
    std::vector<int> painted;
    for (int i = std::max(0, first); i <= last; ++i)
        if (event->region().intersects(d.ItemRect(i))) painted.push_back(i);
    for (int i : painted) d.AskForFile(i);
    if (d.hintDirty || first != d.hintFirst || last != d.hintLast) d.Hint(first, last);

    QPainter painter(this);
    painter.fillRect(event->rect(), Qt::white);
    for (int i : painted) d.PaintCell(painter, i);
}

void CDWGListView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    m_impl->Relayout();
}

void CDWGListView::mousePressEvent(QMouseEvent* event) {
    const int item = m_impl->ItemAt(event->position().toPoint());
    if (event->button() == Qt::LeftButton) {
        if (item >= 0) {
            m_impl->Select(item, false);
            m_impl->Post(MsgPanelCommand, PanelCommand::SelectionChanged, item);
            m_impl->Post(MsgPanelCommand, PanelCommand::ThumbClicked, item);
        } else {
            m_impl->Select(-1, false);
        }
    } else if (event->button() == Qt::RightButton && item >= 0) {
        const int state = ItemState(item);
        if (state == kStateFinal || state == kStateTriedOnce) m_impl->Post(MsgPanelEvent, PanelEvent::ThumbMenu, item);
    }
    QWidget::mousePressEvent(event);
}

void CDWGListView::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        const QPoint at = event->position().toPoint();
        const int item = m_impl->ItemAt(at);
        if (item >= 0)
            m_impl->Post(MsgPanelCommand,
                         LabelRect(item).contains(at) ? PanelCommand::RenameBlock : PanelCommand::ActivateBlock, item);
    }
    QWidget::mouseDoubleClickEvent(event);
}

void CDWGListView::wheelEvent(QWheelEvent* event) {
    m_impl->scroller.Wheel(*event);
    event->accept();
}

void CDWGListView::keyPressEvent(QKeyEvent* event) {
    Impl& d = *m_impl;
    const int cols = d.Columns();
    int target = d.selected < 0 ? 0 : d.selected;
    switch (event->key()) {
        case Qt::Key_Left: target -= 1; break;
        case Qt::Key_Right: target += 1; break;
        case Qt::Key_Up: target -= cols; break;
        case Qt::Key_Down: target += cols; break;
        case Qt::Key_Home: target = 0; break;
        case Qt::Key_End: target = d.Count() - 1; break;
        default: QWidget::keyPressEvent(event); return;
    }
    if (d.selected >= 0 && !d.IsItem(target)) return;  // the edges hold
    if (!d.IsItem(target)) return;
    d.Select(target, true);
    EnsureVisible(target);
}

}  // namespace marrowfin
