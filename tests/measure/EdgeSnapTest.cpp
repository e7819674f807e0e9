#include "SimStill.h"
#include "camera/sim/SimScene.h"
#include "measure/EdgeSnap.h"

#include <gtest/gtest.h>
#include <QImage>
#include <cmath>
#include <cstdio>

using namespace tavix;
using namespace tavix::test;

namespace {

double distance(PointD a, PointD b)
{
    return std::hypot(a.x - b.x, a.y - b.y);
}

// A length across a feature of the scene: its two ends on the feature's edges
// (micrometres), and the direction in which "outside" lies from the first end.
struct Span {
    const char* name;
    QPointF from, to;
    QPointF outward;  // unit direction away from the feature at `from`; `to` is opposite
    double truthUm;
};

const SimScene::Geometry& g = SimScene::geometry();

Span largeDisc()
{
    const QPointF c = g.largeCircle.centre;
    const double r = g.largeCircle.diameter / 2;
    return {"LargeDisc", c - QPointF(r, 0), c + QPointF(r, 0), {-1, 0}, g.largeCircle.diameter};
}

Span smallDisc()
{
    const QPointF c = g.smallCircle.centre;
    const double r = g.smallCircle.diameter / 2;
    return {"SmallDisc", c - QPointF(0, r), c + QPointF(0, r), {0, -1}, g.smallCircle.diameter};
}

Span rectangleWidth()
{
    const double y = (g.rectangle[0].y() + g.rectangle[3].y()) / 2;
    return {"RectangleWidth",
            {g.rectangle[0].x(), y},
            {g.rectangle[1].x(), y},
            {-1, 0},
            g.rectangle[1].x() - g.rectangle[0].x()};
}

Span rectangleHeight()
{
    const double x = (g.rectangle[0].x() + g.rectangle[1].x()) / 2;
    return {"RectangleHeight",
            {x, g.rectangle[0].y()},
            {x, g.rectangle[3].y()},
            {0, -1},
            g.rectangle[3].y() - g.rectangle[0].y()};
}

// The micrometer's 0 and 1000 ticks, clicked above the shorter ticks: both
// clicks on the same side of their tick, as a user aims at a line.
Span micrometer()
{
    const SimScene::Scale& s = g.horizontalScale;
    const double y = s.zero.y() - (s.mediumTick + s.longTick) / 2;
    return {"Micrometer", {s.zero.x(), y}, {s.zero.x() + s.length, y}, {-1, 0}, s.length};
}

struct SnapCase {
    int mode;
    Span (*span)();
};

class EdgeSnapOnSimStill : public ::testing::TestWithParam<SnapCase> {};

// Clicks 0 to 3 px off the edges: snapped, the length is the scene's within
// 0.05 px; unsnapped, it is off by the offsets.
TEST_P(EdgeSnapOnSimStill, SnappedLength_IsTheScenesWithinFiveHundredthsOfAPixel)
{
    const QImage still = simStill(GetParam().mode);
    const Span span = GetParam().span();
    const double umPerPixel = SimScene::micrometresPerPixel(still.size());
    const EdgeSnap snap(still);
    const PointD a = scenePixel(still, span.from);
    const PointD b = scenePixel(still, span.to);
    const bool line = std::string(span.name) == "Micrometer";
    double worstSnapped = 0, worstPlain = 0;
    for (double offset : {-3.0, -2.0, -1.5, -0.5, 0.0, 0.7, 1.0, 2.0, 3.0}) {
        // Out of the feature at both ends (or both to the left, on the micrometer's ticks).
        const PointD clickA{a.x + offset * span.outward.x(), a.y + offset * span.outward.y()};
        const PointD clickB{b.x - (line ? -1 : 1) * offset * span.outward.x(),
                            b.y - (line ? -1 : 1) * offset * span.outward.y()};
        const double truthPx = span.truthUm / umPerPixel;
        const double snapped = distance(snap.snap(clickA), snap.snap(clickB));
        const double plain = distance(clickA, clickB);
        EXPECT_NEAR(snapped, truthPx, 0.05)
            << span.name << " offset " << offset << " err " << snapped - truthPx;
        EXPECT_NEAR(plain - truthPx, line ? 0.0 : 2 * offset, 1e-9);
        worstSnapped = std::max(worstSnapped, std::abs(snapped - truthPx));
        worstPlain = std::max(worstPlain, std::abs(plain - truthPx) + (line ? 2 * std::abs(offset) : 0));
    }
    // One line of the error table: worst error of the offsets tried, px and um.
    std::printf("ERRORS %dx%d %-16s snapped %.4f px %.4f um | unsnapped %.2f px %.2f um\n", still.width(),
                still.height(), span.name, worstSnapped, worstSnapped * umPerPixel, worstPlain,
                worstPlain * umPerPixel);
}

std::vector<SnapCase> allCases()
{
    std::vector<SnapCase> cases;
    for (int mode : {kMode640, kMode1280, kMode2592})
        for (auto span : {largeDisc, smallDisc, rectangleWidth, rectangleHeight, micrometer})
            cases.push_back({mode, span});
    return cases;
}

INSTANTIATE_TEST_SUITE_P(Stills, EdgeSnapOnSimStill, ::testing::ValuesIn(allCases()), [](const auto& info) {
    return std::string(info.param.span().name) + "_" + std::to_string(info.param.mode);
});

class EdgeSnapNoEdge : public ::testing::TestWithParam<int> {};

// Sensor noise on the bare slide is no edge: the click stays where it was.
TEST_P(EdgeSnapNoEdge, NoiseAlone_LeavesTheClick)
{
    const QImage still = simStill(GetParam());
    const EdgeSnap snap(still);
    for (QPointF um : {QPointF(100, 250), QPointF(450, 250), QPointF(-150, 300), QPointF(0, -400)}) {
        const PointD click = scenePixel(still, um);
        EXPECT_FALSE(snap.find(click).has_value()) << um.x() << "," << um.y();
        EXPECT_EQ(snap.snap(click), click);
    }
}

INSTANTIATE_TEST_SUITE_P(Stills, EdgeSnapNoEdge, ::testing::Values(kMode640, kMode1280, kMode2592));

TEST(EdgeSnap, EdgeBeyondReach_LeavesTheClick)
{
    const QImage still = simStill(kMode2592);
    const Span span = largeDisc();
    const PointD edge = scenePixel(still, span.from);
    const PointD click{edge.x - EdgeSnap::kReach - 3, edge.y};
    EXPECT_FALSE(EdgeSnap(still).find(click).has_value());
}

TEST(EdgeSnap, FlatPicture_HasNoEdge)
{
    QImage flat(200, 100, QImage::Format_RGB32);
    flat.fill(QColor(120, 130, 140));
    EXPECT_FALSE(EdgeSnap(flat).find({100, 50}).has_value());
}

TEST(EdgeSnap, NullPicture_LeavesTheClick)
{
    EXPECT_EQ(EdgeSnap(QImage()).snap({3, 4}), (PointD{3, 4}));
}

// A sharp vertical step at x = 40.3, read in every picture format: the click
// moves across the edge only.
TEST(EdgeSnap, StepInAnyFormat_MovesTheClickAcrossTheEdgeOnly)
{
    QImage step(80, 60, QImage::Format_RGB32);
    for (int y = 0; y < step.height(); ++y)
        for (int x = 0; x < step.width(); ++x) {
            const double cover = std::clamp(x + 1 - 40.3, 0.0, 1.0);  // share of the pixel right of the edge
            const int v = static_cast<int>(std::lround(40 + 160 * cover));
            step.setPixel(x, y, qRgb(v, v, v));
        }
    for (QImage::Format f : {QImage::Format_RGB32, QImage::Format_RGB888, QImage::Format_Grayscale8,
                             QImage::Format_Indexed8, QImage::Format_RGB16}) {
        const auto p = EdgeSnap(step.convertToFormat(f)).find({37.5, 22.25});
        ASSERT_TRUE(p.has_value()) << f;
        EXPECT_NEAR(p->x, 40.3, 0.02) << f;
        EXPECT_NEAR(p->y, 22.25, 1e-6) << f;
    }
}

// Clicks at the picture's border read no pixels outside it.
TEST(EdgeSnap, ClickAtTheBorder_StaysInsideThePicture)
{
    QImage step(30, 30, QImage::Format_Grayscale8);
    step.fill(20);
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 3; ++x)
            step.setPixel(x, y, 220);
    const auto p = EdgeSnap(step).find({0.2, 0.2});
    ASSERT_TRUE(p.has_value());
    EXPECT_NEAR(p->x, 3.0, 0.05);
}

}  // namespace
