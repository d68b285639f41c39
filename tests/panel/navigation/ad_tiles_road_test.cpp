// Advertising tiles in the panel, over three starts of the panel on one home
// against the stand-in service: the tile in the first cell of its class (its
// picture at two rates), the click that opens its target, the blocks behind
// it, a changed picture fetched, the service down, and ad.xml at the close.
#include "panel/classes/panel_workers.h"
#include "panel/dialog/ad_tiles_road.h"
#include "panel_world.h"
#include "support/message_recorder.h"

#include <QPainter>

using namespace marrowfin;
using namespace marrowfin::test;

namespace {

// The opener replaced for the test's life: the addresses it was given.
struct OpenedAddresses : std::vector<QString> {
    OpenedAddresses() { SetAddressOpener([this](const QString& address) { push_back(address); }); }
    ~OpenedAddresses() { SetAddressOpener({}); }
};

std::string Bytes(const std::u16string& path) { return ReadBytes(U8(path)); }

// A panel over the first two sample galleries, each with a class of three
// blocks on disk and an empty one, the tiles' refresh landed.
void StartPanel(PanelWorld& w, float rate = 1.0f) {
    if (!w.root()->dirChildren.empty()) {
        w.panel->hide();
        w.panel.reset();
    } else {
        for (int g : {0, 2}) {
            GalleryNode* gallery = w.AddGallery({w.galleries[g], 1, 3});
            w.AddClass(gallery, u"空类", 0);
            CreateDirectories(gallery->dirChildren[0]->Path());
            for (GalleryNode* block : gallery->dirChildren[0]->fileChildren)
                WriteFileAtomic(block->Path(), std::string(2048, 'b'));
        }
    }
    w.MakePanel(true, rate);
    ASSERT_TRUE(WaitForPanelWorkers(std::chrono::seconds(10)));
    Pump(30);  // the refresh's message
}

}  // namespace

TEST(AdTilesRoad, TheTileLeadsItsClassOpensItsTargetFollowsTheServiceAndIsSavedAtTheClose) {
    ParkMouse();
    OpenedAddresses opened;
    RecordingHost host;
    for (const float rate : {1.0f, 1.5f}) {
        PanelWorld w(SampleLibrary());
        w.service.faults().clear("/gallery/gad");
        SetApplicationMainWindow(&host);
        StartPanel(w, rate);
        SetApplicationMainWindow(nullptr);
        CBrindleDlg& p = *w.panel;
        CDWGListView* list = p.m_pThumbList;
        const std::string base = w.service.baseUrl();
        // The host's channel goes out as it stands; the skin suffix reads as 0.
        EXPECT_EQ(w.service.counters().get("/gallery/gad").last.substr(14),
                  "gad?type=%E9%A2%91%E9%81%93-7&img_type=0");
        ASSERT_TRUE(w.OpenRow(w.RowOf(w.galleries[0])));
        GalleryNode* cls = w.root()->dirChildren[0]->dirChildren[0];
        // The tile's cell first, the blocks behind it, the first block selected.
        ASSERT_EQ(list->GetItemCount(), 4);
        EXPECT_TRUE(list->GetPath(0).empty() && list->GetPath(1) == cls->fileChildren[0]->Path());
        EXPECT_EQ(std::make_tuple(list->GetSelectedItem(), p.m_itemCount, p.m_selectedName),
                  std::make_tuple(1, 3, QString::fromStdU16String(cls->fileChildren[0]->name.str())));
        // Unselected beside selected (the veil), and its click opens the target.
        const QRect cell = list->ItemRect(0);
        QImage both(cell.width() * 2, cell.height(), QImage::Format_RGB32);
        QPainter painter(&both);
        painter.drawImage(0, 0, list->grab(cell).toImage());
        opened.clear();
        Click(list, list->IconRect(0).center());
        Pump(30);
        painter.drawImage(cell.width(), 0, list->grab(cell).toImage());
        painter.end();
        EXPECT_TRUE(MatchesReference(both, "panel/navigation", rate == 1.0f ? "ad_tile_1.0" : "ad_tile_1.5"));
        EXPECT_EQ(opened, std::vector<QString>{QStringLiteral("https://example.com/marrowfin/ad/1")});
        if (rate != 1.0f) continue;

        // A double click on a block behind the tile inserts that block; on the
        // tile it opens the target again and inserts nothing; a right click
        // on the tile offers no menu.
        p.hostWindow = HandleOf(&host);
        MessageRecorder events(&p);
        DoubleClick(list, list->IconRect(2).center());
        DoubleClick(list, list->IconRect(0).center());
        Click(list, list->IconRect(0).center(), Qt::RightButton);
        Pump(50);
        ASSERT_EQ(host.Requests(2).size(), 1u);
        EXPECT_EQ(host.Requests(2)[0].text, cls->fileChildren[1]->Path());
        EXPECT_EQ(std::make_pair(opened.size(), events.Count(MsgPanelEvent, 8)), std::make_pair(size_t(3), 0));
        // A target that is no web address is not opened.
        p.m_adTiles[w.galleries[0]].target = u"file:///bin/sh";
        Click(list, list->IconRect(0).center());
        EXPECT_EQ(opened.size(), 3u);
        // A class empty but for its tile has no tile cell.
        w.ClickButton(2081, 400);
        Pump(30);
        SendWindowMessage(p.Handle(), MsgPanelCommand, 22, 0);
        EXPECT_TRUE(!w.Shown(list) && opened.size() == 3u);
        // The tile that is off takes no cell.
        ASSERT_TRUE(w.OpenRow(w.RowOf(w.galleries[2])));
        EXPECT_TRUE(list->GetItemCount() == 3 && !list->GetPath(0).empty());

        // The close writes the tiles that are on, in key order, as the service gave them.
        p.m_adTiles[w.galleries[0]].target = u"https://example.com/marrowfin/ad/1";
        p.SaveOnClose();
        std::string items[2];
        for (int g : {0, 1})
            items[g] = "<item on=\"1\" name=\"" + U8(w.galleries[g]) + "精选\" url=\"" + base + "/ad/ad_" +
                       std::to_string(g + 1) + ".png\" target=\"https://example.com/marrowfin/ad/" +
                       std::to_string(g + 1) + "\" ver=\"" + std::to_string(g + 1) + "\" >" + U8(w.galleries[g]) +
                       "</item>\r";
        const std::string saved = "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r<root>\r" +
                                  (w.galleries[0] < w.galleries[1] ? items[0] + items[1] : items[1] + items[0]) +
                                  "</root>\r";
        EXPECT_EQ(Bytes(AdListPath()), saved);
        EXPECT_EQ(w.service.counters().get("/ad/*").count, 3);

        // The next start: a new version of the first tile with another picture
        // fetches that picture, only that one, and the cell shows it.
        const std::u16string png = AdPicturePath(w.galleries[0]);
        w.service.faults().set("/gallery/gad", {.body = "<root><item on=\"1\" name=\"新\" ver=\"0\" url=\"" + base +
                                                        "/ad/ad_2.png\">" + U8(w.galleries[0]) + "</item></root>"});
        StartPanel(w);
        EXPECT_EQ(w.service.counters().get("/ad/*").count, 4);
        EXPECT_EQ(Bytes(png), ReadBytes(SampleLibrary() + "/ads/ad_2.png"));
        ASSERT_TRUE(w.OpenRow(w.RowOf(w.galleries[0])));
        QImage picture;
        EXPECT_TRUE(GetAdTile(*w.panel, nullptr, &picture) && picture == QImage(QString::fromStdU16String(png)));
        w.panel->SaveOnClose();
        const std::string second = Bytes(AdListPath());

        // The service down at the next start: the cached tiles stay, shown and saved.
        w.service.faults().set("/gallery/gad", {.drop = true});
        StartPanel(w);
        ASSERT_TRUE(w.OpenRow(w.RowOf(w.galleries[0])));
        AdTile shown;
        EXPECT_TRUE(GetAdTile(*w.panel, &shown) && shown.name == u"新");
        w.panel->SaveOnClose();
        EXPECT_EQ(Bytes(AdListPath()), second);
        EXPECT_NE(second.find("name=\"新\" url=\"" + base + "/ad/ad_2.png\""), std::string::npos);
    }
}
