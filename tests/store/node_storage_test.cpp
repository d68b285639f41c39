// The tree's storage: pieces made on one thread and freed on another are
// whole, distinct and used again, as a generation freed beside the next
// one's build does.
#include <gtest/gtest.h>

#include <cstring>
#include <thread>
#include <vector>

#include "store/node_storage.h"

namespace marrowfin {
namespace {

TEST(NodeStorage, PiecesCrossThreadsWithoutOverlapAndComeBack) {
    constexpr size_t kPieces = 20000;
    auto make = [&] {
        std::vector<std::pair<void*, size_t>> pieces;
        for (size_t i = 0; i < kPieces; ++i) {
            const size_t bytes = 1 + (i * 7) % 200;  // every class, and some beyond the largest
            auto* p = static_cast<unsigned char*>(node_storage::Allocate(bytes));
            std::memset(p, static_cast<int>(i & 0xff), bytes);
            pieces.emplace_back(p, bytes);
        }
        return pieces;
    };
    const size_t inUse = node_storage::BytesInUse();
    auto first = make();
    const size_t slabs = node_storage::SlabBytes();
    // Freed on another thread, after every piece was checked: a piece handed
    // out twice would carry another's pattern.
    std::thread([&] {
        for (size_t i = 0; i < first.size(); ++i) {
            const auto* p = static_cast<const unsigned char*>(first[i].first);
            for (size_t b = 0; b < first[i].second; ++b) ASSERT_EQ(p[b], i & 0xff) << i;
        }
        for (auto [p, bytes] : first) node_storage::Free(p, bytes);
    }).join();
    EXPECT_EQ(node_storage::BytesInUse(), inUse);
    // The next generation takes the freed pieces instead of new slabs.
    auto second = make();
    EXPECT_EQ(node_storage::SlabBytes(), slabs);
    for (auto [p, bytes] : second) node_storage::Free(p, bytes);
    EXPECT_EQ(node_storage::BytesInUse(), inUse);
}

}  // namespace
}  // namespace marrowfin
