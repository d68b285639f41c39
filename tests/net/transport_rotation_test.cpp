#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "net/http_transport.h"
#include "platform/profile.h"
#include "support/temp_home.h"

using namespace marrowfin;
using marrowfin::test::TempHome;

namespace {

// A stack that answers as scripted and records the order of attempts.
class ScriptedStack : public HttpStack {
public:
    ScriptedStack(int number, std::vector<int>& log) : m_number(number), m_log(log) {}
    bool succeed = false;
    std::string reply;
    std::string lastUrl, lastBody;
    bool PostForm(const std::string& url, const std::string& body, std::string& response) override {
        m_log.push_back(m_number);
        lastUrl = url;
        lastBody = body;
        response = reply;
        return succeed;
    }
    bool DownloadFile(const std::string& url, const std::u16string&, WindowHandle, uint16_t) override {
        m_log.push_back(m_number);
        lastUrl = url;
        return succeed;
    }
    bool UploadFile(const std::string&, const std::u16string&, const std::u16string&, std::string& response,
                    WindowHandle) override {
        m_log.push_back(m_number);
        response = reply;
        return succeed;
    }

private:
    int m_number;
    std::vector<int>& m_log;
};

struct Stacks {
    std::vector<int> log;
    ScriptedStack inet{0, log}, winhttp{1, log}, curl{2, log};
    Stacks() {
        InstallHttpStack(StackInet, &inet);
        InstallHttpStack(StackWinHttp, &winhttp);
        InstallHttpStack(StackCurl, &curl);
    }
    ~Stacks() { RestoreDefaultHttpStacks(); }
};

}  // namespace

TEST(TransportRotation, StartsOnCurlThenRemembersTheWinner) {
    TempHome home;
    Stacks s;
    std::u16string out = u"stale";
    // Nothing recorded: libcurl first, then WinINet, then WinHTTP; all fail, option untouched.
    EXPECT_FALSE(PostForm(u"http://h/gallery/g_all", u"", out));
    EXPECT_EQ(s.log, (std::vector<int>{2, 0, 1}));
    EXPECT_EQ(GetOptionInt(u"FNetUseInet", -2), -2);

    // Option 1 with WinHTTP failing: 1, then 2 succeeds and is written.
    WriteOptionInt(u"FNetUseInet", 1);
    s.log.clear();
    s.curl.succeed = true;
    s.curl.reply = std::string("success\0tail", 12);
    EXPECT_TRUE(PostForm(u"http://h/gallery/favorite?n=门", u"name=门窗", out));
    EXPECT_EQ(s.log, (std::vector<int>{1, 2}));
    EXPECT_EQ(s.curl.lastUrl, "http://h/gallery/favorite?n=%E9%97%A8");
    EXPECT_EQ(GetOptionInt(u"FNetUseInet", -2), 2);
    EXPECT_EQ(out, u"success");  // a zero byte ends the reply
    EXPECT_EQ(s.curl.lastBody, "name=\xE9\x97\xA8\xE7\xAA\x97");
    // The bytes as they came, for a reader that decodes them itself: nothing cut.
    std::string bytes = "stale";
    s.log.clear();
    EXPECT_TRUE(PostFormBytes(u"http://h/gallery/favorite?n=门", u"name=门窗", bytes));
    EXPECT_EQ(s.log, (std::vector<int>{2}));
    EXPECT_EQ(bytes, std::string("success\0tail", 12));

    // The next call starts where the last one succeeded.
    s.log.clear();
    EXPECT_TRUE(DownloadFile(u"http://h/b/门 1.dwg", u"/tmp/x.dwg", 0, 0));
    EXPECT_EQ(s.log, (std::vector<int>{2}));
    EXPECT_EQ(s.curl.lastUrl, "http://h/b/%e9%97%a8%201.dwg");
}

TEST(TransportRotation, FailedPageStaysInOutAndUploadsKeepTheirOrder) {
    TempHome home;
    Stacks s;
    s.inet.reply = "<html>500</html>";  // a server page on failure
    std::u16string out;
    WriteOptionInt(u"FNetUseInet", 0);
    EXPECT_FALSE(PostForm(u"http://h/x", u"", out));
    EXPECT_EQ(s.log, (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(out, u"<html>500</html>");
    std::string bytes;
    EXPECT_FALSE(PostFormBytes(u"http://h/x", u"", bytes));
    EXPECT_EQ(bytes, "<html>500</html>");
    // A call whose attempts all fail without a page leaves nothing of an earlier call.
    s.inet.reply.clear();
    EXPECT_FALSE(PostFormBytes(u"http://h/x", u"", bytes));
    EXPECT_EQ(bytes, "");
    s.inet.reply = "<html>500</html>";

    // Uploads: WinHTTP, libcurl, WinINet whatever the option says; WinINet writes nothing.
    s.log.clear();
    WriteOptionInt(u"FNetUseInet", 2);
    s.inet.succeed = true;
    s.inet.reply = "1";
    EXPECT_TRUE(UploadFile(u"http://h/gallery/lfupload", u"", u"/tmp/a.zip", out, 0));
    EXPECT_EQ(s.log, (std::vector<int>{1, 2, 0}));
    EXPECT_EQ(GetOptionInt(u"FNetUseInet", -2), 2);
    s.log.clear();
    s.winhttp.succeed = true;
    EXPECT_TRUE(UploadFile(u"http://h/gallery/lfupload", u"", u"/tmp/a.zip", out, 0));
    EXPECT_EQ(s.log, (std::vector<int>{1}));
    EXPECT_EQ(GetOptionInt(u"FNetUseInet", -2), 1);

    // Empty slots are skipped, not counted as attempts.
    InstallHttpStack(StackInet, nullptr);
    InstallHttpStack(StackWinHttp, nullptr);
    s.log.clear();
    s.curl.succeed = false;
    EXPECT_FALSE(DownloadFile(u"http://h/b.dwg", u"/tmp/b.dwg", 0, 0));
    EXPECT_EQ(s.log, (std::vector<int>{2}));
}

TEST(TransportRotation, DownloadUrlEscapingAndServiceBase) {
    EXPECT_EQ(PercentEncodeDownloadUrl(u"http://h:80/a/b_c-d.e~f/门.dwg"),
              "http://h:80/a/b_c-d.e~f/%e9%97%a8.dwg");
    EXPECT_EQ(PercentEncodeDownloadUrl(u"a b\"#$%&+,;<=>?@[\\]^`{|}!'()*"),
              "a%20b%22%23%24%25%26%2b%2c%3b%3c%3d%3e%3f%40%5b%5c%5d%5e%60%7b%7c%7d!'()*");
    // Too long once escaped: the URL goes as it was.
    const std::u16string longUrl = u"http://h/" + std::u16string(400, u'门');
    std::string raw = "http://h/";
    for (int i = 0; i < 400; ++i) raw += "\xE9\x97\xA8";
    EXPECT_EQ(PercentEncodeDownloadUrl(longUrl), raw);
    EXPECT_EQ(EscapeRequestUrl(u"http://h:9/gallery/g_all_s?gallery_name=门 窗,A&B=1#%"),
              "http://h:9/gallery/g_all_s?gallery_name=%E9%97%A8%20%E7%AA%97,A&B=1%23%25");
    TempHome home;
    EXPECT_EQ(ServiceBaseUrl(), u"http://gallery.tarvex.com");
    WriteOptionString(u"ServiceBase", u"http://127.0.0.1:4321/");
    EXPECT_EQ(ServiceBaseUrl(), u"http://127.0.0.1:4321");
}
