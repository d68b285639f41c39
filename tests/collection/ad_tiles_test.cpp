// Advertising tiles: ad.xml to the byte and back; one road of refreshes
// against the stand-in service, each with its reply, faults, fetches and tiles.

#include <gtest/gtest.h>

#include <algorithm>
#include <ranges>

#include "collection/ad_refresh.h"
#include "fault_switches.h"
#include "platform/files.h"
#include "platform/text.h"
#include "request_counters.h"
#include "store/store_paths.h"
#include "support/live_service.h"
#include "support/temp_home.h"
#include "support/test_paths.h"

namespace marrowfin::test {
namespace {

TEST(AdFile, ExactBytesOnlyTilesThatAreOnAndARoundTrip) {
    TempHome home;
    EXPECT_TRUE(LoadAdTiles().empty() && DirectoryExists(AdFolder()));  // first start makes the folder
    ASSERT_TRUE(SaveAdTiles({{u"门窗", {u"门窗精选", u"http://h/1.png", u"https://t?a=1&b=2", u"12", u"", true}},
                             {u"A", {u"off", u"u", u"t", u"3", u"", false}}}));
    const std::string saved = ReadBytes(Utf16ToUtf8(AdListPath()));
    EXPECT_EQ(saved,
              "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r<root>\r"
              "<item on=\"1\" name=\"门窗精选\" url=\"http://h/1.png\" target=\"https://t?a=1&b=2\" ver=\"12\" >门窗</item>\r"
              "</root>\r");
    EXPECT_EQ(ComposeAdFile(LoadAdTiles()), saved);
    // The later item of a key wins; a missing ver reads as empty; on is only "1"; pictures are held.
    ASSERT_TRUE(WriteFileAtomic(AdListPath(), "<root><item on=\"1\" ver=\"2\">k</item><item on=\"true\" name=\"n\">k</item></root>"));
    EXPECT_EQ(LoadAdTiles(), (AdTileMap{{u"k", {u"n", u"", u"", u"", AdPicturePath(u"k"), false}}}));
}

TEST(AdRefresh, FetchesOnlyWhatChangedAndKeepsTilesAndPicturesThroughFailures) {
    TempHome home;
    LiveService service;
    std::vector<std::string> pictures = {""};  // a picture missing reads as none
    for (int n = 1; n <= 3; ++n) pictures.push_back(ReadBytes(SampleLibrary() + "/ads/ad_" + std::to_string(n) + ".png"));
    // Each tile in the service's order: on/off, ver, the picture its url names, the one its file holds.
    auto shown = [&](const AdTileMap& tiles) {
        std::string out;
        for (const AdTile& t : service.galleries | std::views::transform([&](auto& key) { return tiles.at(key); }))
            out += (t.on ? "on " : "off ") + Utf16ToUtf8(t.ver) + " u" + Utf16ToUtf8(t.url.substr(t.url.size() - 5, 1)) + " f" +
                   std::to_string(std::ranges::find(pictures, ReadBytes(Utf16ToUtf8(t.picture))) - pictures.begin()) + ";";
        return out;
    };
    // "<vers>/<pictures>", one digit per tile, served instead of the service's own reply.
    auto answer = [&](const std::string& reply) {
        service.handle.faults().clearAll();
        if (reply.empty()) return;
        std::string x = "<root>";
        for (size_t i = 0; i < 3; ++i)
            x += "<item on=\"" + std::to_string(i < 2) + "\" ver=\"" + reply[i] + "\" url=\"" + service.handle.baseUrl() + "/ad/ad_" +
                 reply[4 + i] + ".png\">" + Utf16ToUtf8(service.galleries[i]) + "</item>";
        service.handle.faults().set("/gallery/gad", {.body = x + "</root>"});
    };
    // The reply, a fault, the pictures fetched so far and the tiles.
    AdTileMap tiles = LoadAdTiles();
    for (const auto& [reply, switched, fetched, expected] : std::vector<std::tuple<std::string, std::string, long, std::string>>{
             {"", "", 3, "on 1 u1 f1;on 2 u2 f2;off 3 u3 f3;"},
             {"923/123", "", 3, "on 9 u1 f1;on 2 u2 f2;off 3 u3 f3;"},  // higher version, same url: kept
             {"123/123", "", 4, "on 1 u1 f1;on 2 u2 f2;off 3 u3 f3;"},  // lower version: fetched
             {"123/133", "", 5, "on 1 u1 f1;on 2 u3 f3;off 3 u3 f3;"},  // new url: its picture replaces the old
             {"", "*?drop=1", 5, "off 1 u1 f1;off 2 u3 f3;off 3 u3 f3;"},
             {"123/233", "/ad/*?status=500", 6, "on 1 u2 f1;on 2 u3 f3;off 3 u3 f3;"},
             {"123/333", "/ad/*?truncate=10", 7, "on 1 u3 f1;on 2 u3 f3;off 3 u3 f3;"}}) {
        answer(reply);
        std::string path, error;
        service::Fault fault;
        if (ParseFaultSwitch(switched, path, fault, error) && fault.active()) service.handle.faults().set(path, fault);
        tiles = RefreshAdTiles(tiles, u"ch 1", u"_2");
        EXPECT_EQ(std::make_pair(service.Served("/ad/*"), shown(tiles)), std::make_pair(fetched, expected)) << reply << switched;
    }
    // A picture gone from the folder is fetched again, and only that one.
    answer("123/333");
    ASSERT_TRUE(RemoveFile(AdPicturePath(service.galleries[2])));
    EXPECT_TRUE(shown(RefreshAdTiles(tiles, u"ch 1", u"_2")) == "on 1 u3 f1;on 2 u3 f3;off 3 u3 f3;" && service.Served("/ad/*") == 8);
}

}  // namespace
}  // namespace marrowfin::test
