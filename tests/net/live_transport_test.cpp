#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "fault_switches.h"
#include "net/http_transport.h"
#include "platform/files.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "platform/ticks.h"
#include "recording_windows.h"
#include "request_counters.h"
#include "short_timeouts.h"
#include "support/live_service.h"
#include "support/temp_home.h"
#include "support/test_paths.h"

using namespace marrowfin;
using marrowfin::test::ShortTimeouts;
using marrowfin::test::TempHome;

namespace {

// The address of the first block of the first gallery, found through the class reply.
std::u16string FirstBlockUrl() {
    const std::u16string gallery = test::GalleryNames(test::SampleLibrary()).at(0);
    std::u16string reply;
    if (!PostForm(ServiceBaseUrl() + u"/gallery/g_all?gallery_name=" + gallery, u"", reply)) return {};
    const size_t bu = reply.find(u"b_u=\"");
    const size_t fn = reply.find(u"fn=\"");
    if (bu == std::u16string::npos || fn == std::u16string::npos) return {};
    const std::u16string base = reply.substr(bu + 5, reply.find(u'"', bu + 5) - bu - 5);
    const std::u16string name = reply.substr(fn + 4, reply.find(u'"', fn + 4) - fn - 4);
    return base + u"/" + name;
}

}  // namespace

TEST(LiveTransport, FormPostsReachTheServiceAndEveryFaultIsAFailure) {
    TempHome home;
    ShortTimeouts timeouts;
    auto svc = test::StartLiveService(test::SampleLibrary());
    const std::u16string gallery = test::GalleryNames(test::SampleLibrary()).at(0);
    const std::u16string url = ServiceBaseUrl() + u"/gallery/g_all?gallery_name=" + gallery;
    std::u16string out;
    ASSERT_TRUE(PostForm(url, u"", out));
    EXPECT_NE(out.find(u"<root"), std::u16string::npos);
    EXPECT_NE(out.find(gallery), std::u16string::npos);  // Chinese names survive the round trip
    EXPECT_EQ(GetOptionInt(u"FNetUseInet", -2), 2);

    struct Case { const char* what; service::Fault fault; bool ok; };
    const Case cases[] = {
        {"404", {.status = 404}, false},
        {"500", {.status = 500}, false},
        {"truncated", {.truncateAt = 10}, false},
        {"dropped", {.drop = true}, false},
        {"hold past the time-out", {.holdMs = 4000}, false},
        {"empty", {.emptyBody = true}, true},
        {"slow but moving", {.dripBytesPerSecond = 4000}, true},
        {"latency", {.latencyMs = 300}, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        svc.faults().set("/gallery/g_all", c.fault);
        out = u"stale";
        EXPECT_EQ(PostForm(url, u"", out), c.ok);
        if (!c.ok || c.fault.emptyBody) {
            EXPECT_TRUE(out.empty());  // libcurl hands out nothing on failure
        } else {
            EXPECT_NE(out.find(u"<root"), std::u16string::npos);
        }
        svc.faults().releaseHeld();
    }
    svc.faults().clearAll();
    // A failure never rewrites the remembered stack.
    EXPECT_EQ(GetOptionInt(u"FNetUseInet", -2), 2);
}

TEST(LiveTransport, DownloadsLandWholeOrNotAtAll) {
    TempHome home;
    ShortTimeouts timeouts;
    test::RecordingWindows windows;
    auto svc = test::StartLiveService(test::SampleLibrary());
    const std::u16string url = FirstBlockUrl();
    ASSERT_FALSE(url.empty());

    const std::u16string target = W(home.file("block.dwg"));
    ASSERT_TRUE(DownloadFile(url, target, test::RecordingWindows::kPanel, 7));
    EXPECT_GT(FileSize(target), 1024);
    const std::string bytes = test::ReadBytes(U8(target));
    EXPECT_EQ(bytes.substr(0, 4), "AC10");
    // Progress went to the window with the job number in the high word.
    const auto progress = windows.Messages(MsgProgress);
    ASSERT_FALSE(progress.empty());
    EXPECT_EQ(progress.back().wParam, 7u << 16);
    EXPECT_EQ(progress.back().lParam, FileSize(target));

    const service::Fault broken[] = {{.status = 404}, {.truncateAt = 100}, {.drop = true}, {.holdMs = 4000}};
    for (const service::Fault& fault : broken) {
        SCOPED_TRACE(service::FaultText(fault));
        svc.faults().set("/files/*", fault);
        const std::u16string fresh = W(home.file("fresh.dwg"));
        EXPECT_FALSE(DownloadFile(url, fresh, 0, 0));
        EXPECT_FALSE(PathExists(fresh));  // nothing left that could pass for a block
        // An existing file is left as it was.
        EXPECT_FALSE(DownloadFile(url, target, 0, 0));
        EXPECT_EQ(test::ReadBytes(U8(target)), bytes);
        svc.faults().releaseHeld();
    }
    svc.faults().clearAll();
    // A folder that is not there: refused before any request, and not made.
    const long before = svc.counters().get("/files/*").count;
    EXPECT_FALSE(DownloadFile(url, W(home.file("no-such-folder/x.dwg")), 0, 0));
    EXPECT_FALSE(PathExists(W(home.file("no-such-folder"))));
    EXPECT_EQ(svc.counters().get("/files/*").count, before);
}

TEST(LiveTransport, NoTargetIsMadeBeforeTheWholeBodyIsIn) {
    TempHome home;
    ShortTimeouts timeouts;
    auto svc = test::StartLiveService(test::SampleLibrary());
    const std::u16string url = FirstBlockUrl();
    ASSERT_FALSE(url.empty());
    const std::u16string target = W(home.file("slow.dwg"));

    // While a slow answer comes in, nothing stands under the target's name.
    const service::Fault slow[] = {{.latencyMs = 700}, {.dripBytesPerSecond = 6000}};
    for (const service::Fault& fault : slow) {
        SCOPED_TRACE(service::FaultText(fault));
        (void)RemoveFile(target);
        svc.faults().set("/files/*", fault);
        std::atomic<bool> done{false}, ok{false};
        std::thread download([&] {
            ok = DownloadFile(url, target, 0, 0);
            done = true;
        });
        int looks = 0, seen = 0;
        while (!done) {
            ++looks;
            if (PathExists(target)) ++seen;
            SleepMs(5);
        }
        download.join();
        EXPECT_TRUE(ok.load());
        EXPECT_GT(looks, 20) << "the answer was not slow enough to look at";
        EXPECT_EQ(seen, 0) << "the target stood there before the body was in";
        EXPECT_GT(FileSize(target), 1024);
    }
    svc.faults().clearAll();
}

TEST(LiveTransport, UploadsReportTheirShareAndFailWithTheService) {
    TempHome home;
    auto svc = test::StartLiveService(test::SampleLibrary());
    test::RecordingWindows windows;
    const std::u16string url = ServiceBaseUrl() + u"/gallery/lfupload";
    std::u16string out;
    // The service reads the archive and refuses this one with its reply word.
    test::WriteBytes(home.file("12345.zip"), "not really a zip");
    EXPECT_TRUE(UploadFile(url, u"", W(home.file("12345.zip")), out, 0));
    EXPECT_EQ(out, u"error");
    EXPECT_FALSE(UploadFile(url, u"", W(home.file("missing.zip")), out, 0));
    // Progress: wParam 2 and the share sent, rising to 100.
    test::WriteBytes(home.file("big.zip"), std::string(3 * 1024 * 1024, 'z'));
    EXPECT_TRUE(UploadFile(url, u"", W(home.file("big.zip")), out, test::RecordingWindows::kPanel));
    const auto progress = windows.Messages(MsgProgress);
    ASSERT_FALSE(progress.empty());
    for (size_t i = 0; i < progress.size(); ++i) {
        EXPECT_EQ(progress[i].wParam, 2u);
        EXPECT_TRUE(i == 0 || progress[i].lParam > progress[i - 1].lParam);
    }
    EXPECT_EQ(progress.back().lParam, 100);
    EXPECT_EQ(svc.counters().get("/gallery/lfupload").count, 2);
    svc.faults().set("/gallery/lfupload", {.status = 500});
    EXPECT_FALSE(UploadFile(url, u"", W(home.file("12345.zip")), out, 0));
}
