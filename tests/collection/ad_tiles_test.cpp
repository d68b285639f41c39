// Advertising tiles: ad.xml to the byte and back; the refresh against the
// stand-in service, which fetches a picture only when the tile asks for it,
// keeps the cached tiles and pictures when the service fails, and keeps the
// old picture when a fetch breaks.

#include <gtest/gtest.h>

#include "collection/ad_refresh.h"
#include "fault_switches.h"
#include "net/http_transport.h"
#include "platform/files.h"
#include "platform/text.h"
#include "request_counters.h"
#include "store/store_paths.h"
#include "support/live_service.h"
#include "support/temp_home.h"

namespace marrowfin::test {
namespace {

std::string Bytes(std::u16string_view path) {
    std::string bytes;
    return ReadWholeFile(path, bytes) ? bytes : "(none)";
}
std::string ServicePicture(int n) { return Bytes(W(SampleLibrary() + "/ads/ad_" + std::to_string(n) + ".png")); }

TEST(AdFile, ExactBytesOnlyTilesThatAreOnAndARoundTrip) {
    TempHome home;
    EXPECT_TRUE(LoadAdTiles().empty());  // first start: the folder is made, nothing read
    EXPECT_TRUE(DirectoryExists(AdFolder()));
    AdTileMap tiles;
    tiles[u"门窗"] = {u"门窗精选", u"http://h/ad/1.png", u"https://t/1?a=1&b=2", u"12", u"", true};
    tiles[u"Zed"] = {u"off", u"u", u"t", u"3", u"", false};
    tiles[u"A"] = {u"", u"", u"", u"", u"", true};
    ASSERT_TRUE(SaveAdTiles(tiles));
    EXPECT_EQ(Bytes(AdListPath()),
              "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r<root>\r"
              "<item on=\"1\" name=\"\" url=\"\" target=\"\" ver=\"\" >A</item>\r"
              "<item on=\"1\" name=\"门窗精选\" url=\"http://h/ad/1.png\" target=\"https://t/1?a=1&b=2\" ver=\"12\" >门窗</item>\r"
              "</root>\r");
    AdTileMap back = LoadAdTiles();
    tiles.erase(u"Zed");
    for (auto& [key, tile] : tiles) tile.picture = AdPicturePath(key);
    EXPECT_EQ(back, tiles);
    ASSERT_TRUE(SaveAdTiles(back));
    EXPECT_EQ(Bytes(AdListPath()), ComposeAdFile(tiles));

    // A later item of the same key wins; a missing ver reads as empty; on is only "1".
    ASSERT_TRUE(WriteFileAtomic(AdListPath(), "<root><item on=\"1\" ver=\"2\">k</item><item on=\"true\" name=\"n\">k</item></root>"));
    EXPECT_EQ(LoadAdTiles(), (AdTileMap{{u"k", {u"n", u"", u"", u"", AdPicturePath(u"k"), false}}}));
}

struct AdRefresh : ::testing::Test {
    TempHome home;
    LiveService service;
    AdTileMap tiles;

    void SetUp() override {
        (void)LoadAdTiles();
        tiles = RefreshAdTiles({}, u"ch 1", u"_2");
    }
    long Pictures() { return service.Served("/ad/*"); }
    std::u16string Key(int n) { return service.galleries[static_cast<size_t>(n)]; }
    // The service's reply with one item changed.
    void Answer(int n, const std::string& ver, int picture) {
        const std::string base = service.handle.baseUrl();
        std::string x = "<root>";
        for (int i = 0; i < 3; ++i) {
            const AdTile& t = tiles[Key(i)];
            x += "<item on=\"" + std::string(t.on ? "1" : "0") + "\" name=\"" + U8(t.name) + "\" url=\"" +
                 (i == n ? base + "/ad/ad_" + std::to_string(picture) + ".png" : U8(t.url)) + "\" target=\"" +
                 U8(t.target) + "\" ver=\"" + (i == n ? ver : U8(t.ver)) + "\">" + U8(Key(i)) + "</item>";
        }
        service.handle.faults().set("/gallery/gad", service::Fault{.body = x + "</root>"});
    }
};

TEST_F(AdRefresh, APictureIsFetchedOnlyWhenMissingMovedOrItsVersionWentDown) {
    EXPECT_EQ(service.handle.counters().get("/gallery/gad").last.substr(14), "gad?type=ch%201&img_type=0");
    std::u16string refused;  // the service insists on both keys
    EXPECT_FALSE(PostForm(ServiceBaseUrl() + u"/gallery/gad?type=ch", u"", refused));
    ASSERT_EQ(tiles.size(), 3u);
    EXPECT_EQ(Pictures(), 3);
    for (int i = 0; i < 3; ++i) {
        const AdTile& t = tiles[Key(i)];
        EXPECT_EQ(t.on, i != 2) << i;  // the sample switches its third tile off
        EXPECT_EQ(t.ver, Utf8ToUtf16(std::to_string(i + 1)));
        EXPECT_EQ(t.picture, AdPicturePath(Key(i)));
        EXPECT_EQ(Bytes(t.picture), ServicePicture(i + 1)) << i;
    }
    // Same reply: nothing fetched. A higher version on the same url neither.
    tiles = RefreshAdTiles(tiles, u"ch 1", u"_2");
    Answer(0, "9", 1);
    tiles = RefreshAdTiles(tiles, u"ch 1", u"_2");
    EXPECT_EQ(Pictures(), 3);
    EXPECT_EQ(tiles[Key(0)].ver, u"9");
    // A lower version fetches again; so does a new url, whose picture replaces the old one.
    Answer(0, "1", 1);
    tiles = RefreshAdTiles(tiles, u"ch 1", u"_2");
    EXPECT_EQ(Pictures(), 4);
    Answer(1, "2", 3);
    tiles = RefreshAdTiles(tiles, u"ch 1", u"_2");
    EXPECT_EQ(Pictures(), 5);
    EXPECT_EQ(Bytes(AdPicturePath(Key(1))), ServicePicture(3));
    // A picture gone from the folder is fetched again.
    ASSERT_TRUE(RemoveFile(AdPicturePath(Key(2))));
    tiles = RefreshAdTiles(tiles, u"ch 1", u"_2");
    EXPECT_EQ(Pictures(), 6);
    EXPECT_EQ(Bytes(AdPicturePath(Key(2))), ServicePicture(3));
}

TEST_F(AdRefresh, AFailingServiceKeepsTheCachedTilesAndPicturesButShowsNone) {
    for (service::Fault fault : {service::Fault{.status = 500}, service::Fault{.drop = true}}) {
        AdTileMap cached = tiles;
        service.handle.faults().set("*", fault);
        const AdTileMap after = RefreshAdTiles(cached, u"ch", u"_2");
        service.handle.faults().clearAll();
        ASSERT_EQ(after.size(), 3u);
        for (auto& [key, tile] : cached) tile.on = false;
        EXPECT_EQ(after, cached);
        for (int i = 0; i < 3; ++i) EXPECT_EQ(Bytes(AdPicturePath(Key(i))), ServicePicture(i + 1));
        EXPECT_EQ(Pictures(), 3);
        EXPECT_EQ(ComposeAdFile(after), ComposeAdFile({}));  // and the close saves no item
    }
}

TEST_F(AdRefresh, ABrokenPictureDownloadLeavesTheOldPicture) {
    int k = 0;
    for (service::Fault fault : {service::Fault{.status = 500}, service::Fault{.truncateAt = 10}, service::Fault{.drop = true}}) {
        Answer(0, std::to_string(-k), 2);  // each round lower, so each round fetches
        service.handle.faults().set("/ad/*", fault);
        tiles = RefreshAdTiles(tiles, u"ch", u"_2");
        EXPECT_EQ(Pictures(), 4 + k++);
        EXPECT_EQ(Bytes(AdPicturePath(Key(0))), ServicePicture(1));
        EXPECT_EQ(tiles[Key(0)].url, W(service.handle.baseUrl() + "/ad/ad_2.png"));
        EXPECT_EQ(tiles[Key(0)].picture, AdPicturePath(Key(0)));
    }
}

}  // namespace
}  // namespace marrowfin::test
