#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <utility>
#include <vector>

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

// An allocator that leaves new elements of a resize unwritten, for buffers
// that are filled whole right after: zeros would cost a pass over memory the
// system has just zeroed or that is overwritten anyway.
template <class T>
struct UnwrittenAllocator : std::allocator<T> {
    template <class U>
    struct rebind {
        using other = UnwrittenAllocator<U>;
    };
    UnwrittenAllocator() = default;
    template <class U>
    UnwrittenAllocator(const UnwrittenAllocator<U>&) noexcept
    {
    }
    template <class U>
    void construct(U* p) noexcept
    {
        ::new (static_cast<void*>(p)) U;
    }
    template <class U, class... Args>
    void construct(U* p, Args&&... args)
    {
        ::new (static_cast<void*>(p)) U(std::forward<Args>(args)...);
    }
};

template <class T>
using Buffer = std::vector<T, UnwrittenAllocator<T>>;

// Sets a buffer to `count` elements that the caller writes before reading;
// new storage is advised large pages first.
template <class T>
void assignUnwritten(Buffer<T>& v, std::size_t count)
{
    if (v.capacity() < count) {
        Buffer<T>().swap(v);
        v.reserve(count);
        adviseLargePages(v.data(), count * sizeof(T));
    }
    v.resize(count);
}

// The size from which a block is given memory of its own.
constexpr int kSeparateFromBytes = 1 << 20;

}  // namespace tavix::PictureMemory
