#pragma once

#include <cstddef>

namespace tavix::PictureMemory {

// Pictures of several megabytes (stills, pictures being saved, loaded files)
// get memory of their own from the system and give it back when freed. The C
// library would otherwise raise its threshold after the first such picture and
// take the next ones from its heap, where the holes they leave stay with the
// process: about 30 MB more resident memory at 2592x1944. Called once, first
// thing in main(). Returns false where the C library does not take the setting
// (it is then left as it was).
bool keepLargeBlocksSeparate();

// Asks the system to back a block that was allocated but not yet written
// with large pages: a few faults instead of one per 4 KB page when it is
// first filled, which costs more than rendering a frame on some virtual
// machines. Only whole large pages inside the block are affected; a no-op
// where the system has no such advice.
void adviseLargePages(void* data, std::size_t bytes);

// Sets a vector to `count` zeros; new storage is advised large pages before
// it is written.
template <class Vector>
void assignZeros(Vector& v, std::size_t count)
{
    if (v.capacity() < count) {
        Vector().swap(v);
        v.reserve(count);
        adviseLargePages(v.data(), count * sizeof(v[0]));
    }
    v.assign(count, 0);
}

// The size from which a block is given memory of its own.
constexpr int kSeparateFromBytes = 1 << 20;

}  // namespace tavix::PictureMemory
