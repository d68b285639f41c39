#include "store/node_storage.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <new>
#include <vector>

namespace marrowfin::node_storage {

namespace {

constexpr size_t kGrain = 16;
constexpr size_t kClasses = 8;  // 16, 32, ... 128 bytes
constexpr size_t kLargest = kGrain * kClasses;
constexpr size_t kSlabBytes = 64 * 1024;
constexpr size_t kBatch = 64;  // pieces a thread takes or gives back at once

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kPooled = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool kPooled = false;
#else
constexpr bool kPooled = true;
#endif
#else
constexpr bool kPooled = true;
#endif

std::atomic<size_t> g_slabBytes{0};

struct ThreadLists;

// Free pieces are kept as arrays of addresses, not as links inside the
// pieces: a generation freed in tree order and taken again by the next build
// made each allocation wait for the piece's memory only to read its link,
// one miss after the other. Taken from an array, a piece is first touched by
// whoever fills it, and the next one's memory is asked for in advance.
using FreeList = std::vector<void*>;

// Moves up to `count` pieces from the end of one list to another.
void Move(FreeList& from, FreeList& to, size_t count) {
    count = std::min(count, from.size());
    to.insert(to.end(), from.end() - static_cast<std::ptrdiff_t>(count), from.end());
    from.resize(from.size() - count);
}

// The shared lists. Never destroyed: threads that end after the program's
// static objects still give their pieces back here.
struct Shared {
    std::mutex lock;
    FreeList lists[kClasses];
    // Every thread's count of the bytes it handed out less those it took
    // back, and the sum of the counts of threads that have ended.
    std::vector<const ThreadLists*> threads;
    int64_t endedInUse = 0;
};

Shared& TheShared() {
    static Shared* shared = new Shared;
    return *shared;
}

size_t ClassOf(size_t bytes) { return (bytes - 1) / kGrain; }
size_t SizeOf(size_t cls) { return (cls + 1) * kGrain; }

struct ThreadLists {
    FreeList lists[kClasses];
    // The rest of this thread's newest slab of each size, not cut yet.
    char* uncut[kClasses] = {};
    char* uncutEnd[kClasses] = {};

    // Written by this thread only, so a plain store does: a locked add on
    // one shared count stalled every allocation until the stores before it,
    // the last node's, had reached memory.
    std::atomic<int64_t> inUse{0};

    ThreadLists() {
        for (FreeList& list : lists) list.reserve(4 * kBatch);
        Shared& shared = TheShared();
        std::lock_guard<std::mutex> hold(shared.lock);
        shared.threads.push_back(this);
    }
    ~ThreadLists() {
        Shared& shared = TheShared();
        std::lock_guard<std::mutex> hold(shared.lock);
        for (size_t c = 0; c < kClasses; ++c) {
            GiveBackLocked(shared, c, lists[c].size());
            try {
                for (char* at = uncut[c]; at && at + SizeOf(c) <= uncutEnd[c]; at += SizeOf(c))
                    shared.lists[c].push_back(at);
            } catch (const std::bad_alloc&) {
                // The rest of the slab stays unused.
            }
        }
        shared.endedInUse += inUse.load(std::memory_order_relaxed);
        shared.threads.erase(std::find(shared.threads.begin(), shared.threads.end(), this));
    }
    void Count(int64_t bytes) { inUse.store(inUse.load(std::memory_order_relaxed) + bytes, std::memory_order_relaxed); }

    void Refill(size_t cls) {
        Shared& shared = TheShared();
        {
            std::lock_guard<std::mutex> hold(shared.lock);
            Move(shared.lists[cls], lists[cls], kBatch);
        }
        if (!lists[cls].empty()) return;
        const size_t size = SizeOf(cls);
        if (!uncut[cls] || uncut[cls] + size > uncutEnd[cls]) {
            // A new slab of this size, all for this thread.
            uncut[cls] = static_cast<char*>(::operator new(kSlabBytes));
            uncutEnd[cls] = uncut[cls] + kSlabBytes;
            g_slabBytes.fetch_add(kSlabBytes, std::memory_order_relaxed);
        }
        // A batch cut off the front; pushed last to first, so that pieces go
        // out in the slab's order.
        size_t pieces = std::min<size_t>(kBatch, static_cast<size_t>(uncutEnd[cls] - uncut[cls]) / size);
        char* const from = uncut[cls];
        uncut[cls] += pieces * size;
        while (pieces-- > 0) lists[cls].push_back(from + pieces * size);
    }

    void GiveBack(size_t cls) {
        Shared& shared = TheShared();
        std::lock_guard<std::mutex> hold(shared.lock);
        GiveBackLocked(shared, cls, kBatch);
    }
    // Frees must not fail: when the shared list cannot grow, the pieces are
    // left unused instead.
    void GiveBackLocked(Shared& shared, size_t cls, size_t count) {
        try {
            Move(lists[cls], shared.lists[cls], count);
        } catch (const std::bad_alloc&) { lists[cls].resize(lists[cls].size() - std::min(count, lists[cls].size())); }
    }
};

ThreadLists& Mine() {
    thread_local ThreadLists lists;
    return lists;
}

}  // namespace

void* Allocate(size_t bytes) {
    if (!kPooled || bytes > kLargest) return ::operator new(bytes);
    const size_t cls = ClassOf(bytes);
    ThreadLists& mine = Mine();
    FreeList& list = mine.lists[cls];
    if (list.empty()) mine.Refill(cls);
    mine.Count(static_cast<int64_t>(SizeOf(cls)));
    void* piece = list.back();
    list.pop_back();
    // The caller fills this piece now; the next one's memory is on its way.
    if (!list.empty()) __builtin_prefetch(list.back(), 1);
    return piece;
}

void Free(void* piece, size_t bytes) {
    if (!piece) return;
    if (!kPooled || bytes > kLargest) {
        ::operator delete(piece);
        return;
    }
    const size_t cls = ClassOf(bytes);
    ThreadLists& mine = Mine();
    FreeList& list = mine.lists[cls];
    list.push_back(piece);
    mine.Count(-static_cast<int64_t>(SizeOf(cls)));
    // A thread that frees a whole generation keeps only a few batches.
    if (list.size() > 3 * kBatch) mine.GiveBack(cls);
}

size_t BytesInUse() {
    Shared& shared = TheShared();
    std::lock_guard<std::mutex> hold(shared.lock);
    int64_t sum = shared.endedInUse;
    for (const ThreadLists* lists : shared.threads) sum += lists->inUse.load(std::memory_order_relaxed);
    return static_cast<size_t>(sum);
}
size_t SlabBytes() { return g_slabBytes.load(std::memory_order_relaxed); }

}  // namespace marrowfin::node_storage
