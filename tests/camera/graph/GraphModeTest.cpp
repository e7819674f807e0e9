#include "camera/Resolution.h"
#include "camera/graph/GraphMode.h"

#include <gtest/gtest.h>

#undef signals
#include <gst/gst.h>

using namespace tavix;
using Kind = GraphMode::Kind;

namespace {

std::vector<GraphMode> offered(const char* caps)
{
    gst_init(nullptr, nullptr);
    GstCaps* c = gst_caps_from_string(caps);
    std::vector<GraphMode> modes = GraphMode::offered(c);
    gst_caps_unref(c);
    return modes;
}

}  // namespace

TEST(GraphMode, EachSizeOnce_InItsFastestFormat_SmallestFirst)
{
    const auto modes = offered(
        "video/x-raw,format=YUY2,width=1920,height=1080,framerate=5/1; "
        "image/jpeg,width=1920,height=1080,framerate={15/1,30/1}; "
        "video/x-raw,format=YUY2,width=640,height=480,framerate=30/1; "
        "image/jpeg,width=640,height=480,framerate=30/1");
    ASSERT_EQ(modes.size(), 2u);
    EXPECT_EQ(modes[0].size, QSize(640, 480));
    EXPECT_EQ(modes[0].index, 1);
    EXPECT_EQ(modes[0].kind, Kind::Raw);  // as fast as JPEG, and needs no decoding
    EXPECT_EQ(modes[0].format, QByteArray("YUY2"));
    EXPECT_EQ(modes[1].size, QSize(1920, 1080));
    EXPECT_EQ(modes[1].index, Resolution::indexOf(QSize(1920, 1080)));
    EXPECT_EQ(modes[1].kind, Kind::Jpeg);
    EXPECT_EQ(modes[1].fpsN, 30);
}

TEST(GraphMode, ARateRange_CountsAtItsTop)
{
    const auto modes = offered(
        "video/x-raw,format=NV12,width=1280,height=720,framerate=[1/1,60/1]; "
        "image/jpeg,width=1280,height=720,framerate=30/1");
    ASSERT_EQ(modes.size(), 1u);
    EXPECT_EQ(modes[0].kind, Kind::Raw);
    EXPECT_EQ(modes[0].fpsN, 60);
}

TEST(GraphMode, Rates_EveryRateOfTheChosenFormat_SlowestFirst)
{
    const auto modes = offered(
        "video/x-raw,format=YUY2,width=1920,height=1080,framerate=5/1; "
        "image/jpeg,width=1920,height=1080,framerate={30/1,15/1,30000/1001}");
    ASSERT_EQ(modes.size(), 1u);
    EXPECT_EQ(modes[0].rates, (std::vector<std::pair<int, int>>{{15, 1}, {30000, 1001}, {30, 1}}));
    EXPECT_FALSE(modes[0].anyRateBetween);
}

TEST(GraphMode, AtRate_TheFastestNotAbove_ElseTheSlowest)
{
    const GraphMode mode = offered("image/jpeg,width=1280,height=720,framerate={30/1,15/1,5/1}").front();
    EXPECT_EQ(mode.atRate(20).fpsN, 15);
    EXPECT_EQ(mode.atRate(30).fpsN, 30);
    EXPECT_EQ(mode.atRate(2).fpsN, 5);
    EXPECT_EQ(mode.atRate(0).fpsN, 30);  // not chosen: the fastest
    GstCaps* caps = mode.atRate(15).caps();
    gint n = 0, d = 0;
    ASSERT_TRUE(gst_structure_get_fraction(gst_caps_get_structure(caps, 0), "framerate", &n, &d));
    EXPECT_EQ(n, 15);
    EXPECT_EQ(d, 1);
    gst_caps_unref(caps);
}

TEST(GraphMode, AtRate_ARangeTakesAnyWholeRateWithin)
{
    const GraphMode mode =
        offered("video/x-raw,format=NV12,width=1280,height=720,framerate=[2/1,60/1]").front();
    EXPECT_TRUE(mode.anyRateBetween);
    EXPECT_EQ(mode.atRate(24).fpsN, 24);
    EXPECT_EQ(mode.atRate(99).fpsN, 60);
    EXPECT_EQ(mode.atRate(1).fpsN, 2);
}

TEST(GraphMode, BayerAndGrey_AreKept_OtherFormatsSkipped)
{
    const auto modes = offered(
        "video/x-bayer,format=gbrg,width=2592,height=1944,framerate=15/1; "
        "video/x-bayer,format=rggb16le,width=1280,height=720,framerate=15/1; "
        "video/x-raw,format=GRAY8,width=800,height=600,framerate=15/1; "
        "image/png,width=1024,height=768");
    ASSERT_EQ(modes.size(), 2u);
    EXPECT_EQ(modes[0].format, QByteArray("GRAY8"));
    EXPECT_EQ(modes[1].kind, Kind::Bayer);
    EXPECT_EQ(modes[1].format, QByteArray("gbrg"));
}

TEST(GraphMode, ASizeRange_StandsForTheClassicSizesInIt_AndAFormatListPrefersRgb)
{
    const auto modes =
        offered("video/x-raw,format={YUY2,RGB},width=[320,1024],height=[240,768],framerate=30/1");
    std::vector<std::int32_t> indices;
    for (const GraphMode& m : modes) {
        indices.push_back(m.index);
        EXPECT_EQ(m.format, QByteArray("RGB"));
    }
    EXPECT_EQ(indices, (std::vector<std::int32_t>{0, 1, 2, 3, 4}));
}

TEST(GraphMode, Caps_AskForTheFormatSizeAndRate)
{
    gst_init(nullptr, nullptr);  // the fraction type is GStreamer's: this test may run alone
    GraphMode m;
    m.size = QSize(1280, 720);
    m.kind = Kind::Jpeg;
    m.fpsN = 30;
    GstCaps* caps = m.caps();
    gchar* text = gst_caps_to_string(caps);
    EXPECT_STREQ(text, "image/jpeg, width=(int)1280, height=(int)720, framerate=(fraction)30/1");
    g_free(text);
    gst_caps_unref(caps);
}

TEST(GraphMode, OwnSize_IsTheFirstOffered)
{
    gst_init(nullptr, nullptr);
    GstCaps* c = gst_caps_from_string("image/jpeg,width=1920,height=1080; video/x-raw,width=640,height=480");
    EXPECT_EQ(GraphMode::ownSize(c), QSize(1920, 1080));
    gst_caps_unref(c);
}
