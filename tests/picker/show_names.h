#pragma once
// The class names Show.xml lists, in its order: what the class manager's tests read back.

#include <string>
#include <vector>

#include "store/show_list.h"

namespace marrowfin::test {

inline std::vector<std::u16string> ShowNames() {
    std::vector<std::u16string> names;
    for (const ShowItem& item : ReadAllShowItems()) names.push_back(item.name);
    return names;
}

}  // namespace marrowfin::test
