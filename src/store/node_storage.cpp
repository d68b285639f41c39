#include "store/node_storage.h"

#include <atomic>
#include <mutex>
#include <new>

namespace marrowfin::node_storage {

namespace {

constexpr size_t kGrain = 16;
constexpr size_t kClasses = 8;  // 16, 32, ... 128 bytes
constexpr size_t kLargest = kGrain * kClasses;
constexpr size_t kSlabBytes = 64 * 1024;
constexpr int kBatch = 64;  // pieces a thread takes or gives back at once

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

std::atomic<size_t> g_inUse{0};
std::atomic<size_t> g_slabBytes{0};

// A free piece holds the link to the next one.
struct FreePiece {
    FreePiece* next;
};

struct FreeList {
    FreePiece* head = nullptr;
    int count = 0;

    void Push(void* piece) {
        auto* p = static_cast<FreePiece*>(piece);
        p->next = head;
        head = p;
        ++count;
    }
    void* Pop() {
        FreePiece* p = head;
        head = p->next;
        --count;
        return p;
    }
};

// The shared lists. Never destroyed: threads that end after the program's
// static objects still give their pieces back here.
struct Shared {
    std::mutex lock;
    FreeList lists[kClasses];
};

Shared& TheShared() {
    static Shared* shared = new Shared;
    return *shared;
}

size_t ClassOf(size_t bytes) { return (bytes - 1) / kGrain; }
size_t SizeOf(size_t cls) { return (cls + 1) * kGrain; }

// Moves up to `count` pieces from one list to another.
void Move(FreeList& from, FreeList& to, int count) {
    for (int i = 0; i < count && from.head; ++i) to.Push(from.Pop());
}

struct ThreadLists {
    FreeList lists[kClasses];

    ~ThreadLists() {
        Shared& shared = TheShared();
        std::lock_guard<std::mutex> hold(shared.lock);
        for (size_t c = 0; c < kClasses; ++c) Move(lists[c], shared.lists[c], lists[c].count);
    }

    void Refill(size_t cls) {
        Shared& shared = TheShared();
        {
            std::lock_guard<std::mutex> hold(shared.lock);
            Move(shared.lists[cls], lists[cls], kBatch);
        }
        if (lists[cls].head) return;
        // A new slab, cut into pieces of this size, all for this thread.
        const size_t size = SizeOf(cls);
        auto* slab = static_cast<char*>(::operator new(kSlabBytes));
        g_slabBytes.fetch_add(kSlabBytes, std::memory_order_relaxed);
        for (size_t at = 0; at + size <= kSlabBytes; at += size) lists[cls].Push(slab + at);
    }

    void GiveBack(size_t cls) {
        Shared& shared = TheShared();
        std::lock_guard<std::mutex> hold(shared.lock);
        Move(lists[cls], shared.lists[cls], kBatch);
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
    if (!mine.lists[cls].head) mine.Refill(cls);
    g_inUse.fetch_add(SizeOf(cls), std::memory_order_relaxed);
    return mine.lists[cls].Pop();
}

void Free(void* piece, size_t bytes) {
    if (!piece) return;
    if (!kPooled || bytes > kLargest) {
        ::operator delete(piece);
        return;
    }
    const size_t cls = ClassOf(bytes);
    ThreadLists& mine = Mine();
    mine.lists[cls].Push(piece);
    g_inUse.fetch_sub(SizeOf(cls), std::memory_order_relaxed);
    // A thread that frees a whole generation keeps only a few batches.
    if (mine.lists[cls].count > 3 * kBatch) mine.GiveBack(cls);
}

size_t BytesInUse() { return g_inUse.load(std::memory_order_relaxed); }
size_t SlabBytes() { return g_slabBytes.load(std::memory_order_relaxed); }

}  // namespace marrowfin::node_storage
