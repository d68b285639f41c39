#pragma once
// One block of the search and collection-search lists.

#include <QImage>
#include <QString>

#include "search/search_hit.h"

namespace marrowfin {

struct BlockRow {
    QString name;  // file name as the service gives it
    QString klass;  // top class, or "我的收藏" (`class` is a keyword)
    QString subclass;  // subclass, or the collection folder id of a collection row
    QString url;
    QString path;  // full local path of the .dwg
    QImage thumbnail;  // the row's own preview; null until looked for
    bool thumbnailTried = false;
    bool prefetch = true;
    bool boutique = false;
    int size = 0;
    int state = RowFresh;
    int percent = 5;
    int sequence = 0;
    bool workerStarted = false;  // a copy in the download queue whose worker was started
};

// The states whose file is on the disk.
inline bool RowHasFile(int state) { return state == RowFresh || state == RowCollected || state == RowFetched; }

// Rows are the same row when name, class, url and path agree.
inline bool SameRow(const BlockRow& a, const BlockRow& b) {
    return a.name == b.name && a.klass == b.klass && a.url == b.url && a.path == b.path;
}

// Whether `row` is the row of `key`, without building a key for it: the
// lookups run on every progress report, over every listed row.
inline bool RowHasKey(const BlockRow& row, const RowKey& key) {
    const auto same = [](const QString& a, const std::u16string& b) { return QStringView(a) == QStringView(b); };
    return same(row.name, key.name) && same(row.klass, key.klass) && same(row.url, key.url) && same(row.path, key.path);
}

inline RowKey KeyOf(const BlockRow& row) {
    return {row.name.toStdU16String(), row.klass.toStdU16String(), row.url.toStdU16String(), row.path.toStdU16String()};
}

inline BlockRow RowOfHit(const SearchHit& hit) {
    BlockRow row;
    row.name = QString::fromStdU16String(hit.name);
    row.klass = QString::fromStdU16String(hit.klass);
    row.subclass = QString::fromStdU16String(hit.subclass);
    row.url = QString::fromStdU16String(hit.url);
    row.path = QString::fromStdU16String(hit.path);
    row.size = hit.size;
    row.boutique = hit.boutique;
    row.prefetch = hit.prefetch;
    row.state = hit.state;
    return row;
}

}  // namespace marrowfin
