// The collections as a signed-in user meets them: folders and blocks read
// from the stand-in service into the tree and the mirror, the mirror's files
// fetched as they come into view, the mirror following the service, two
// users on one machine, deletions, and a service that is gone.

#include <filesystem>

#include "collection/collection_calls.h"
#include "store/store_ini.h"
#include "panel_world.h"

using namespace marrowfin;
using namespace marrowfin::test;

TEST(CollectionRoad, FoldersBlocksAndFilesFollowTheServiceForEachUser) {
    PanelWorld w(SampleLibrary());
    GalleryNode* hardware = w.AddGallery({u"五金", 2, 3});
    const std::u16string mine = w.AddCollections(7, {u"螺栓", u"管件"}, 0);
    const std::u16string theirs = w.AddCollections(9, {u"门窗"}, 0);
    service::UserState& users = w.service.users();
    for (const char* name : {"六角螺栓.dwg", "地脚螺栓.dwg", "膨胀螺栓.dwg"}) w.CollectDrawing(7, "螺栓", name);
    w.CollectDrawing(9, "门窗", "平开门.dwg");
    // A name the service should never give stays out of the mirror and the tree.
    users.addFolder(7, "..");
    // A mirror left from an earlier run is wiped by the first read.
    WriteBytes(Utf16ToUtf8(mine) + "/旧夹/旧.dwg", "stale");
    TipWatcher tips;  // answers each message box with its first button
    w.MakePanel();
    CBrindleDlg& p = *w.panel;

    w.SignIn(7);
    ASSERT_TRUE(w.OpenRow(1));
    EXPECT_EQ(w.FolderButtons(), (std::vector<QString>{QStringLiteral("螺栓"), QStringLiteral("管件")}));
    EXPECT_TRUE(DirectoryExists(mine + u"/螺栓") && DirectoryExists(mine + u"/管件") && !PathExists(mine + u"/旧夹"));
    // The first folder opens with the service's blocks; their files come as they show.
    ASSERT_EQ(p.m_nav.curClassPath, mine + u"/螺栓");
    ASSERT_EQ(p.m_pThumbList->GetItemCount(), 3);
    EXPECT_EQ(p.m_pThumbList->GetPath(1), mine + u"/螺栓/地脚螺栓.dwg");
    const auto mirrored = [&](const char16_t* name) { return FileExists(mine + u"/螺栓/" + name + u".dwg"); };
    ASSERT_TRUE(PumpUntil(
        [&] { return mirrored(u"六角螺栓") && mirrored(u"地脚螺栓") && mirrored(u"膨胀螺栓") && p.m_thumbs.running.empty(); }, 8000));
    EXPECT_EQ(FileSize(mine + u"/螺栓/六角螺栓.dwg"), FileSize(Utf8ToUtf16(SharedDir() + "/testdata/dwg/bmp8_ac1015.dwg")));

    // Behind the panel's back: a folder goes, a block goes, a folder comes.
    users.deleteFolder(7, users.folderByName(7, "管件")->id);
    users.deleteBlock(users.blockByName(users.folderByName(7, "螺栓")->id, "地脚螺栓.dwg")->id);
    users.addFolder(7, "法兰");
    ASSERT_TRUE(w.OpenRow(0));
    ASSERT_TRUE(w.OpenRow(1));
    EXPECT_EQ(w.FolderButtons(), (std::vector<QString>{QStringLiteral("螺栓"), QStringLiteral("法兰")}));
    EXPECT_TRUE(!PathExists(mine + u"/管件") && p.m_pThumbList->GetItemCount() == 2 && !mirrored(u"地脚螺栓") && mirrored(u"膨胀螺栓"));

    // "删除图块": refused by the service, nothing changes; then it goes everywhere.
    Click(p.m_pThumbList, p.m_pThumbList->IconRect(1).center());
    Pump(30);
    w.service.faults().set("/gallery/dwg_collect", {.status = 200, .body = "error"});  // answered without being carried out
    w.ClickButton(ControlId::DeleteBlock);
    ASSERT_TRUE(PumpUntil([&] { return tips.seen == 1; }));
    EXPECT_TRUE(mirrored(u"膨胀螺栓") && p.m_pThumbList->GetItemCount() == 2);
    w.service.faults().clear("/gallery/dwg_collect");
    Click(p.m_pThumbList, p.m_pThumbList->IconRect(1).center());
    Pump(30);
    w.ClickButton(ControlId::DeleteBlock, 400);
    ASSERT_TRUE(PumpUntil([&] { return p.m_pThumbList->GetItemCount() == 1 && !p.CollectionBusy(); }));
    EXPECT_FALSE(mirrored(u"膨胀螺栓") || users.blockByName(users.folderByName(7, "螺栓")->id, "膨胀螺栓.dwg").has_value());

    // Another user on this machine: his folders only, the first user's mirror kept.
    w.SignIn(9);
    ASSERT_TRUE(w.OpenRow(0));
    ASSERT_TRUE(w.OpenRow(1));
    EXPECT_EQ(w.FolderButtons(), (std::vector<QString>{QStringLiteral("门窗")}));
    EXPECT_TRUE(p.m_nav.curClassPath == theirs + u"/门窗" && mirrored(u"六角螺栓"));

    // "删除文件夹" asks first; the folder goes from the service and, at the
    // reload that follows, from the disk. The cloud is empty then, and the
    // default folder is made.
    w.ClickButton(ControlId::DeleteFolder, 400);
    ASSERT_TRUE(PumpUntil([&] { return tips.seen == 2 && !p.CollectionBusy(); }));
    ASSERT_TRUE(w.WaitForSwitch());
    EXPECT_FALSE(users.folderByName(9, "门窗").has_value() || PathExists(theirs + u"/门窗"));
    EXPECT_EQ(w.FolderButtons(), (std::vector<QString>{QStringLiteral("收藏夹1")}));
    EXPECT_TRUE(p.m_nav.curClassPath == theirs + u"/收藏夹1" && DirectoryExists(p.m_nav.curClassPath) &&
                w.ButtonShown(ControlId::AddBlocksEmpty) && !w.Shown(p.m_pThumbList));

    // The service gone: the collections cannot be read and the user is taken
    // back to the gallery he came from; "重试" on the page keeps the page.
    const int gallery = w.RowOf(hardware->name);
    ASSERT_TRUE(w.OpenRow(gallery));
    w.service.faults().set("/gallery/get_u_collect", {.drop = true});
    ASSERT_TRUE(w.OpenRow(1));
    EXPECT_EQ(std::make_pair(p.m_nav.classIndex, p.m_nav.page), std::make_pair(gallery, int(PageBrowse)));
    p.m_nav.classIndex = 1;
    p.m_nav.page = PageCollection;
    w.ClickButton(ControlId::RetrySync, 400);
    ASSERT_TRUE(PumpUntil([&] { return !p.CollectionBusy(); }));
    EXPECT_EQ(std::make_tuple(p.m_nav.page, p.m_nav.syncStatus, tips.seen), std::make_tuple(int(PageCollection), 3, 2));
}

// The old local collection: handed over without a question while the cloud
// is empty, asked about when it is not; "不替换" settles it for good, a
// refused transfer leaves it open and the old folder as it was.
TEST(CollectionRoad, AnOldCollectionIsHandedOverOnceAndAskedAboutWhenTheCloudHoldsData) {
    PanelWorld w(SampleLibrary());
    w.service.setSettings({.uploadReplyWaitMs = 4000});  // the archive is answered once processed: no poll pauses
    const std::u16string fresh = w.AddCollections(11, {}, 0);
    (void)w.AddCollections(12, {u"云端"}, 0);
    for (const char* file : {"甲/一.dwg", "甲/二.dwg", "乙/三.dwg"}) WriteBytes(Utf16ToUtf8(CollectionFolder()) + "/" + file, Drawing());
    TipWatcher tips;
    w.MakePanel();
    CBrindleDlg& p = *w.panel;

    // An empty cloud takes the old collection at once; the page then reads it.
    w.SignIn(11);
    w.ClickClassRow(1);
    ASSERT_TRUE(PumpUntil([&] { return p.m_nav.syncStatus == 2; }));
    ASSERT_TRUE(PumpUntil([&] { return ReadOldCollectTip() == u"1" && w.FolderButtons().size() == 2u; }, 10000));
    ASSERT_TRUE(w.WaitForSwitch());
    EXPECT_EQ(w.FolderButtons(), (std::vector<QString>{QStringLiteral("甲"), QStringLiteral("乙")}));
    EXPECT_TRUE(p.m_pThumbList->GetItemCount() == 2 && DirectoryExists(fresh + u"/甲"));

    // A cloud with data: the page asks. "不替换" settles it and the cloud stays as it was.
    ASSERT_TRUE(WriteOldCollectTip(u"0"));
    w.SignIn(12);
    ASSERT_TRUE(w.OpenRow(0));
    ASSERT_TRUE(w.OpenRow(1));
    Pump(30);
    EXPECT_EQ(p.m_nav.syncStatus, 0);
    EXPECT_TRUE(w.ButtonShown(ControlId::ReplaceCloud) && w.ButtonShown(ControlId::KeepCloud) && w.FolderButtons().empty());
    w.ClickButton(ControlId::KeepCloud);
    ASSERT_TRUE(w.WaitForSwitch());
    EXPECT_EQ(std::make_pair(ReadOldCollectTip(), w.FolderButtons()), std::make_pair(std::u16string(u"1"), std::vector<QString>{"云端"}));

    // "替换" with the archive refused: "同步失败" with "重试", the transfer's end
    // told to the service, the decision still open, the old folder as it was.
    ASSERT_TRUE(WriteOldCollectTip(u"0"));
    ASSERT_TRUE(w.OpenRow(0));
    ASSERT_TRUE(w.OpenRow(1));
    ASSERT_TRUE(w.ButtonShown(ControlId::ReplaceCloud));
    w.service.faults().set("/gallery/lfupload", {.status = 200, .body = "refused"});
    const long ended = w.service.counters().get("/gallery/lfupload_end").count;
    w.ClickButton(ControlId::ReplaceCloud, 400);
    EXPECT_EQ(p.m_nav.syncStatus, 2);
    ASSERT_TRUE(PumpUntil([&] { return p.m_nav.syncStatus == 4; }, 10000));
    Pump(30);
    EXPECT_TRUE(w.ButtonShown(ControlId::RetrySync) && !w.ButtonShown(ControlId::ReplaceCloud));
    ASSERT_TRUE(PumpUntil([&] { return w.service.counters().get("/gallery/lfupload_end").count > ended; }));
    EXPECT_TRUE(ReadOldCollectTip() == u"0" && tips.seen == 0);

    // Listed in Show.xml, the old collection hangs in the tree as the disk has
    // it: folders in a Chinese reader's order (甲 before 乙, unlike their code
    // points), drawings oldest first.
    namespace fs = std::filesystem;
    const fs::path first = fs::u8path(Utf16ToUtf8(CollectionFolder()) + "/甲/一.dwg");
    fs::last_write_time(fs::u8path(Utf16ToUtf8(CollectionFolder()) + "/甲/二.dwg"), fs::last_write_time(first) - std::chrono::hours(1));
    AddGalleryToShowList(u"我的收藏");
    SendWindowMessage(p.Handle(), MsgPanelCommand, 6, 1);
    GalleryNode* old = FindNodeByPath(w.root(), CollectionFolder());
    ASSERT_TRUE(old && old->dirChildren.size() == 2u);
    EXPECT_EQ(std::make_tuple(old->dirChildren[0]->name.str(), old->dirChildren[1]->name.str(),
                              old->dirChildren[0]->fileChildren[0]->name.str(), old->dirChildren[0]->fileChildren[1]->name.str()),
              std::make_tuple(std::u16string(u"甲"), std::u16string(u"乙"), std::u16string(u"二.dwg"), std::u16string(u"一.dwg")));
    EXPECT_EQ(p.m_nav.pendingClass, 1);
    ASSERT_TRUE(w.WaitForSwitch());
}
