// The three close roads: the close button, WM_CLOSE and the save on
// CloseGallery, with the files they leave on disk.

#include <gtest/gtest.h>

#include <QPointer>

#include "panel_world.h"
#include "store/usage_lists.h"

using namespace marrowfin;
using namespace marrowfin::test;

namespace {

// A block of the sample's first gallery, put in the recent list.
std::u16string RememberABlock() {
    GalleryStore& store = GalleryStore::Instance();
    if (!store.root || store.root->dirChildren.empty()) return {};
    GalleryNode* gallery = store.root->dirChildren[0];
    for (GalleryNode* cls : gallery->dirChildren) {
        if (!cls || cls->fileChildren.empty()) continue;
        GalleryNode* block = cls->fileChildren[0];
        // Recent entries must lie on disk to be read back.
        (void)CreateDirectories(cls->Path());
        (void)WriteFileAtomic(block->Path(), std::string(2048, 'x'));
        RememberRecent(store, block->Path(), block->name);
        return block->Path();
    }
    return {};
}

}  // namespace

TEST(PanelClose, CloseButtonSavesTheRecentListOnlyWithAHost) {
    for (bool attached : {false, true}) {
        SCOPED_TRACE(attached ? "with a host" : "without a host");
        SampleWorld world({.attachHost = attached});
        const std::u16string block = RememberABlock();
        ASSERT_FALSE(block.empty());
        world.panel->showMode = u"YL";
        world.panel->ShowPanel();
        world.ClickButton(1000);
        EXPECT_FALSE(world.panel->isVisible());
        if (attached) {
            EXPECT_EQ(ReadListFile(RecentListPath()), std::vector<std::u16string>{block});
        } else {
            EXPECT_FALSE(FileExists(RecentListPath()));
        }
        EXPECT_EQ(world.panel->showMode, u"YL");  // only WM_CLOSE forgets the mode
    }
}

TEST(PanelClose, WindowCloseHidesAndForgetsTheModeAndSaveOnCloseWritesEveryList) {
    SampleWorld world;
    QPointer<CBrindleDlg> panel(world.panel.get());
    const std::u16string block = RememberABlock();
    ASSERT_FALSE(block.empty());
    panel->showMode = u"PMMC";
    panel->ShowPanel();
    EXPECT_FALSE(panel->close());  // refused: the panel stays
    Pump();
    ASSERT_FALSE(panel.isNull());
    EXPECT_FALSE(panel->isVisible());
    EXPECT_TRUE(panel->showMode.empty());
    EXPECT_EQ(ReadListFile(RecentListPath()), std::vector<std::u16string>{block});
    // It shows again as it was.
    panel->ShowPanel();
    EXPECT_TRUE(panel->isVisible());
    EXPECT_EQ(panel->Button(1000)->ControlId(), 1000);

    // The save on CloseGallery: every list, and the search folder goes.
    GalleryNode* gallery = GalleryStore::Instance().root->dirChildren[0];
    const std::u16string common = gallery->Path() + u"/CommonUse.xml";
    RemoveFile(common);
    RemoveFile(RecentListPath());
    const std::u16string search = SearchFolder();
    ASSERT_TRUE(CreateDirectories(search + u"/深/层"));
    ASSERT_TRUE(WriteFileAtomic(SearchVersionPath(), "[v]\nver=3\n"));
    ASSERT_TRUE(WriteFileAtomic(search + u"/深/层/a.dwg", std::string(4096, 'd')));
    panel->SaveOnClose();
    EXPECT_FALSE(panel->isVisible());
    EXPECT_FALSE(PathExists(search));
    EXPECT_TRUE(DirectoryExists(StoreRoot()));  // only the search folder went
    EXPECT_TRUE(FileExists(block));
    EXPECT_EQ(ReadListFile(RecentListPath()), std::vector<std::u16string>{block});
    EXPECT_TRUE(FileExists(common));

    // Again with no search folder: the lists are still written.
    RemoveFile(RecentListPath());
    panel->SaveOnClose();
    EXPECT_TRUE(FileExists(RecentListPath()));
    EXPECT_FALSE(PathExists(search));
}
