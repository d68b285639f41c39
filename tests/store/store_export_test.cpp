// The export the host calls to add a gallery; built only where the library is.

#include <gtest/gtest.h>

#include "marrowfin/marrowfin.h"
#include "store/show_list.h"
#include "store/store_paths.h"
#include "store_fixture.h"

namespace marrowfin::test {
namespace {

using StoreExport = StoreFixture;

TEST_F(StoreExport, AddMoreGalleryAddsEachNameOnce) {
    RemoveDirectoryTree(StoreRoot());
    AddMoreGallery(u"石材");
    AddMoreGallery(nullptr);  // nothing for a null name
    AddMoreGallery(u"Export");
    AddMoreGallery(u"石材");
    std::vector<std::u16string> names;
    for (const auto& item : ReadShowList(false)) names.push_back(item.name);
    EXPECT_EQ(names, (std::vector<std::u16string>{u"石材", u"Export"}));
}

}  // namespace
}  // namespace marrowfin::test
