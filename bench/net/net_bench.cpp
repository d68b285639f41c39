// The synchronisation's cost over the bare parse of the same reply, and the
// download queue's total time over the ideal of six parallel lanes.

#include <benchmark/benchmark.h>

#include <malloc.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <mutex>
#include <system_error>
#include <vector>

#include "bench_library.h"
#include "fault_switches.h"
#include "markup/markup_document.h"
#include "net/download_queue.h"
#include "net/gallery_sync.h"
#include "store/tree_update.h"
#include "net/http_transport.h"
#include "platform/files.h"
#include "platform/paths.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "platform/ticks.h"
#include "request_counters.h"
#include "service_handle.h"
#include "store/gallery_node.h"
#include "store/gallery_store.h"
#include "store/catalogue.h"
#include "store/gallery_tree.h"
#include "store/node_storage.h"
#include "store/show_list.h"

using namespace marrowfin;
namespace fs = std::filesystem;

namespace {

struct BigLibrary {
    std::string data;
    service::ServiceHandle svc;
    std::u16string reply;
    BigLibrary() {
        bench::UseFreshHome();
        data = bench::KeepUntilExit(bench::WriteLinkedLibrary(101, 30, 100, 2048));
        svc = service::StartService(data, 0);
        WriteOptionString(u"ServiceBase", Utf8ToUtf16(svc.baseUrl()));
        std::u16string query;
        for (int g = 0; g < 101; ++g) {
            AddGalleryToShowList(Utf8ToUtf16(bench::GalleryName(g)));
            if (g) query += u',';
            query += Utf8ToUtf16(bench::GalleryName(g));
        }
        (void)PostForm(ServiceBaseUrl() + u"/gallery/g_all_s?gallery_name=" + query, u"", reply);
    }
    ~BigLibrary() { svc.stop(); }
    static BigLibrary& Get() {
        static BigLibrary library;
        return library;
    }
};

void FreeTree(GalleryStore& store) {
    if (!store.root) return;
    DestroySubtree(store.root);
    delete store.root;
    store.root = nullptr;
}

double ThreadCpuMs() {
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) * 1e3 + static_cast<double>(t.tv_nsec) / 1e6;
}

// The synchronisation thread's own time (the CPU column; the service answers
// on its own threads), to be read against BM_ParseSameReply of the same run.
// Freeing the tree is timed apart, outside the measured time.
void BM_BuildFirstTree_101x30x100(benchmark::State& state) {
    BigLibrary& lib = BigLibrary::Get();
    size_t blocks = 0;
    double freeMs = 0;
    double buildMs = 0;
    double parseMs = 0;
    double bytesPerBlock = 0;
    for (auto _ : state) {
        GalleryStore store;
        // The tree's pieces come from slabs that outlive a generation: count
        // the pieces in use, and the heap beside the slabs.
        const size_t heapBefore = mallinfo2().uordblks - node_storage::SlabBytes();
        const size_t piecesBefore = node_storage::BytesInUse();
        const double building = ThreadCpuMs();
        BuildFirstTree(store);
        AdoptTreeUpdates(store);
        buildMs += ThreadCpuMs() - building;
        state.PauseTiming();
        blocks = 0;
        for (GalleryNode* g : store.root->dirChildren)
            for (GalleryNode* c : g->dirChildren) blocks += c->fileChildren.size();
        // What the tree holds on the heap once the build's own buffers are gone.
        const size_t heapAfter = mallinfo2().uordblks - node_storage::SlabBytes();
        const size_t pieces = node_storage::BytesInUse() - piecesBefore;
        bytesPerBlock = static_cast<double>(heapAfter - heapBefore + pieces) / static_cast<double>(blocks);
        {
            // The peer, in the same iteration: parsing the same reply.
            const double parsing = ThreadCpuMs();
            MarkupDocument doc;
            benchmark::DoNotOptimize(doc.SetText(lib.reply));
            parseMs += ThreadCpuMs() - parsing;
        }
        const double freeing = ThreadCpuMs();
        FreeTree(store);
        freeMs += ThreadCpuMs() - freeing;
        state.ResumeTiming();
    }
    state.counters["blocks"] = static_cast<double>(blocks);
    state.counters["reply_MB"] = static_cast<double>(lib.reply.size() * 2) / 1e6;
    state.counters["free_cpu_ms"] = freeMs / static_cast<double>(state.iterations());
    state.counters["tree_bytes_per_block"] = bytesPerBlock;
    state.counters["build_over_settext"] = buildMs / parseMs;
}

// The road of F5 and of the picker: the tree is there, and the run frees all
// its galleries before building them again.
void BM_RebuildFirstTree_101x30x100(benchmark::State& state) {
    BigLibrary::Get();
    GalleryStore store;
    BuildFirstTree(store);
    AdoptTreeUpdates(store);
    for (auto _ : state) {
        BuildFirstTree(store);
        AdoptTreeUpdates(store);
    }
    WaitForReleases();
    FreeTree(store);
}

void BM_ParseSameReply(benchmark::State& state) {
    BigLibrary& lib = BigLibrary::Get();
    for (auto _ : state) {
        MarkupDocument doc;
        benchmark::DoNotOptimize(doc.SetText(lib.reply));
    }
    state.counters["reply_MB"] = static_cast<double>(lib.reply.size() * 2) / 1e6;
}

// The reads the build makes of the parsed reply, without building anything:
// every gallery, class and block element with the attributes the build reads.
void BM_WalkSameReply(benchmark::State& state) {
    BigLibrary& lib = BigLibrary::Get();
    MarkupDocument doc;
    (void)doc.SetText(lib.reply);
    std::u16string value;
    static constexpr std::u16string_view kNames[3] = {u"fn", u"size", u"hi"};
    std::u16string_view seen[3];
    std::u16string scratch[3];
    size_t blocks = 0;
    for (auto _ : state) {
        blocks = 0;
        doc.RewindMain();
        (void)doc.FindElement(u"root");
        doc.EnterElement();
        while (doc.FindElement(u"gallery")) {
            doc.GetAttribute(u"gn", value);
            doc.EnterElement();
            while (doc.FindElement(u"item")) {
                doc.GetAttribute(u"cs", value);
                doc.GetAttribute(u"b_u", value);
                doc.GetAttribute(u"ver", value);
                doc.EnterElement();
                while (doc.FindElement(u"dwg")) {
                    doc.AttributeViews(kNames, seen, scratch);
                    benchmark::DoNotOptimize(seen);
                    ++blocks;
                }
                doc.LeaveElement();
            }
            doc.LeaveElement();
        }
        benchmark::DoNotOptimize(value);
    }
    state.counters["blocks"] = static_cast<double>(blocks);
}

// The reply arrives over loopback too: the fetch alone, as the build makes
// it (the bytes as they come), without the tree.
void BM_FetchSameReply(benchmark::State& state) {
    BigLibrary& lib = BigLibrary::Get();
    std::u16string query;
    for (int g = 0; g < 101; ++g) {
        if (g) query += u',';
        query += Utf8ToUtf16(bench::GalleryName(g));
    }
    for (auto _ : state) {
        std::string out;
        benchmark::DoNotOptimize(PostFormBytes(ServiceBaseUrl() + u"/gallery/g_all_s?gallery_name=" + query, u"", out));
    }
    (void)lib;
}

// The first tree of the big library, built once, for the catalogue benchmarks.
GalleryStore& BuiltStore() {
    static GalleryStore* store = [] {
        BigLibrary::Get();
        auto* built = new GalleryStore;
        BuildFirstTree(*built);
        AdoptTreeUpdates(*built);
        return built;
    }();
    return *store;
}

// The floor of the build's node work: the same classes and blocks made from
// strings at hand (the file name copied as a read would, the node, the
// attaching), with no reply read at all. Freed outside the measured time, as
// the build's tree is.
void BM_MakeSameNodes(benchmark::State& state) {
    GalleryStore& built = BuiltStore();
    std::vector<const GalleryNode*> classes;
    for (const GalleryNode* g : built.root->dirChildren)
        for (const GalleryNode* c : g->dirChildren) classes.push_back(c);
    std::u16string fn;
    for (auto _ : state) {
        GalleryNode top;
        for (const GalleryNode* source : classes) {
            auto* cls = new GalleryNode(u"g", source->Path(), source->name, kKindDir, false, false, 0);
            cls->remoteBase = source->remoteBase;
            AddChild(&top, cls, false);
            for (const GalleryNode* b : source->fileChildren) {
                fn.assign(b->name.view());
                AddChild(cls, NewBlock(fn, false, false, 1), false);
            }
        }
        state.PauseTiming();
        DestroySubtree(&top);
        state.ResumeTiming();
    }
}

// Composing every gallery's catalogue, against its peer: encoding texts of
// the same content from UTF-16 to UTF-8 in one go, the least any composing
// into UTF-8 has to do.
void BM_ComposeCatalogues(benchmark::State& state) {
    GalleryStore& store = BuiltStore();
    size_t bytes = 0;
    for (auto _ : state) {
        bytes = 0;
        for (const GalleryNode* g : store.root->dirChildren) bytes += ComposeCatalogue(store, *g).size();
    }
    state.counters["MB"] = static_cast<double>(bytes) / 1e6;
}

void BM_EncodeSameText(benchmark::State& state) {
    GalleryStore& store = BuiltStore();
    std::vector<std::u16string> texts;
    for (const GalleryNode* g : store.root->dirChildren) texts.push_back(Utf8ToUtf16(ComposeCatalogue(store, *g)));
    size_t bytes = 0;
    for (auto _ : state) {
        bytes = 0;
        for (const std::u16string& t : texts) bytes += Utf16ToUtf8(t).size();
    }
    state.counters["MB"] = static_cast<double>(bytes) / 1e6;
}

void BM_DownloadQueue_600x32KB_25ms(benchmark::State& state) {
    bench::UseFreshHome();
    const std::string data = bench::KeepUntilExit(bench::WriteLinkedLibrary(1, 6, 100, 32 * 1024));
    service::ServiceHandle svc = service::StartService(data, 0);
    WriteOptionString(u"ServiceBase", Utf8ToUtf16(svc.baseUrl()));
    AddGalleryToShowList(Utf8ToUtf16(bench::GalleryName(0)));
    GalleryStore store;
    BuildFirstTree(store);
    AdoptTreeUpdates(store);
    std::vector<std::u16string> paths;
    for (GalleryNode* c : store.root->dirChildren[0]->dirChildren)
        for (GalleryNode* b : c->fileChildren) paths.push_back(b->Path());
    service::Fault latency;
    latency.latencyMs = 25;
    svc.faults().set("/files/*", latency);
    for (auto _ : state) {
        state.PauseTiming();
        for (GalleryNode* c : store.root->dirChildren[0]->dirChildren) RemoveDirectoryTree(c->Path());
        svc.counters().reset();
        state.ResumeTiming();
        for (const auto& p : paths) EnqueueDownload(store, p);
        for (;;) {
            {
                std::lock_guard<std::mutex> lock(store.downloadLock);
                if (store.downloadsWaiting.empty() && store.downloadsRunning.empty()) break;
            }
            SleepMs(1);
        }
        WaitForDownloadWorkers(std::chrono::seconds(10));
    }
    const double idealMs = 600 * 25.0 / 6;
    state.counters["ideal_ms"] = idealMs;
    state.counters["server_peak"] = svc.counters().get("/files/*").peak;
    state.counters["fetched"] = static_cast<double>(svc.counters().get("/files/*").count);
    FreeTree(store);
}

}  // namespace

BENCHMARK(BM_ParseSameReply)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_WalkSameReply)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_FetchSameReply)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_BuildFirstTree_101x30x100)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_RebuildFirstTree_101x30x100)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_MakeSameNodes)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_EncodeSameText)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_ComposeCatalogues)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_DownloadQueue_600x32KB_25ms)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();
BENCHMARK_MAIN();
