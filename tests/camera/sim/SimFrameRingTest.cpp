#include "camera/sim/SimFrameRing.h"

#include <gtest/gtest.h>

using namespace tavix;

namespace {

// The bytes after each row's pixels, up to the next row.
int nonZeroPadding(const FrameView& v)
{
    int found = 0;
    for (int y = 0; y < v.height; ++y)
        for (qsizetype i = qsizetype(v.width) * 3; i < v.bytesPerLine; ++i)
            found += v.bits[y * v.bytesPerLine + i] != 0;
    return found;
}

}  // namespace

// 644 pixels fill their rows of 1932 bytes; 643 leave three bytes of padding
// in rows of the same length, where the bigger frame's pixels were.
TEST(SimFrameRing, RowPadding_IsZero_AfterASizeWithTheSameBytesButNone)
{
    SimFrameRing ring;
    const SimLook look;
    ring.render(0, -1, QSize(644, 100), look, 1, 0);
    const FrameView full = ring.view(0);
    ASSERT_EQ(full.bytesPerLine, 644 * 3);
    ring.render(0, -1, QSize(643, 100), look, 2, 0);
    const FrameView padded = ring.view(0);
    ASSERT_EQ(padded.bytesPerLine, 644 * 3);
    EXPECT_EQ(nonZeroPadding(padded), 0);
}

TEST(SimFrameRing, RowPadding_IsZero_OnAFirstFrame)
{
    SimFrameRing ring;
    ring.render(1, -1, QSize(641, 481), SimLook(), 1, 0);
    const FrameView v = ring.view(1);
    ASSERT_GT(v.bytesPerLine, qsizetype(641) * 3);
    EXPECT_EQ(nonZeroPadding(v), 0);
}
