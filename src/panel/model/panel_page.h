#pragma once
// The four pages of the panel. 0 and 1 both mean the browse page.

namespace marrowfin {

enum PanelPage : int {
    PageBrowse = 1,
    PageCollection = 2,
    PageSearch = 3,
    PageCollectionSearch = 4,
};

inline bool IsSearchPage(int page) { return page == PageSearch || page == PageCollectionSearch; }

}  // namespace marrowfin
