#include "common/PictureMemory.h"

#include <cstdlib>  // defines __GLIBC__ on the GNU C library
#if defined(__GLIBC__)
#include <malloc.h>
#endif
#if defined(__linux__)
#include <sys/mman.h>
#endif
#include <cstdint>

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

void adviseLargePages(void* data, std::size_t bytes)
{
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    constexpr std::uintptr_t kLarge = std::uintptr_t(2) << 20;
    const auto begin = reinterpret_cast<std::uintptr_t>(data);
    const std::uintptr_t first = (begin + kLarge - 1) & ~(kLarge - 1);
    const std::uintptr_t end = (begin + bytes) & ~(kLarge - 1);
    if (data && end > first)
        ::madvise(reinterpret_cast<void*>(first), end - first, MADV_HUGEPAGE);
#else
    (void)data;
    (void)bytes;
#endif
}

}  // namespace tavix::PictureMemory
