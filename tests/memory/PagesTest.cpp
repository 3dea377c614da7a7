#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "vx/memory/Pages.h"
#include "vx/text/VelStr.h"

namespace {

using vel::AllocateSmall;
using vel::FreeSmall;
using vel::IsPaged;

struct CBlock {
    unsigned char* memory;
    std::size_t size;
};

// Many blocks of mixed sizes across several pages: each is aligned, paged exactly when small,
// and holds its own bytes until it is freed, whatever the order of freeing. Blocks freed after
// the scope ended stay valid until then (a document outlives its parse); AddressSanitizer's
// leak check then sees whether every page was given back.
TEST(Pages, BlocksAreDistinctAlignedAndOutliveTheirScope) {
    std::vector<CBlock> blocks;
    {
        vel::CPageScope pages;
        for (int i = 0; i < 20000; ++i) {
            const std::size_t size = 1 + static_cast<std::size_t>(i * 37 % 700);
            auto* memory = static_cast<unsigned char*>(AllocateSmall(size));
            ASSERT_EQ(reinterpret_cast<std::uintptr_t>(memory) % alignof(void*), 0u);
            EXPECT_EQ(IsPaged(memory), size <= 512) << size;
            std::memset(memory, i & 0xFF, size);
            blocks.push_back({memory, size});
        }
        // Every other block goes while the pages are still being filled.
        for (std::size_t i = 0; i < blocks.size(); i += 2) {
            FreeSmall(blocks[i].memory, blocks[i].size);
            blocks[i].memory = nullptr;
        }
    }
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        if (!blocks[i].memory) continue;
        const auto expected = static_cast<unsigned char>(i & 0xFF);
        ASSERT_TRUE(std::all_of(blocks[i].memory, blocks[i].memory + blocks[i].size,
                                [&](unsigned char byte) { return byte == expected; }))
            << "block " << i;
    }
    std::reverse(blocks.begin(), blocks.end());
    for (const CBlock& block : blocks)
        FreeSmall(block.memory, block.size);
}

int g_scopeEnds = 0;
void CountScopeEnd() noexcept {
    ++g_scopeEnds;
}

// Outside a page scope, and inside a heap scope within one, memory is an ordinary heap block;
// the page scope is back once the heap scope ends, and scopes nest. The end hook runs once,
// when the outermost scope ends.
TEST(Pages, ScopesDecideWhereMemoryComesFrom) {
    const vel::PageScopeEndHook previous = vel::SetPageScopeEndHook(CountScopeEnd);
    g_scopeEnds = 0;
    auto pagedNow = [] {
        void* memory = AllocateSmall(16);
        const bool paged = IsPaged(memory);
        FreeSmall(memory, 16);
        return paged;
    };
    EXPECT_FALSE(pagedNow());
    {
        vel::CPageScope outer;
        {
            vel::CPageScope inner;
            EXPECT_TRUE(pagedNow());
        }
        EXPECT_TRUE(pagedNow());
        {
            vel::CHeapScope heap;
            EXPECT_FALSE(pagedNow());
            EXPECT_FALSE(vel::InPageScope());
        }
        EXPECT_TRUE(pagedNow());
        EXPECT_TRUE(vel::InPageScope());
        EXPECT_EQ(g_scopeEnds, 0);
    }
    EXPECT_FALSE(pagedNow());
    EXPECT_EQ(g_scopeEnds, 1);
    vel::SetPageScopeEndHook(previous);
}

// Once a parse's pages are freed, the heap hands their memory out again: blocks made there
// outside a scope must be taken for heap blocks, not for objects of the page that was there.
// Empty objects still get addresses of their own.
TEST(Pages, MemoryOfFreedPagesIsHeapAgain) {
    std::vector<void*> blocks;
    {
        vel::CPageScope pages;
        for (int i = 0; i < 10000; ++i)
            blocks.push_back(AllocateSmall(24));
        void* empty = AllocateSmall(0);
        void* next = AllocateSmall(0);
        EXPECT_NE(empty, next);
        FreeSmall(empty, 0);
        FreeSmall(next, 0);
    }
    for (void* block : blocks)
        FreeSmall(block, 24);
    blocks.clear();
    for (int i = 0; i < 10000; ++i) {
        blocks.push_back(AllocateSmall(24));
        ASSERT_FALSE(IsPaged(blocks.back())) << i;
    }
    for (void* block : blocks)
        FreeSmall(block, 24);
}

// A string made during a parse lives on a page; what a process-wide store keeps of it must
// not, or one kept string would hold a whole page for the life of the process.
TEST(Pages, OffPagesCopiesOnlyAPagedString) {
    const velstr::CVelStrW heapText(u"outside any parse");
    EXPECT_EQ(heapText.OffPages().c_str(), heapText.c_str());
    vel::CPageScope pages;
    const velstr::CVelStrW pagedText(u"made while parsing");
    const velstr::CVelStrW kept = pagedText.OffPages();
    EXPECT_NE(kept.c_str(), pagedText.c_str());
    EXPECT_EQ(kept, pagedText);
    EXPECT_EQ(kept.OffPages().c_str(), kept.c_str());
}

}  // namespace
