#pragma once
// Show.xml: the galleries the user has picked, in the order of the tree.

#include <string>
#include <string_view>
#include <vector>

namespace marrowfin {

struct ShowItem {
    std::u16string name;
    std::u16string describe;  // stored by the gallery picker; may be empty
};

// More names than this are ignored.
inline constexpr size_t kShowListLimit = 101;

// The named items of <root>/Show.xml in file order, at most 101; empty items
// neither count nor appear. With createFolders, <root>/<name> is made for
// every item read, an empty one included (that is <root> itself).
std::vector<ShowItem> ReadShowList(bool createFolders);

// Appends a gallery name to Show.xml unless it is listed already, creating
// the store folder and an empty list first when they are missing. False when
// nothing was added (an empty name, already listed, no usable list, or the
// write failed).
bool AddGalleryToShowList(std::u16string_view name);

// Every item of every <root> in file order, empty ones included, without the
// limit: the class manager's working copy starts from exactly what is there.
std::vector<ShowItem> ReadAllShowItems();

// Replaces Show.xml by one <root> holding `items` in their order, each with
// its describe attribute; creates the store folder when missing.
bool WriteShowList(const std::vector<ShowItem>& items);

// What a route finds in Show.xml: the items under the first <root> and
// whether one of them is `name`.
struct ShowListing {
    size_t count = 0;
    bool listed = false;
};
ShowListing CountShowList(std::u16string_view name);

}  // namespace marrowfin
