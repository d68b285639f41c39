// The class table's requests and its background refresh against the
// stand-in service: the sort word on the wire, the cached file after good and
// bad answers, and what the worker posts to the panel.

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <mutex>

#include "fault_switches.h"
#include "support/live_service.h"
#include "net/http_transport.h"
#include "panel/classes/class_table.h"
#include "panel/classes/class_table_refresh.h"
#include "platform/files.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "platform/threads.h"
#include "request_counters.h"
#include "store/store_paths.h"
#include "support/temp_home.h"
#include "support/test_paths.h"

using namespace marrowfin;

namespace {

class UrlStack : public HttpStack {
public:
    std::vector<std::string> urls;
    bool PostForm(const std::string& url, const std::string&, std::string& response) override {
        urls.push_back(url);
        response = "<root/>";
        return true;
    }
    bool DownloadFile(const std::string&, const std::u16string&, WindowHandle, uint16_t) override { return false; }
    bool UploadFile(const std::string&, const std::u16string&, const std::u16string&, std::string&,
                    WindowHandle) override {
        return false;
    }
};

// Window 7 is the panel; it keeps what it is posted, hot words included.
class PanelInbox : public WindowSystem {
public:
    static constexpr WindowHandle kPanel = 7;
    PanelInbox() { InstallWindowSystem(this); }
    ~PanelInbox() override { InstallWindowSystem(nullptr); }
    bool IsWindow(WindowHandle w) const override { return w == kPanel; }
    bool Post(WindowHandle w, WindowMessage m) override {
        if (w != kPanel) return false;
        std::lock_guard<std::mutex> lock(mutex);
        Entry entry{m.message, m.wParam, {}};
        if (auto* words = dynamic_cast<HotWordsPayload*>(m.payload.get())) entry.words = words->value;
        entries.push_back(std::move(entry));
        arrived.notify_all();
        return true;
    }
    std::intptr_t Send(WindowHandle, WindowMessage) override { return 0; }
    bool WaitFor(size_t count) {
        std::unique_lock<std::mutex> lock(mutex);
        return arrived.wait_for(lock, std::chrono::seconds(10), [&] { return entries.size() >= count; });
    }
    struct Entry {
        uint32_t message;
        std::uintptr_t code;
        std::vector<std::u16string> words;
    };
    std::mutex mutex;
    std::condition_variable arrived;
    std::vector<Entry> entries;
};

bool EndsWith(const std::string& text, const std::string& tail) {
    return text.size() >= tail.size() && text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

}  // namespace

TEST(ClassTableRequests, SortWordOnTheWire) {
    test::TempHome home;
    UrlStack stack;
    InstallHttpStack(StackCurl, &stack);
    const std::pair<int, const char*> cases[] = {
        {-1, "/gallery/selpageinfo?sort=def"},  // absent option
        {1, "/gallery/selpageinfo?sort=hot"},
        {2, "/gallery/selpageinfo?sort=new"},
        {0, "/gallery/selpageinfo?sort=def"},
        {5, "/gallery/selpageinfo?sort="},
        {3, "/gallery/selpageinfo?sort="},
    };
    for (const auto& [option, tail] : cases) {
        if (option >= 0) {
            ASSERT_TRUE(WriteOptionInt(u"GalDefSort", option));
        }
        stack.urls.clear();
        EXPECT_EQ(FetchClassTable(), u"<root/>");
        ASSERT_FALSE(stack.urls.empty());
        EXPECT_TRUE(EndsWith(stack.urls.back(), tail)) << stack.urls.back() << " for " << option;
    }
    stack.urls.clear();
    (void)FetchHotWords();
    ASSERT_FALSE(stack.urls.empty());
    EXPECT_TRUE(EndsWith(stack.urls.back(), "/gallery/gethotwords"));
    RestoreDefaultHttpStacks();
}

TEST(ClassTableRequests, HotWordParsing) {
    EXPECT_EQ(ParseHotWords(u"<root><hot_words><item>a</item><item>b</item></hot_words><default>d</default></root>"),
              (std::vector<std::u16string>{u"d", u"a", u"b"}));
    EXPECT_TRUE(ParseHotWords(u"").empty());
    EXPECT_TRUE(ParseHotWords(u"<root><hot_words>").empty());
    EXPECT_TRUE(ParseHotWords(u"<root/>").empty());
}

TEST(ClassTableRefresh, WorkerStoresTheTableAndHandsOverTheWords) {
    test::TempHome home;
    auto svc = test::StartLiveService(test::SampleLibrary());
    ASSERT_TRUE(svc.ok()) << svc.error();

    {
        PanelInbox inbox;
        StartClassTableRefresh(PanelInbox::kPanel);
        ASSERT_TRUE(inbox.WaitFor(2));
        std::lock_guard<std::mutex> lock(inbox.mutex);
        ASSERT_EQ(inbox.entries.size(), 2u);
        EXPECT_EQ(inbox.entries[0].message, MsgClassTableRefresh);
        EXPECT_EQ(inbox.entries[0].code, ClassTableCached);
        EXPECT_EQ(inbox.entries[1].code, HotWordsFetched);
        ASSERT_GE(inbox.entries[1].words.size(), 2u);
        EXPECT_EQ(inbox.entries[1].words[0], u"门");
    }
    ASSERT_TRUE(FileExists(ClassTablePath()));
    ClassTable table;
    ASSERT_TRUE(ApplyClassTable(u"", table, {}));
    EXPECT_FALSE(table.boutiqueKinds.empty());
    const std::string cached = test::ReadBytes(U8(ClassTablePath()));
    EXPECT_EQ(svc.counters().get("/gallery/selpageinfo").count, 1);
    EXPECT_EQ(svc.counters().get("/gallery/gethotwords").count, 1);

    // A cut answer and an error: the file stays, the panel is still told to
    // reapply (the old table), and no words come.
    service::Fault cut;
    cut.truncateAt = 40;
    svc.faults().set("/gallery/selpageinfo", cut);
    service::Fault dropped;
    dropped.drop = true;
    svc.faults().set("/gallery/gethotwords", dropped);
    {
        PanelInbox inbox;
        RunClassTableRefresh(PanelInbox::kPanel);
        ASSERT_EQ(inbox.entries.size(), 1u);
        EXPECT_EQ(inbox.entries[0].code, ClassTableCached);
    }
    EXPECT_EQ(test::ReadBytes(U8(ClassTablePath())), cached);
    EXPECT_EQ(svc.counters().get("/gallery/selpageinfo").count, 2);

    // No thread to be had: handled as a failed fetch, on the caller's thread.
    FailThreadStartsForTests(1);
    {
        PanelInbox inbox;
        StartClassTableRefresh(PanelInbox::kPanel);
        ASSERT_TRUE(inbox.WaitFor(1));
        std::lock_guard<std::mutex> lock(inbox.mutex);
        ASSERT_EQ(inbox.entries.size(), 1u);
        EXPECT_EQ(inbox.entries[0].code, ClassTableCached);
    }
    EXPECT_EQ(svc.counters().get("/gallery/selpageinfo").count, 2);
    EXPECT_EQ(test::ReadBytes(U8(ClassTablePath())), cached);
}
