#include "camera/sim/SimImagePipeline.h"
#include "camera/sim/SimScene.h"

#include <gtest/gtest.h>
#include <QImage>
#include <cstring>
#include <vector>

using namespace tavix;

namespace {

const QSize kSize(643, 481);  // rows of 1929 bytes, padded to 1932
constexpr qsizetype kStride = 1932;
constexpr std::uint32_t kSeed = 77;
const QPointF kParticle(120, -40);  // micrometres: inside the field

std::vector<uchar> frame(SimImagePipeline& pipeline, const uchar* previous = nullptr)
{
    std::vector<uchar> bytes(static_cast<size_t>(kStride) * kSize.height(), 0);
    pipeline.compose(bytes.data(), kStride, previous, kParticle, kSeed);
    return bytes;
}

// The first frame of a size is drawn straight from the scene; the next one
// comes from the finished picture. With the same noise and particle they
// must be the same picture, for every look that takes that way.
void expectFirstFrameAsTheFinishedOne(const SimLook& look)
{
    SimImagePipeline pipeline;
    pipeline.setSize(kSize);
    pipeline.setLook(look);
    const std::vector<uchar> first = frame(pipeline);
    const std::vector<uchar> second = frame(pipeline);
    ASSERT_EQ(first.size(), second.size());
    size_t differing = 0;
    for (size_t i = 0; i < first.size(); ++i)
        differing += first[i] != second[i];
    EXPECT_EQ(differing, 0u);
}

}  // namespace

TEST(SimImagePipeline, FirstFrame_DrawnFromTheScene_IsTheFrameOfTheFinishedPicture)
{
    expectFirstFrameAsTheFinishedOne(SimLook());
}

TEST(SimImagePipeline, FirstFrame_WithGainsAndTables_IsTheFrameOfTheFinishedPicture)
{
    SimLook look;
    look.exposureMs = 31;
    look.gain = 45;
    look.blackLevel = 9;
    look.brightness = -6;
    look.contrast = 40;
    look.gamma = 50;
    look.rgbGain = {80, 64, 51};
    look.rgbOffset = {3, 0, -4};
    expectFirstFrameAsTheFinishedOne(look);
}

TEST(SimImagePipeline, FirstFrame_WithoutNoise_IsTheFrameOfTheFinishedPicture)
{
    SimLook look;
    look.noise = false;
    expectFirstFrameAsTheFinishedOne(look);
}

// Looks that the finished picture is needed for (colour mixing, flips) take it from the first frame on.
TEST(SimImagePipeline, FirstFrame_WithMixingOrFlips_IsTheFrameOfTheFinishedPicture)
{
    SimLook mixed;
    mixed.saturation = 90;
    expectFirstFrameAsTheFinishedOne(mixed);
    SimLook flipped;
    flipped.flipH = true;
    flipped.flipV = true;
    expectFirstFrameAsTheFinishedOne(flipped);
}

// A new size starts over: its first frame is again the one its finished picture gives.
TEST(SimImagePipeline, FirstFrameAfterASizeChange_IsTheFrameOfTheFinishedPicture)
{
    SimImagePipeline pipeline;
    pipeline.setSize(QSize(320, 240));
    std::vector<uchar> small(320 * 3 * 240);
    pipeline.compose(small.data(), 320 * 3, nullptr, kParticle, kSeed);
    pipeline.setSize(kSize);
    const std::vector<uchar> first = frame(pipeline);
    EXPECT_EQ(first, frame(pipeline));
}

// The mean level the automatic exposure steers by is that of the finished picture, first frame or not.
TEST(SimImagePipeline, MeanLevel_AfterAFirstFrame_IsTheFinishedPicturesMean)
{
    SimImagePipeline drawn;
    drawn.setSize(kSize);
    frame(drawn);
    SimImagePipeline finished;
    finished.setSize(kSize);
    EXPECT_DOUBLE_EQ(drawn.meanLevel(), finished.meanLevel());
    EXPECT_GT(drawn.meanLevel(), 100);
}

// The empty slide is lit by the lamp, less towards the corners: each pixel
// as the lighting's own arithmetic gives it, whatever instructions the
// machine runs it with.
TEST(SimScene, EmptySlide_IsTheLampTimesTheLightAtEachPixel)
{
    const QImage lit = SimScene::render(kSize);
    ASSERT_EQ(lit.format(), QImage::Format_RGB888);
    const float cx = kSize.width() / 2.0f;
    const float cy = kSize.height() / 2.0f;
    const float fall = static_cast<float>(SimScene::kVignetting) / (cx * cx + cy * cy);
    const QColor lamp = SimScene::lampColour();
    const float l[3] = {lamp.red() / 255.0f, lamp.green() / 255.0f, lamp.blue() / 255.0f};
    // Twenty pixels in a row (AVX2 steps of eight and the rest) on three rows of empty slide.
    const QPointF at = SimScene::toPixel(kSize, QPointF(450, 60));
    int checked = 0;
    for (int y = int(at.y()) - 1; y <= int(at.y()) + 1; ++y) {
        const uchar* row = lit.constScanLine(y);
        for (int x = int(at.x()) - 10; x < int(at.x()) + 10; ++x) {
            const float dx = x + 0.5f - cx;
            const float dy = y + 0.5f - cy;
            const float light = 1.0f - fall * (dx * dx + dy * dy);
            for (int c = 0; c < 3; ++c) {
                const int expected = static_cast<int>(255.0f * l[c] * light + 0.5f);
                EXPECT_EQ(row[3 * x + c], expected) << "pixel " << x << "," << y << " channel " << c;
                ++checked;
            }
        }
    }
    EXPECT_EQ(checked, 180);
}

// Into rows the caller owns, the same picture.
TEST(SimScene, RenderIntoRows_IsThePictureRenderGives)
{
    const QImage lit = SimScene::render(kSize);
    std::vector<uchar> rows(static_cast<size_t>(kStride) * kSize.height());
    SimScene::render(kSize, rows.data(), kStride);
    for (int y = 0; y < kSize.height(); ++y)
        ASSERT_EQ(0, std::memcmp(rows.data() + y * kStride, lit.constScanLine(y), size_t(kSize.width()) * 3))
            << "row " << y;
}
