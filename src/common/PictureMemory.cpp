#include "common/PictureMemory.h"

#include <cstdlib>  // defines __GLIBC__ on the GNU C library
#if defined(__GLIBC__)
#include <malloc.h>
#endif

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

}  // namespace tavix::PictureMemory
