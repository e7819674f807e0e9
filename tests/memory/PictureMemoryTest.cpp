// Built without the address sanitizer, whose allocator ignores the C library's settings.
#include "common/PictureMemory.h"

#include <gtest/gtest.h>
#include <malloc.h>
#include <cstdlib>
#include <cstring>

namespace {

// Keeps the compiler from dropping an allocation that is never read.
void* touched(std::size_t bytes)
{
    void* block = std::malloc(bytes);
    std::memset(block, 1, bytes);
    asm volatile("" : : "r"(block) : "memory");
    return block;
}

}  // namespace

TEST(PictureMemory, APictureAfterALargerOne_GetsItsOwnMemory_AndGivesItBack)
{
    ASSERT_TRUE(tavix::PictureMemory::keepLargeBlocksSeparate());
    // Left alone, the C library would take this size as its new threshold.
    std::free(touched(16 << 20));
    const std::size_t mappedBefore = mallinfo2().hblkhd;
    void* picture = touched(4 << 20);
    EXPECT_GE(mallinfo2().hblkhd, mappedBefore + (4 << 20)) << "the picture came from the heap";
    std::free(picture);
    EXPECT_EQ(mallinfo2().hblkhd, mappedBefore) << "the picture's memory stayed with the process";
}

TEST(PictureMemory, SmallBlocks_StayInTheHeap)
{
    ASSERT_TRUE(tavix::PictureMemory::keepLargeBlocksSeparate());
    const std::size_t mappedBefore = mallinfo2().hblkhd;
    void* row = touched(tavix::PictureMemory::kSeparateFromBytes / 2);
    EXPECT_EQ(mallinfo2().hblkhd, mappedBefore);
    std::free(row);
}
