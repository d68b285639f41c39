#pragma once
// The thumbnail grid's queue: the items reported missing, gathered until a
// quiet moment, and the collections' own mirror files, fetched a few at a
// time. No widgets: the panel runs the timer and the workers.

#include <cstddef>
#include <set>
#include <string>
#include <vector>

namespace marrowfin {

// The mirror's files of the collections' thumbnails and the grid's items
// reported missing: what is asked for next, what waits, what runs.
class ThumbnailQueue {
public:
    // Files of the mirror fetched at once, as for the gallery's thumbnails.
    static constexpr size_t kLanes = 6;

    std::vector<int> toCheck;  // items reported missing since the last scan
    std::vector<std::u16string> waiting;  // mirror files to fetch, in order
    std::vector<std::u16string> running;  // mirror files being fetched
    bool scanBusy = false;

    // An item reported missing; each item once.
    void Report(int item);
    // The scan: the items reported, in order, and the list empty again.
    std::vector<int> TakeReported();
    // A mirror file to fetch; false when it waits already.
    bool Wait(const std::u16string& path);
    // The next mirror file to fetch, or an empty string while every lane runs or none waits.
    std::u16string TakeNext();
    void Run(const std::u16string& path) { running.push_back(path); }
    void Ended(const std::u16string& path);

    // Whether the grid shows `path` as coming: it has not arrived since it was
    // last asked for and a list holds it (the store's or this queue's running one).
    bool Arriving(const std::u16string& path, bool storeHolds) const;
    void Asked(const std::u16string& path) { m_arrived.erase(path); }
    void Arrived(const std::u16string& path);

private:
    std::set<std::u16string> m_arrived;  // finished since last asked for; bounded
};

struct GalleryStore;
// A block goes to the host only when its whole file is on disk: not while the
// download queue still holds its path (that file is about to be written or
// replaced under the host), and not when it is too small to be a block (an
// error page, a cut transfer).
bool BlockFileReady(GalleryStore& store, const std::u16string& path);

}  // namespace marrowfin
