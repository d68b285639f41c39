// The panel as the user sees it at both rates, and the three close roads
// (the close button, WM_CLOSE, the save on CloseGallery) with the files they
// leave on disk.

#include <gtest/gtest.h>

#include <QPointer>

#include "panel_world.h"
#include "store/usage_lists.h"

using namespace marrowfin;
using namespace marrowfin::test;

namespace {

::testing::AssertionResult Looks(CBrindleDlg& panel, const std::string& name) {
    Pump(50);
    return MatchesReference(panel.grab().toImage(), "panel/dialog", name);
}

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

TEST(PanelWindow, StartPageSyncPromptAndSearchPageAsDrawn) {
    ParkMouse();  // off the panel: no button hovered
    QApplication::setCursorFlashTime(0);  // the caret stands still
    for (const float rate : {1.0f, 1.5f}) {
        const std::string at = rate == 1.0f ? "1.0" : "1.5";
        SCOPED_TRACE(at);
        SampleWorld world({.rate = rate});
        CBrindleDlg& panel = *world.panel;
        panel.ShowPanel();
        // The class list built and switched, the class table and its words in.
        ASSERT_TRUE(PumpUntil([&] { return panel.m_classesReady && !panel.m_hotWords.empty(); }));
        ASSERT_TRUE(world.WaitForSwitch());
        EXPECT_TRUE(Looks(panel, "start_" + at));
        if (rate != 1.0f) continue;

        // The collections differ from the cloud: "替换" and "不替换" are offered.
        panel.m_classIndex = 1;
        panel.m_itemCount = 0;
        SendWindowMessage(panel.Handle(), MsgPanelEvent, 5, 0);
        EXPECT_TRUE(Looks(panel, "sync_prompt_1.0"));
        SendWindowMessage(panel.Handle(), MsgPanelEvent, 5, 1);  // in step again: the prompt goes
        Pump(20);
        EXPECT_FALSE(world.ButtonShown(2155));

        // The search page shows the default word in the empty box; typing
        // widens the edit over it and brings the clear button.
        panel.GoToPage(PageSearch);
        g_defaultHotWord = QStringLiteral("法兰阀门");
        EXPECT_TRUE(Looks(panel, "search_hot_word_1.0"));
        panel.m_searchEdit->setText(QStringLiteral("阀门"));
        EXPECT_TRUE(Looks(panel, "search_typed_1.0"));
        panel.m_searchEdit->clear();
        EXPECT_FALSE(world.ButtonShown(2200));
    }
}

TEST(PanelWindow, CloseButtonWindowCloseAndTheSaveOnCloseGallery) {
    for (const bool attached : {false, true}) {
        SCOPED_TRACE(attached ? "with a host" : "without a host");
        SampleWorld world({.attachHost = attached});
        const std::u16string block = RememberABlock();
        ASSERT_FALSE(block.empty());
        world.panel->showMode = u"YL";
        world.panel->ShowPanel();
        world.ClickButton(1000);
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
    EXPECT_FALSE(panel->isVisible());
    EXPECT_TRUE(panel->showMode.empty());
    EXPECT_EQ(ReadListFile(RecentListPath()), std::vector<std::u16string>{block});
    panel->ShowPanel();
    EXPECT_TRUE(panel->isVisible());

    // CloseGallery's save (its files are the end-to-end test's) removes only the search folder, and
    // writes the lists when there is none.
    ASSERT_TRUE(CreateDirectories(SearchFolder() + u"/深/层"));
    ASSERT_TRUE(WriteFileAtomic(SearchFolder() + u"/深/层/a.dwg", std::string(4096, 'd')));
    panel->SaveOnClose();
    EXPECT_TRUE(!PathExists(SearchFolder()) && FileExists(block));
    RemoveFile(RecentListPath());
    panel->SaveOnClose();
    EXPECT_TRUE(FileExists(RecentListPath()));
}
