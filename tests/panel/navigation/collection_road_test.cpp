// The collections as a signed-in user meets them: folders and blocks read
// from the stand-in service into the tree and the mirror, the mirror's files
// fetched as they come into view, the mirror following the service, two
// users on one machine, deletions, and a service that is gone.

#include "collection/collection_calls.h"
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
    WriteBytes(U8(mine) + "/旧夹/旧.dwg", "stale");
    RecordingHost host;
    TipWatcher tips;  // answers each message box with its first button
    w.MakePanel();
    CBrindleDlg& p = *w.panel;
    p.hostWindow = HandleOf(&host);

    w.SignIn(7);
    ASSERT_TRUE(w.OpenRow(1));
    EXPECT_EQ(w.FolderButtons(), (std::vector<QString>{QStringLiteral("螺栓"), QStringLiteral("管件")}));
    EXPECT_EQ(p.m_folderMap.size(), 2u);
    EXPECT_TRUE(DirectoryExists(mine + u"/螺栓") && DirectoryExists(mine + u"/管件"));
    EXPECT_FALSE(PathExists(mine + u"/旧夹"));
    // The first folder opens with the service's blocks; their files come as they show.
    ASSERT_EQ(p.m_curClassPath, mine + u"/螺栓");
    ASSERT_EQ(p.m_pThumbList->GetItemCount(), 3);
    EXPECT_EQ(p.m_pThumbList->GetPath(1), mine + u"/螺栓/地脚螺栓.dwg");
    ASSERT_TRUE(PumpUntil([&] {
        return FileExists(mine + u"/螺栓/六角螺栓.dwg") && FileExists(mine + u"/螺栓/地脚螺栓.dwg") &&
               FileExists(mine + u"/螺栓/膨胀螺栓.dwg") && p.m_thumbRunning.empty();
    }, 8000));
    EXPECT_EQ(FileSize(mine + u"/螺栓/六角螺栓.dwg"), FileSize(W(SharedDir() + "/testdata/dwg/bmp8_ac1015.dwg")));
    // A block that has arrived inserts.
    DoubleClickItem(p.m_pThumbList, 0);
    Pump(50);
    EXPECT_EQ(host.Requests(2).size(), 1u);

    // Behind the panel's back: a folder goes, a block goes, a folder comes.
    users.deleteFolder(7, users.folderByName(7, "管件")->id);
    users.deleteBlock(users.blockByName(users.folderByName(7, "螺栓")->id, "地脚螺栓.dwg")->id);
    users.addFolder(7, "法兰");
    ASSERT_TRUE(w.OpenRow(0));
    ASSERT_TRUE(w.OpenRow(1));
    EXPECT_EQ(w.FolderButtons(), (std::vector<QString>{QStringLiteral("螺栓"), QStringLiteral("法兰")}));
    EXPECT_FALSE(PathExists(mine + u"/管件"));
    EXPECT_EQ(p.m_pThumbList->GetItemCount(), 2);
    EXPECT_FALSE(FileExists(mine + u"/螺栓/地脚螺栓.dwg"));
    EXPECT_TRUE(FileExists(mine + u"/螺栓/膨胀螺栓.dwg"));

    // "删除图块": refused by the service, nothing changes; then it goes everywhere.
    auto select = [&](int item) {
        Click(p.m_pThumbList, p.m_pThumbList->IconRect(item).center());
        Pump(30);
    };
    select(1);
    service::Fault refused;
    refused.status = 200;  // answered without being carried out
    refused.body = "error";
    w.service.faults().set("/gallery/dwg_collect", refused);
    w.ClickButton(2102);
    ASSERT_TRUE(PumpUntil([&] { return tips.seen == 1; }));
    EXPECT_TRUE(FileExists(mine + u"/螺栓/膨胀螺栓.dwg") && p.m_pThumbList->GetItemCount() == 2);
    w.service.faults().clear("/gallery/dwg_collect");
    select(1);
    w.ClickButton(2102, 400);
    ASSERT_TRUE(PumpUntil([&] { return p.m_pThumbList->GetItemCount() == 1 && !p.CollectionBusy(); }));
    EXPECT_FALSE(FileExists(mine + u"/螺栓/膨胀螺栓.dwg"));
    EXPECT_FALSE(users.blockByName(users.folderByName(7, "螺栓")->id, "膨胀螺栓.dwg").has_value());

    // Another user on this machine: his folders only, the first user's mirror kept.
    w.SignIn(9);
    ASSERT_TRUE(w.OpenRow(0));
    ASSERT_TRUE(w.OpenRow(1));
    EXPECT_EQ(w.FolderButtons(), (std::vector<QString>{QStringLiteral("门窗")}));
    EXPECT_EQ(p.m_curClassPath, theirs + u"/门窗");
    EXPECT_TRUE(FileExists(mine + u"/螺栓/六角螺栓.dwg"));
    ASSERT_EQ(p.m_folderMap.size(), 1u);
    EXPECT_EQ(p.m_folderMap.begin()->second.name, u"门窗");

    // "删除文件夹" asks first; the folder goes from the service and, at the
    // reload that follows, from the disk. The cloud is empty then, and the
    // default folder is made.
    w.ClickButton(2105, 400);
    ASSERT_TRUE(PumpUntil([&] { return tips.seen == 2 && !p.CollectionBusy(); }));
    ASSERT_TRUE(w.WaitForSwitch());
    EXPECT_FALSE(users.folderByName(9, "门窗").has_value());
    EXPECT_FALSE(PathExists(theirs + u"/门窗"));
    EXPECT_EQ(w.FolderButtons(), (std::vector<QString>{QStringLiteral("收藏夹1")}));

    // The service gone: the collections cannot be read and the user is taken
    // back to the gallery he came from; "重试" on the page keeps the page.
    const int gallery = w.RowOf(hardware->name);
    ASSERT_TRUE(w.OpenRow(gallery));
    service::Fault gone;
    gone.drop = true;
    w.service.faults().set("/gallery/get_u_collect", gone);
    ASSERT_TRUE(w.OpenRow(1));
    EXPECT_EQ(std::make_pair(p.m_classIndex, p.m_page), std::make_pair(gallery, int(PageBrowse)));
    p.m_classIndex = 1;
    p.m_page = PageCollection;
    w.ClickButton(2157, 400);
    ASSERT_TRUE(PumpUntil([&] { return !p.CollectionBusy(); }));
    EXPECT_EQ(std::make_pair(p.m_page, p.m_syncStatus), std::make_pair(int(PageCollection), 3));
    EXPECT_EQ(tips.seen, 2);
}
