// Built without the address sanitizer, whose allocator ignores the C library's settings.
#include "common/PictureMemory.h"

#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/mman.h>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

namespace {

// Keeps the compiler from dropping an allocation that is never read.
void* touched(std::size_t bytes)
{
    void* block = std::malloc(bytes);
    std::memset(block, 1, bytes);
    asm volatile("" : : "r"(block) : "memory");
    return block;
}

constexpr std::uintptr_t kLargePage = std::uintptr_t(2) << 20;

bool mapped(const void* at)
{
    unsigned char resident = 0;
    const auto page = reinterpret_cast<std::uintptr_t>(at) & ~std::uintptr_t(4095);
    return ::mincore(reinterpret_cast<void*>(page), 4096, &resident) == 0;
}

// The flags the kernel keeps for the mapping that holds `at` ("hg": large pages advised).
std::string mappingFlags(const void* at)
{
    const auto address = reinterpret_cast<std::uintptr_t>(at);
    std::ifstream smaps("/proc/self/smaps");
    std::string line;
    bool inside = false;
    while (std::getline(smaps, line)) {
        std::uintptr_t from = 0, to = 0;
        char dash = 0;
        std::istringstream head(line);
        if (head >> std::hex >> from >> dash >> to && dash == '-' && line.find(':') > line.find(' ')) {
            inside = address >= from && address < to;
            continue;
        }
        if (inside && line.rfind("VmFlags:", 0) == 0)
            return line;
    }
    return {};
}

}  // namespace

TEST(PictureMemory, ALargeBlock_StartsOnALargePage_IsAdvisedLargePages_AndIsGivenBack)
{
    const std::size_t bytes = 15 << 20;
    void* block = tavix::PictureMemory::allocate(bytes);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % kLargePage, 0u);
    std::memset(block, 7, bytes);
    EXPECT_NE(mappingFlags(block).find(" hg"), std::string::npos) << mappingFlags(block);
    auto* last = static_cast<unsigned char*>(block) + bytes - 1;
    EXPECT_EQ(*last, 7);
    tavix::PictureMemory::release(block, bytes);
    EXPECT_FALSE(mapped(block));
    EXPECT_FALSE(mapped(last));
}

TEST(PictureMemory, ASmallBlock_ComesFromTheHeap)
{
    ASSERT_TRUE(tavix::PictureMemory::keepLargeBlocksSeparate());
    const std::size_t inUse = mallinfo2().uordblks;
    void* row = tavix::PictureMemory::allocate(4000);
    EXPECT_GE(mallinfo2().uordblks, inUse + 4000);
    tavix::PictureMemory::release(row, 4000);
    EXPECT_EQ(mallinfo2().uordblks, inUse);
}

TEST(PictureMemory, AnImage_HasRowsOfWholeWords_OnItsOwnPages_GivenBackWithItsLastCopy)
{
    QImage picture = tavix::PictureMemory::image(QSize(2591, 1944), QImage::Format_RGB888);
    ASSERT_FALSE(picture.isNull());
    EXPECT_EQ(picture.bytesPerLine(), 7776);  // 2591 * 3 = 7773, padded to words
    EXPECT_EQ(picture.format(), QImage::Format_RGB888);
    const uchar* bits = picture.constBits();
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(bits) % kLargePage, 0u);
    picture.fill(Qt::red);
    EXPECT_EQ(picture.pixelColor(2590, 1943), QColor(Qt::red));
    {
        const QImage copy = picture;  // shared, not copied
        picture = QImage();
        EXPECT_TRUE(mapped(bits));
        EXPECT_EQ(copy.constBits(), bits);
        EXPECT_EQ(copy.pixelColor(0, 0), QColor(Qt::red));
    }
    EXPECT_FALSE(mapped(bits));
}

TEST(PictureMemory, AnUnwrittenBuffer_OfAPicturesSize_IsOnItsOwnPages)
{
    tavix::PictureMemory::Buffer<unsigned char> buffer;
    tavix::PictureMemory::assignUnwritten(buffer, std::size_t(3) << 20);
    EXPECT_EQ(buffer.size(), std::size_t(3) << 20);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(buffer.data()) % kLargePage, 0u);
    buffer.back() = 9;
    tavix::PictureMemory::assignUnwritten(buffer, std::size_t(5) << 20);
    EXPECT_EQ(buffer.size(), std::size_t(5) << 20);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(buffer.data()) % kLargePage, 0u);
    buffer.back() = 9;
    const void* last = &buffer.back();
    tavix::PictureMemory::Buffer<unsigned char>().swap(buffer);
    EXPECT_FALSE(mapped(last));
}

TEST(PictureMemory, AnEmptyImage_IsNull)
{
    EXPECT_TRUE(tavix::PictureMemory::image(QSize(0, 10), QImage::Format_RGB32).isNull());
    EXPECT_TRUE(tavix::PictureMemory::image(QSize(10, 10), QImage::Format_Invalid).isNull());
}

TEST(PictureMemory, AnImageTheSystemHasNoMemoryFor_IsNull)
{
    // Four terabytes: more than this machine has, so the system refuses it,
    // unless it is set to grant every request.
    std::ifstream mode("/proc/sys/vm/overcommit_memory");
    int overcommit = 0;
    if (mode >> overcommit && overcommit == 1)
        GTEST_SKIP() << "the system grants any amount of memory";
    EXPECT_TRUE(tavix::PictureMemory::image(QSize(1 << 20, 1 << 20), QImage::Format_RGB32).isNull());
}

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
