#include "net_world.h"

using namespace marrowfin;
using namespace marrowfin::test;

// Stacks: 0 WinINet, 1 WinHTTP, 2 libcurl. Posts and downloads start at the remembered
// winner (libcurl when none) and go round; uploads always go WinHTTP, libcurl, WinINet,
// and a WinINet success is not remembered.
TEST(TransportRotation, StartsOnCurlThenRemembersTheWinnerAndEscapesUrls) {
    TempHome home;
    std::vector<int> log;
    ScriptedStack stacks[] = {ScriptedStack(0, &log), ScriptedStack(1, &log), ScriptedStack(2, &log)};
    for (int n = 0; n < 3; ++n) InstallHttpStack(n, &stacks[n]);
    enum Call { Post, Download, Upload };
    // The option before (-99: as left), the stack that succeeds (-1: none), the call, the stacks tried, the option after.
    const std::tuple<int, int, Call, std::vector<int>, int> steps[] = {
        {-99, -1, Post, {2, 0, 1}, -2}, {1, 2, Post, {1, 2}, 2},      {-99, 2, Download, {2}, 2},
        {0, -1, Post, {0, 1, 2}, 0},    {2, 0, Upload, {1, 2, 0}, 2}, {-99, 1, Upload, {1}, 1},
    };
    for (const auto& [optionBefore, winner, call, attempts, optionAfter] : steps) {
        SCOPED_TRACE(testing::Message() << "option " << optionBefore << " winner " << winner);
        if (optionBefore != -99) WriteOptionInt(u"FNetUseInet", optionBefore);
        for (int n = 0; n < 3; ++n) stacks[n].succeed = n == winner;
        log.clear();
        std::u16string out;
        const bool ok = call == Post       ? PostForm(u"http://h/x", u"", out)
                        : call == Download ? DownloadFile(u"http://h/b.dwg", u"/tmp/b.dwg", 0, 0)
                                           : UploadFile(u"http://h/gallery/lfupload", u"", u"/tmp/a.zip", out, 0);
        EXPECT_EQ(std::make_tuple(ok, log, GetOptionInt(u"FNetUseInet", -2)), std::make_tuple(winner >= 0, attempts, optionAfter));
    }

    // Replies: a zero byte ends the text, the bytes road keeps all; a failed call keeps the
    // server's page, or leaves nothing of an earlier call. (The escaped URLs and UTF-8
    // bodies on the wire are the wire test's.)
    for (ScriptedStack& stack : stacks) stack.succeed = &stack == &stacks[2];
    stacks[2].reply = std::string("success\0tail", 12);
    WriteOptionInt(u"FNetUseInet", 2);
    std::u16string out;
    std::string bytes = "stale";
    EXPECT_TRUE(PostForm(u"http://h/x", u"", out) && out == u"success");
    EXPECT_TRUE(PostFormBytes(u"http://h/x", u"", bytes) && bytes == std::string("success\0tail", 12));
    stacks[2].succeed = false;
    stacks[2].reply.clear();
    stacks[0].reply = "<html>500</html>";
    WriteOptionInt(u"FNetUseInet", 0);
    EXPECT_TRUE(!PostForm(u"http://h/x", u"", out) && out == u"<html>500</html>");
    stacks[0].reply.clear();
    EXPECT_TRUE(!PostFormBytes(u"http://h/x", u"", bytes) && bytes.empty());

    // (Empty slots, the default for stacks 0 and 1, are every failing live call's road.)
    RestoreDefaultHttpStacks();

    // Escaping of download and request URLs, and the service's base.
    EXPECT_EQ(PercentEncodeDownloadUrl(u"http://h:80/a/b_c-d.e~f/门.dwg"), "http://h:80/a/b_c-d.e~f/%e9%97%a8.dwg");
    EXPECT_EQ(PercentEncodeDownloadUrl(u"a b\"#$%&+,;<=>?@[\\]^`{|}!'()*"),
              "a%20b%22%23%24%25%26%2b%2c%3b%3c%3d%3e%3f%40%5b%5c%5d%5e%60%7b%7c%7d!'()*");
    // Too long once escaped: the URL goes as it was.
    const std::u16string longUrl = u"http://h/" + std::u16string(400, u'门');
    EXPECT_EQ(PercentEncodeDownloadUrl(longUrl), Utf16ToUtf8(longUrl));
    EXPECT_EQ(EscapeRequestUrl(u"http://h:9/gallery/g_all_s?gallery_name=门 窗,A&B=1#%"),
              "http://h:9/gallery/g_all_s?gallery_name=%E9%97%A8%20%E7%AA%97,A&B=1%23%25");
    // An escape made by the caller stays; a '%' without two hex digits after it does not.
    EXPECT_EQ(EscapeRequestUrl(u"?a=%26%2b%G1%4"), "?a=%26%2b%25G1%254");
    WriteOptionString(u"ServiceBase", u"http://127.0.0.1:4321/");
    EXPECT_EQ(ServiceBaseUrl(), u"http://127.0.0.1:4321");
}
