#pragma once
// A block found by a search, as the data side knows it: the panel turns hits
// into its rows. States are the rows' states.

#include <cstdint>
#include <string>

namespace marrowfin {

enum BlockRowState : int {
    RowFresh = 0,  // local, not collected: "收藏", "使用"
    RowCollected = 1,  // local and collected: "使用"
    RowDownloading = 2,  // queued or running
    RowFailed = 3,  // download failed; lasts 3 seconds
    RowFetched = 4,  // in the search cache, not collected
    RowRemote = 5,  // not downloaded
};

struct SearchHit {
    std::u16string name;  // file name
    std::u16string klass;  // top class (the gallery), or "我的收藏"
    std::u16string subclass;  // class within it
    std::u16string url;  // empty for a local hit
    std::u16string path;  // where the file is or goes
    int32_t size = 0;
    bool boutique = false;
    bool prefetch = true;  // a row in view may fetch its file quietly
    int state = RowFresh;
};

// What tells one row from another for the download queue: rows are the same
// row when name, class, url and path agree.
struct RowKey {
    std::u16string name;
    std::u16string klass;
    std::u16string url;
    std::u16string path;
    bool operator==(const RowKey&) const = default;
};

}  // namespace marrowfin
