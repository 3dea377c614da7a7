#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <thread>
#include <vector>

#include "vx/memory/PageChunks.h"
#include "vx/memory/Pages.h"
#include "vx/platform/Package.h"

namespace {

using vel::CChunk;
using vel::kPageSize;
using vel::kPagesPerChunk;

struct CTakenPage {
    void* memory;
    CChunk* chunk;
};

std::vector<CTakenPage> TakePages(std::size_t count) {
    std::vector<CTakenPage> pages;
    for (std::size_t i = 0; i < count; ++i) {
        CTakenPage page{};
        page.memory = vel::TakeChunkPage(page.chunk);
        if (!page.memory) break;
        pages.push_back(page);
    }
    return pages;
}

void ReturnPages(const std::vector<CTakenPage>& pages) {
    for (const CTakenPage& page : pages)
        vel::ReturnChunkPage(page.chunk, page.memory);
}

// Pages are distinct, aligned to their size and writable; once given back, the same number is
// taken again from the chunks kept, without mapping new ones.
TEST(PageChunks, PagesAreDistinctAndReusedFromKeptChunks) {
    const std::vector<CTakenPage> pages = TakePages(3 * kPagesPerChunk);
    if (pages.empty()) GTEST_SKIP() << "the system maps no chunks";
    ASSERT_EQ(pages.size(), 3 * kPagesPerChunk);
    std::vector<std::uintptr_t> addresses;
    for (const CTakenPage& page : pages) {
        const auto address = reinterpret_cast<std::uintptr_t>(page.memory);
        EXPECT_EQ(address % kPageSize, 0u);
        addresses.push_back(address);
        std::memset(page.memory, 0x5A, kPageSize);
    }
    std::sort(addresses.begin(), addresses.end());
    EXPECT_EQ(std::adjacent_find(addresses.begin(), addresses.end()), addresses.end());

    ReturnPages(pages);
    const vel::CChunkCounts returned = vel::CountChunks();
    EXPECT_GE(returned.unused, 3);
    const std::vector<CTakenPage> again = TakePages(3 * kPagesPerChunk);
    EXPECT_EQ(vel::CountChunks().mapped, returned.mapped);
    ReturnPages(again);
}

// A host that once parsed a huge document keeps only a bounded number of empty chunks, and
// Finalize gives those back.
TEST(PageChunks, EmptyChunksKeptAreBounded) {
    constexpr std::size_t kChunks = 400;
    const std::vector<CTakenPage> pages = TakePages(kChunks * kPagesPerChunk);
    if (pages.empty()) GTEST_SKIP() << "the system maps no chunks";
    const int mapped = vel::CountChunks().mapped;
    ReturnPages(pages);
    const vel::CChunkCounts after = vel::CountChunks();
    EXPECT_GT(after.unused, 0);
    EXPECT_LT(after.unused, static_cast<int>(kChunks));
    EXPECT_EQ(mapped - after.mapped, static_cast<int>(kChunks) - after.unused);
    vx::Finalize();
    EXPECT_EQ(vel::CountChunks().unused, 0);
    EXPECT_EQ(vel::CountChunks().mapped, after.mapped - after.unused);
}

// Objects made in a parse on one thread and freed on another give their pages back to the
// chunks: a host that hands every document to another thread maps no more as it goes on.
TEST(PageChunks, PagesFreedOnAnotherThreadAreReused) {
    constexpr int kObjects = 200000;  // about 6 MB of pages
    auto cycle = [] {
        std::vector<void*> objects;
        std::thread maker([&] {
            vel::CPageScope pages;
            for (int i = 0; i < kObjects; ++i)
                objects.push_back(vel::AllocateSmall(32));
        });
        maker.join();
        std::thread freer([&] {
            for (void* object : objects)
                vel::FreeSmall(object, 32);
        });
        freer.join();
    };
    cycle();
    const int mapped = vel::CountChunks().mapped;
    for (int i = 0; i < 5; ++i)
        cycle();
    EXPECT_EQ(vel::CountChunks().mapped, mapped);
}

// A block of megabytes is a mapping of its own: whole, writable, and not taken for a page's.
TEST(PageChunks, LargeBlocksRoundTrip) {
    constexpr std::size_t kSize = 5 * vel::kHugePageSize + 123;
    vel::CPageScope pages;
    auto* block = static_cast<unsigned char*>(vel::AllocateSmall(kSize, vel::eTextPages));
    EXPECT_FALSE(vel::IsPaged(block));
    std::memset(block, 0xA5, kSize);
    EXPECT_EQ(block[0], 0xA5);
    EXPECT_EQ(block[kSize - 1], 0xA5);
    vel::FreeSmall(block, kSize);
}

}  // namespace

// Two threads taking pages at once take them from chunks of their own, and a thread's chunk
// is found again by others once the thread ends.
TEST(PageChunks, ThreadsTakePagesFromChunksOfTheirOwn) {
    CTakenPage mine{};
    mine.memory = vel::TakeChunkPage(mine.chunk);
    if (!mine.memory) GTEST_SKIP() << "the system maps no chunks";
    std::vector<CTakenPage> theirs;
    std::thread other([&] { theirs = TakePages(kPagesPerChunk / 2); });
    other.join();
    ASSERT_FALSE(theirs.empty());
    for (const CTakenPage& page : theirs)
        EXPECT_NE(page.chunk, mine.chunk);
    const std::vector<CTakenPage> next = TakePages(kPagesPerChunk);
    EXPECT_TRUE(std::any_of(next.begin(), next.end(),
                            [&](const CTakenPage& page) { return page.chunk == theirs[0].chunk; }));
    ReturnPages(theirs);
    ReturnPages(next);
    ReturnPages({mine});
}
