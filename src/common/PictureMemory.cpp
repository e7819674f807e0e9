#include "common/PictureMemory.h"

#include <cstdlib>  // defines __GLIBC__ on the GNU C library
#if defined(__GLIBC__)
#include <malloc.h>
#endif
#if defined(__linux__)
#include <sys/mman.h>
#endif
#include <cstdint>
#include <new>

namespace tavix::PictureMemory {

bool keepLargeBlocksSeparate()
{
#if defined(__GLIBC__)
    // A fixed threshold also stops the C library from moving it.
    return mallopt(M_MMAP_THRESHOLD, kSeparateFromBytes) == 1;
#else
    return false;
#endif
}

namespace {

#if defined(__SANITIZE_ADDRESS__)
#define TAVIX_PICTURES_FROM_NEW 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TAVIX_PICTURES_FROM_NEW 1
#endif
#endif
#if !defined(__linux__) || !defined(MADV_HUGEPAGE)
#define TAVIX_PICTURES_FROM_NEW 1
#endif

#ifndef TAVIX_PICTURES_FROM_NEW
constexpr std::size_t kLargePage = std::size_t(2) << 20;

std::size_t mappedBytes(std::size_t bytes)
{
    return (bytes + kLargePage - 1) & ~(kLargePage - 1);
}
#endif

struct ImageBlock {
    void* data;
    std::size_t bytes;
};

void releaseImage(void* info)
{
    auto* block = static_cast<ImageBlock*>(info);
    release(block->data, block->bytes);
    delete block;
}

}  // namespace

void* allocate(std::size_t bytes)
{
#ifndef TAVIX_PICTURES_FROM_NEW
    if (bytes >= static_cast<std::size_t>(kSeparateFromBytes)) {
        // Mapped one large page longer, so that an aligned start can be cut out.
        const std::size_t length = mappedBytes(bytes);
        void* mapped =
            ::mmap(nullptr, length + kLargePage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (mapped == MAP_FAILED)
            throw std::bad_alloc();
        const auto begin = reinterpret_cast<std::uintptr_t>(mapped);
        const std::uintptr_t aligned = (begin + kLargePage - 1) & ~std::uintptr_t(kLargePage - 1);
        if (aligned > begin)
            ::munmap(mapped, aligned - begin);
        if (const std::size_t tail = begin + kLargePage - aligned)
            ::munmap(reinterpret_cast<void*>(aligned + length), tail);
        ::madvise(reinterpret_cast<void*>(aligned), length, MADV_HUGEPAGE);
        return reinterpret_cast<void*>(aligned);
    }
#endif
    return ::operator new(bytes);
}

void release(void* block, std::size_t bytes)
{
    if (!block)
        return;
#ifndef TAVIX_PICTURES_FROM_NEW
    if (bytes >= static_cast<std::size_t>(kSeparateFromBytes)) {
        ::munmap(block, mappedBytes(bytes));
        return;
    }
#else
    (void)bytes;
#endif
    ::operator delete(block);
}

QImage image(QSize size, QImage::Format format)
{
    const int depth = QImage::toPixelFormat(format).bitsPerPixel();
    if (size.isEmpty() || depth == 0)
        return {};
    const qsizetype bytesPerLine = (static_cast<qsizetype>(size.width()) * depth + 31) / 32 * 4;
    const auto bytes = static_cast<std::size_t>(bytesPerLine * size.height());
    ImageBlock* block = nullptr;
    try {
        block = new ImageBlock{allocate(bytes), bytes};
    } catch (const std::bad_alloc&) {
        return {};  // as QImage itself answers when there is no memory
    }
    return QImage(static_cast<uchar*>(block->data), size.width(), size.height(), bytesPerLine, format,
                  releaseImage, block);
}

}  // namespace tavix::PictureMemory
