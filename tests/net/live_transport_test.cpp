#include <atomic>

#include "live_world.h"

using namespace marrowfin;

TEST(LiveTransport, EveryCallReachesTheServiceAndEveryFaultIsAFailure) {
    test::LiveWorld w({}, 0);
    test::ShortTimeouts timeouts;
    const std::u16string gallery = w.live.galleries.at(0), formUrl = ServiceBaseUrl() + u"/gallery/g_all?gallery_name=" + gallery;
    std::u16string out;
    ASSERT_TRUE(PostForm(formUrl, u"", out));
    EXPECT_TRUE(out.find(u"<root") != std::u16string::npos && out.find(gallery) != std::u16string::npos);  // Chinese names survive
    const std::pair<service::Fault, bool> cases[] = {
        {{.status = 404}, false},  {{.status = 500}, false},    {{.truncateAt = 10}, false},          {{.drop = true}, false},
        {{.holdMs = 4000}, false}, {{.emptyBody = true}, true}, {{.dripBytesPerSecond = 4000}, true}, {{.latencyMs = 300}, true},
    };
    for (const auto& [fault, ok] : cases) {
        SCOPED_TRACE(service::FaultText(fault));
        w.faults().set("/gallery/g_all", fault);
        out = u"stale";
        EXPECT_EQ(PostForm(formUrl, u"", out), ok);
        // libcurl hands out nothing on failure.
        EXPECT_EQ(std::make_pair(out.find(u"<root") != std::u16string::npos, out.empty()),
                  std::make_pair(ok && !fault.emptyBody, !ok || fault.emptyBody));
        w.faults().releaseHeld();
    }

    // While an answer comes in, nothing stands under the target's name: a slow answer lands
    // whole, a broken one leaves nothing that could pass for a block and an existing file as it was.
    w.faults().clearAll();
    // The address of the first block of the first gallery, found through the class reply.
    ASSERT_TRUE(PostForm(formUrl, u"", out));
    const size_t bu = out.find(u"b_u=\"") + 5, fn = out.find(u"fn=\"") + 4;
    const std::u16string url = out.substr(bu, out.find(u'"', bu) - bu) + u"/" + out.substr(fn, out.find(u'"', fn) - fn);
    const std::u16string target = Utf8ToUtf16(w.home.file("block.dwg")), fresh = Utf8ToUtf16(w.home.file("fresh.dwg"));
    ASSERT_TRUE(DownloadFile(url, target, test::RecordingWindows::kPanel, 7));
    const std::string bytes = test::ReadBytes(Utf16ToUtf8(target));
    EXPECT_EQ(bytes.substr(0, 4), "AC10");
    const auto loaded = w.windows.Messages(MsgProgress);  // the job number in the high word
    ASSERT_FALSE(loaded.empty());
    EXPECT_EQ(std::make_pair(loaded.back().wParam, loaded.back().lParam),
              std::make_pair(std::uintptr_t(7u << 16), std::intptr_t(bytes.size())));

    const std::pair<service::Fault, bool> downloads[] = {{{.latencyMs = 700}, true},
                                                         {{.dripBytesPerSecond = 6000}, true},
                                                         {{.status = 404}, false},
                                                         {{.truncateAt = 100}, false},
                                                         {{.drop = true}, false}};
    for (const auto& [fault, ok] : downloads) {
        SCOPED_TRACE(service::FaultText(fault));
        (void)RemoveFile(fresh);
        w.faults().set("/files/*", fault);
        std::atomic<bool> done{false}, landed{false};
        std::thread download([&] { landed = DownloadFile(url, fresh, 0, 0), done = true; });
        // A sighting counts unless the whole body stands there: the rename may land
        // between a look and the worker's last word.
        const std::int64_t whole = ok ? std::int64_t(bytes.size()) : -2;
        int looks = 0, seen = 0;
        for (; !done; SleepMs(5)) ++looks, seen += PathExists(fresh) && FileSize(fresh) != whole;
        download.join();
        EXPECT_TRUE(!ok || looks > 20) << "the answer was not slow enough to look at";
        EXPECT_EQ(seen, 0) << "the target stood there before the body was in";
        EXPECT_EQ(std::make_pair(landed.load(), FileSize(fresh)), std::make_pair(ok, ok ? std::int64_t(bytes.size()) : -1));
        if (!ok) {
            w.faults().releaseHeld();
            EXPECT_TRUE(!DownloadFile(url, target, 0, 0) && test::ReadBytes(Utf16ToUtf8(target)) == bytes);
        }
        w.faults().releaseHeld();
    }
    // A folder that is not there: refused before any request, and not made.
    const long before = w.Count("/files/*");
    EXPECT_FALSE(DownloadFile(url, Utf8ToUtf16(w.home.file("no-such-folder/x.dwg")), 0, 0));
    EXPECT_TRUE(!PathExists(Utf8ToUtf16(w.home.file("no-such-folder"))) && w.Count("/files/*") == before);

    // Uploads: a missing file goes nowhere; progress is wParam 2 and the share sent, rising to 100.
    const std::u16string upload = ServiceBaseUrl() + u"/gallery/lfupload";
    EXPECT_FALSE(UploadFile(upload, u"", Utf8ToUtf16(w.home.file("missing.zip")), out, 0));
    test::WriteBytes(w.home.file("big.zip"), std::string(3 * 1024 * 1024, 'z'));
    const size_t earlier = w.windows.Messages(MsgProgress).size();
    EXPECT_TRUE(UploadFile(upload, u"", Utf8ToUtf16(w.home.file("big.zip")), out, test::RecordingWindows::kPanel));
    auto progress = w.windows.Messages(MsgProgress);
    progress.erase(progress.begin(), progress.begin() + static_cast<std::ptrdiff_t>(earlier));
    ASSERT_FALSE(progress.empty());
    for (size_t i = 0; i < progress.size(); ++i)
        EXPECT_TRUE(progress[i].wParam == 2u && (i == 0 || progress[i].lParam > progress[i - 1].lParam)) << i;
    EXPECT_EQ(std::make_pair(progress.back().lParam, w.Count("/gallery/lfupload")), std::make_pair(std::intptr_t{100}, 1L));
    w.faults().set("/gallery/lfupload", {.status = 500});
    EXPECT_FALSE(UploadFile(upload, u"", Utf8ToUtf16(w.home.file("big.zip")), out, 0));
}
