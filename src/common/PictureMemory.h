#pragma once

#include <QImage>
#include <QSize>
#include <cstddef>
#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace tavix::PictureMemory {

// The size from which a block is given memory of its own.
constexpr int kSeparateFromBytes = 1 << 20;

// Pictures of several megabytes (stills, pictures being saved, loaded files)
// get memory of their own from the system and give it back when freed. The C
// library would otherwise raise its threshold after the first such picture and
// take the next ones from its heap, where the holes they leave stay with the
// process: about 30 MB more resident memory at 2592x1944. Called once, first
// thing in main(). Returns false where the C library does not take the setting
// (it is then left as it was).
bool keepLargeBlocksSeparate();

// Memory for a picture: from `kSeparateFromBytes` on, whole large pages
// (2 MB) of its own, advised to be backed by them. A page fault costs far more
// than filling the page on some virtual machines; a 5-megapixel picture in
// 4 KB pages takes thousands of them, in large pages eight. Smaller blocks,
// and every block under the address sanitizer, come from operator new.
void* allocate(std::size_t bytes);
void release(void* block, std::size_t bytes);

// A picture over such memory, given back when its last copy goes. The
// pixels are not written. A null picture when there is no memory.
QImage image(QSize size, QImage::Format format);

// An allocator that leaves new elements of a resize unwritten, for buffers
// that are filled whole right after: zeros would cost a pass over memory the
// system has just zeroed or that is overwritten anyway. Its blocks come from
// allocate().
template <class T>
struct UnwrittenAllocator : std::allocator<T> {
    using value_type = T;
    template <class U>
    struct rebind {
        using other = UnwrittenAllocator<U>;
    };
    UnwrittenAllocator() = default;
    template <class U>
    UnwrittenAllocator(const UnwrittenAllocator<U>&) noexcept
    {
    }
    T* allocate(std::size_t n) { return static_cast<T*>(PictureMemory::allocate(n * sizeof(T))); }
    void deallocate(T* p, std::size_t n) noexcept { release(p, n * sizeof(T)); }
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

// Sets a buffer to `count` elements that the caller writes before reading.
template <class T>
void assignUnwritten(Buffer<T>& v, std::size_t count)
{
    if (v.capacity() < count) {
        Buffer<T>().swap(v);
        v.reserve(count);
    }
    v.resize(count);
}

}  // namespace tavix::PictureMemory
