// The three close roads (the close button, WM_CLOSE, the save on
// CloseGallery) with the files they leave on disk.

#include "panel_world.h"
#include "store/usage_lists.h"

using namespace marrowfin;
using namespace marrowfin::test;

namespace {

// A block of the sample's first gallery, on disk and put in the recent list.
std::u16string RememberABlock() {
    GalleryStore& store = GalleryStore::Instance();
    for (GalleryNode* cls : store.root->dirChildren[0]->dirChildren) {
        if (cls->fileChildren.empty()) continue;
        GalleryNode* block = cls->fileChildren[0];
        (void)CreateDirectories(cls->Path());
        (void)WriteFileAtomic(block->Path(), std::string(2048, 'x'));
        RememberRecent(store, block->Path(), block->name);
        return block->Path();
    }
    return {};
}

}  // namespace

TEST(PanelWindow, CloseButtonWindowCloseAndTheSaveOnCloseGallery) {
    for (const bool attached : {false, true}) {
        SCOPED_TRACE(attached ? "with a host" : "without a host");
        SampleWorld world({.attachHost = attached});
        const std::u16string block = RememberABlock();
        ASSERT_FALSE(block.empty());
        world.panel->showMode = u"YL";
        world.panel->ShowPanel();
        world.ClickButton(ControlId::Close);
        EXPECT_FALSE(world.panel->isVisible());
        // The recent list is saved only for a host.
        EXPECT_EQ(ReadListFile(RecentListPath()), attached ? std::vector{block} : std::vector<std::u16string>{});
        EXPECT_EQ(world.panel->showMode, u"YL");  // only WM_CLOSE forgets the mode
    }
    SampleWorld world;
    QPointer<CBrindleDlg> panel(world.panel.get());
    const std::u16string block = RememberABlock();
    panel->showMode = u"PMMC";
    panel->ShowPanel();
    EXPECT_FALSE(panel->close());  // refused: the panel hides and stays
    Pump(20);
    ASSERT_FALSE(panel.isNull());
    EXPECT_TRUE(!panel->isVisible() && panel->showMode.empty());
    EXPECT_EQ(ReadListFile(RecentListPath()), std::vector<std::u16string>{block});
    panel->ShowPanel();
    EXPECT_TRUE(panel->isVisible());
    // CloseGallery's save writes the lists also when there is no search folder to remove (with one:
    // the end-to-end test).
    RemoveFile(RecentListPath());
    panel->SaveOnClose();
    EXPECT_TRUE(FileExists(RecentListPath()));
}
