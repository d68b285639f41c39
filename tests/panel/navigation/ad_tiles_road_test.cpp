// Advertising tiles in the panel, over three starts on one home against the
// stand-in service: the tile in the first cell of its class (its picture at
// two rates), the clicks that open its target, the blocks behind it, a changed
// picture fetched, the service down, and ad.xml at the close.
#include <QPainter>

#include "panel/classes/panel_workers.h"
#include "panel/dialog/ad_tiles_road.h"
#include "panel_world.h"

using namespace marrowfin;
using namespace marrowfin::test;

namespace {

// The opener replaced for the test's life: the addresses it was given.
struct OpenedAddresses : std::vector<QString> {
    OpenedAddresses() {
        SetAddressOpener([this](const QString& address) { push_back(address); });
    }
    ~OpenedAddresses() { SetAddressOpener({}); }
};

// A panel (made anew) over the sample's first and third galleries, each with a
// class of three blocks on disk and an empty class; the tiles' refresh landed.
void StartPanel(PanelWorld& w, float rate = 1.0f) {
    if (w.panel) w.panel->hide();  // the focus leaves while the panel is whole
    w.panel.reset();
    for (int g : {0, 2}) {
        if (w.root()->dirChildren.size() == 2) break;
        w.WriteBlockFiles(w.AddClass(w.AddGallery({w.galleries[g], 1, 3}), u"空类", 0)->parent->dirChildren[0], std::string(2048, 'b'));
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
    SetApplicationMainWindow(&host);
    for (const float rate : {1.0f, 1.5f}) {
        PanelWorld w(SampleLibrary());
        w.service.faults().clear("/gallery/gad");
        StartPanel(w, rate);
        CDWGListView* list = w.panel->m_pThumbList;
        // The host's channel goes out as it stands; the skin suffix reads as 0.
        EXPECT_EQ(w.service.counters().get("/gallery/gad").last.substr(14), "gad?type=%E9%A2%91%E9%81%93-7&img_type=0");
        ASSERT_TRUE(w.OpenRow(w.RowOf(w.galleries[0])));
        const std::vector<GalleryNode*>& blocks = w.root()->dirChildren[0]->dirChildren[0]->fileChildren;
        // The tile's cell first, the blocks behind it, the first block selected.
        EXPECT_EQ(std::make_tuple(list->GetItemCount(), list->GetPath(0), list->GetPath(1), list->GetSelectedItem(),
                                  w.panel->m_nav.itemCount, w.panel->m_nav.selectedName),
                  std::make_tuple(4, std::u16string(), blocks[0]->Path(), 1, 3, QString::fromStdU16String(blocks[0]->name.str())));
        // Unselected beside selected (the veil); the click opens the target.
        const QRect cell = list->ItemRect(0);
        QImage both(cell.width() * 2, cell.height(), QImage::Format_RGB32);
        QPainter painter(&both);
        painter.drawImage(0, 0, list->grab(cell).toImage());
        opened.clear();
        Click(list, list->IconRect(0).center());
        painter.drawImage(cell.width(), 0, list->grab(cell).toImage());
        painter.end();
        EXPECT_TRUE(MatchesReference(both, "panel/navigation", rate == 1.0f ? "ad_tile_1.0" : "ad_tile_1.5"));
        EXPECT_EQ(opened, std::vector<QString>{QStringLiteral("https://example.com/marrowfin/ad/1")});
        if (rate != 1.0f) continue;

        // A double click on the second block inserts it; on the tile it opens
        // the target again (press and double click) and inserts nothing.
        DoubleClick(list, list->IconRect(2).center());
        DoubleClick(list, list->IconRect(0).center());
        Pump(50);
        ASSERT_EQ(host.Requests(2).size(), 1u);
        EXPECT_EQ(std::make_pair(host.Requests(2)[0].text, opened.size()), std::make_pair(blocks[1]->Path(), size_t(3)));
        // A tile without a block behind it is not opened, nor a target that is
        // no web address; a tile that is off takes no cell.
        w.ClickButton(2081, 400);
        SendWindowMessage(w.panel->Handle(), MsgPanelCommand, 22, 0);
        EXPECT_FALSE(w.Shown(list));
        w.ClickButton(2080, 400);
        w.panel->m_adTiles[w.galleries[0]].target = u"file:///bin/sh";
        Click(list, list->IconRect(0).center());
        EXPECT_EQ(opened.size(), 3u);
        ASSERT_TRUE(w.OpenRow(w.RowOf(w.galleries[2])));
        EXPECT_TRUE(list->GetItemCount() == 3 && !list->GetPath(0).empty());

        // The next start: a new version of the first tile with another picture
        // fetches that picture, and the cell shows it.
        w.panel->SaveOnClose();
        const std::u16string png = AdPicturePath(w.galleries[0]);
        const std::string item = "<item on=\"1\" name=\"新\" url=\"" + w.service.baseUrl() + "/ad/ad_2.png\" target=\"\" ver=\"0\" >" +
                                 Utf16ToUtf8(w.galleries[0]) + "</item>";
        w.service.faults().set("/gallery/gad", {.body = "<root>" + item + "</root>"});
        StartPanel(w);
        EXPECT_EQ(ReadBytes(Utf16ToUtf8(png)), ReadBytes(SampleLibrary() + "/ads/ad_2.png"));
        ASSERT_TRUE(w.OpenRow(w.RowOf(w.galleries[0])));
        QImage picture;
        EXPECT_TRUE(GetAdTile(*w.panel, nullptr, &picture) && picture == QImage(QString::fromStdU16String(png)));
        // Only the tiles the service still names are written, to the byte.
        w.panel->SaveOnClose();
        const std::string saved = "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r<root>\r" + item + "\r</root>\r";
        EXPECT_EQ(ReadBytes(Utf16ToUtf8(AdListPath())), saved);

        // The service down at the next start: the cached tiles stay, shown and saved.
        w.service.faults().set("/gallery/gad", {.drop = true});
        StartPanel(w);
        ASSERT_TRUE(w.OpenRow(w.RowOf(w.galleries[0])));
        AdTile shown;
        EXPECT_TRUE(GetAdTile(*w.panel, &shown) && shown.name == u"新");
        w.panel->SaveOnClose();
        EXPECT_EQ(ReadBytes(Utf16ToUtf8(AdListPath())), saved);
    }
    SetApplicationMainWindow(nullptr);
}
