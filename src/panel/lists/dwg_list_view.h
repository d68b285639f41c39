#pragma once
// CDWGListView: the thumbnail grid of the shown class. A virtual list: it
// holds the block paths and one state per item, and asks for names and
// pictures only of the cells it shows. Previews are read from the drawings by
// a PreviewLoader on its workers, the shown range first, then a screen of
// read-ahead; they come back fitted, each repainting its own cell, and are
// kept in a small cache that drops cells scrolled far away. Until then a cell
// shows the spinner placeholder. A missing file keeps it and is reported to
// the owner (MsgPanelEvent 0 with the index); a file that carries no preview
// shows the page placeholder. Painting never reads a drawing.
//
// Mouse: a click on an item posts MsgPanelCommand 1 and 22, a double click 3
// (or 4 on the label), a right click MsgPanelEvent 8 for a tried item, all to
// the owner (the parent widget). MsgListRefresh 1 with an index redraws it.

#include <QImage>
#include <QString>
#include <QWidget>
#include <functional>
#include <string>
#include <vector>

#include "panel/preview/preview_loader.h"

namespace marrowfin {

class CScrollBarEx;

class CDWGListView : public QWidget {
    Q_OBJECT
public:
    // Item states: not tried, tried once without a preview, final.
    static constexpr int kStateFresh = 0;
    static constexpr int kStateFinal = 1;
    static constexpr int kStateTriedOnce = 2;

    explicit CDWGListView(QWidget* parent = nullptr);
    ~CDWGListView() override;

    // The block paths of the shown class; an empty path is the tile cell.
    // Touches no file.
    void SetPaths(const std::vector<std::u16string>& paths);
    int GetItemCount() const;
    int GetSelectedItem() const;  // -1 when none
    void SetSelectedItem(int item);
    void EnsureVisible(int item);
    // The path of an item; empty for no item.
    std::u16string GetPath(int item) const;
    // A renamed block: its new path, then the name to show.
    void SetPath(int item, const std::u16string& path);
    void RenameItem(int item, const QString& name);
    // Redraws one cell and lets its preview load again unless final.
    void RedrawItem(int item);

    int ItemState(int item) const;  // -1 for no item
    // Cell geometry in client pixels; empty rectangles for no item.
    QRect ItemRect(int item) const;
    QRect IconRect(int item) const;
    QRect LabelRect(int item) const;
    int ItemAt(QPoint point) const;  // -1 when on no item
    // The first and last item of the rows in view (last < first when empty).
    int FirstVisibleItem() const;
    int LastVisibleItem() const;
    int Columns() const;
    CScrollBarEx* ScrollBar() const;
    // Fitted previews held now (the cache of the shown range).
    int CachedPictures() const;
    // Previews decoded for this view so far, on the loader's workers.
    int PreviewReads() const;
    // Whether previews are still being read or are on their way back.
    bool PreviewsPending() const;
    // The fitted preview held for an item; null when none is.
    QImage CachedPicture(int item) const;
    // Replaces what the loader's workers run per file (tests count with it).
    void SetPreviewDecoder(PreviewDecoder decoder);
    // The benchmark's peer: cells drawn with their names but no pictures.
    void SetDrawPictures(bool draw);

    // The owner's answers, asked while painting: whether it is scanning the
    // missing thumbnails (no reports meanwhile), whether an item is boutique,
    // and the advertising tile in the first cell (picture and name).
    std::function<bool()> isScanBusy;
    std::function<bool(int item)> isBoutique;
    std::function<bool(QImage* picture, QString* name)> tileAtZero;
    // Whether the file of a path is being fetched right now: a part-written
    // file is neither read for its preview nor deleted as a cut download.
    std::function<bool(const std::u16string& path)> isArriving;

    // The shown name of a file title: whole when it fits a cell, else cut
    // with "..." by the byte-class width rule.
    static QString FitName(const QString& title);
    // The title of a path: behind the last '/', without the extension.
    static QString TitleOf(const std::u16string& path);

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    struct Impl;
    Impl* m_impl;
};

}  // namespace marrowfin
