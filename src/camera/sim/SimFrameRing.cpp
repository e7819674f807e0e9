#include "camera/sim/SimFrameRing.h"

#include "camera/sim/SimScene.h"
#include "common/PictureMemory.h"

#include <cstring>

namespace tavix {

qsizetype SimFrameRing::stride(QSize size)
{
    return (static_cast<qsizetype>(size.width()) * 3 + 3) & ~qsizetype(3);
}

int SimFrameRing::freeSlot(int newest, int delivering)
{
    int slot = 0;
    while (slot == newest || slot == delivering)
        ++slot;
    return slot;
}

void SimFrameRing::render(int slot, int previous, QSize size, const SimLook& look, std::uint64_t sequence,
                          qint64 nowMs)
{
    const auto i = static_cast<size_t>(slot);
    auto& buffer = buffers_[i];
    const size_t bytes = static_cast<size_t>(stride(size) * size.height());
    if (buffer.size() != bytes)
        PictureMemory::assignUnwritten(buffer, bytes);
    if (sizes_[i] != size) {
        // Frames are written whole; only the bytes that pad rows to whole
        // words are never written, and they are zeroed once per size.
        const qsizetype rowBytes = qsizetype(size.width()) * 3;
        if (stride(size) > rowBytes)
            for (int y = 0; y < size.height(); ++y)
                std::memset(buffer.data() + y * stride(size) + rowBytes, 0,
                            static_cast<size_t>(stride(size) - rowBytes));
    }
    sizes_[i] = size;
    sequences_[i] = sequence;

    pipeline_.setSize(size);
    pipeline_.setLook(look);
    const bool blend = previous >= 0 && sizes_[static_cast<size_t>(previous)] == size;
    pipeline_.compose(buffer.data(), stride(size),
                      blend ? buffers_[static_cast<size_t>(previous)].data() : nullptr,
                      SimScene::particleCentre(nowMs), static_cast<std::uint32_t>(rng_()));
}

FrameView SimFrameRing::view(int slot) const
{
    const auto i = static_cast<size_t>(slot);
    FrameView view;
    view.bits = buffers_[i].data();
    view.width = sizes_[i].width();
    view.height = sizes_[i].height();
    view.bytesPerLine = stride(sizes_[i]);
    view.format = QImage::Format_RGB888;
    view.sequence = sequences_[i];
    return view;
}

QImage SimFrameRing::image(int slot) const
{
    const auto i = static_cast<size_t>(slot);
    const QSize size = sizes_[i];
    return QImage(buffers_[i].data(), size.width(), size.height(), stride(size), QImage::Format_RGB888);
}

void SimFrameRing::copyTo(int slot, QImage& frame) const
{
    const auto i = static_cast<size_t>(slot);
    const QSize size = sizes_[i];
    if (frame.size() != size || frame.format() != QImage::Format_RGB888)
        frame = QImage(size, QImage::Format_RGB888);
    const uchar* bits = buffers_[i].data();
    const qsizetype rowBytes = qsizetype(size.width()) * 3;
    for (int y = 0; y < size.height(); ++y)
        std::memcpy(frame.scanLine(y), bits + y * stride(size), static_cast<size_t>(rowBytes));
}

}  // namespace tavix
