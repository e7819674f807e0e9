// A calibration made at 1280x1024 on the simulated camera measures the large
// disc at the other resolutions once rescaled, on stills with sensor noise.
#include "SimStill.h"
#include "calib/ProofRescale.h"
#include "calib/ScalePeriod.h"
#include "camera/sim/SimModes.h"
#include "camera/sim/SimScene.h"
#include "measure/EdgeSnap.h"

#include <gtest/gtest.h>
#include <cmath>
#include <cstdio>

using namespace tavix;
using namespace tavix::test;

namespace {

const SimScene::Geometry& g = SimScene::geometry();

// Snapped ends of a span between two scene points, clicked 2 px outside along x.
double snappedWidth(const QImage& still, QPointF leftUm, QPointF rightUm)
{
    const EdgeSnap snap(still);
    const PointD a = scenePixel(still, leftUm);
    const PointD b = scenePixel(still, rightUm);
    const PointD sa = snap.snap({a.x - 2, a.y});
    const PointD sb = snap.snap({b.x + 2, b.y});
    return std::hypot(sb.x - sa.x, sb.y - sa.y);
}

double largeDiscPixels(const QImage& still)
{
    const QPointF c = g.largeCircle.centre;
    const double r = g.largeCircle.diameter / 2;
    return snappedWidth(still, c - QPointF(r, 0), c + QPointF(r, 0));
}

// The calibration as "From scale" makes it: the micrometer's divisions along x.
double factorFromScale(const QImage& still)
{
    const SimScene::Scale& s = g.horizontalScale;
    const double y = s.zero.y() - s.shortTick / 2;
    const auto found = ScalePeriod::measure(still, scenePixel(still, {s.zero.x() - 5, y}),
                                            scenePixel(still, {s.zero.x() + s.length + 5, y}));
    return found ? s.division / found->periodPixels : 0.0;
}

// The calibration as a typed length makes it: the rectangle's known width, snapped.
double factorFromRectangle(const QImage& still)
{
    const double y = (g.rectangle[0].y() + g.rectangle[3].y()) / 2;
    const double width = g.rectangle[1].x() - g.rectangle[0].x();
    return width / snappedWidth(still, {g.rectangle[0].x(), y}, {g.rectangle[1].x(), y});
}

struct Case {
    const char* how;
    double (*calibrate)(const QImage&);
    int mode;
};

class RescaleOnSimStill : public ::testing::TestWithParam<Case> {};

TEST_P(RescaleOnSimStill, LargeDisc_IsMeasuredWithinHalfAPercent)
{
    const QImage made = simStill(kMode1280);
    const double factor = GetParam().calibrate(made);
    ASSERT_GT(factor, 0.0);
    const ProofEntry stored{QStringLiteral("x10"), factor, factor, QStringLiteral("MIC"), 0, 0, 0};

    const QImage still = simStill(GetParam().mode);
    // The simulated camera tells its modes' geometry: the same field at every mode.
    const QString camera = QStringLiteral("sim/SimCam 1296");
    const PictureGeometry madeAt{made.size(), SimModes::geometry(kMode1280), camera};
    const PictureGeometry measuredAt{still.size(), SimModes::geometry(GetParam().mode), camera};
    ASSERT_TRUE(ProofRescale::rescale(madeAt, measuredAt).trusted());
    const ProofEntry used = ProofRescale::toPicture(stored, madeAt, measuredAt);
    // The same numbers as the widths' ratio.
    EXPECT_NEAR(used.XFactor, ProofRescale::toPicture(stored, made.size(), still.size()).XFactor, 1e-15);
    const double measured = largeDiscPixels(still) * used.XFactor;
    const double truth = g.largeCircle.diameter;
    EXPECT_NEAR(measured / truth - 1, 0.0, 0.005) << measured;
    // Without the rescale the same measurement is off by the widths' ratio.
    const double stale = largeDiscPixels(still) * stored.XFactor;
    if (still.width() != made.width()) {
        EXPECT_GT(std::abs(stale / truth - 1), 0.4);
    }
    std::printf("RESCALE %-9s 1280x1024 -> %dx%d: %.3f um (truth %.1f, error %+.3f %%), unrescaled %.1f um\n",
                GetParam().how, still.width(), still.height(), measured, truth, 100 * (measured / truth - 1),
                stale);
}

INSTANTIATE_TEST_SUITE_P(Stills, RescaleOnSimStill,
                         ::testing::Values(Case{"FromScale", factorFromScale, kMode2592},
                                           Case{"FromScale", factorFromScale, kMode640},
                                           Case{"FromScale", factorFromScale, kMode1280},
                                           Case{"Rectangle", factorFromRectangle, kMode2592},
                                           Case{"Rectangle", factorFromRectangle, kMode640}),
                         [](const auto& info) {
                             return std::string(info.param.how) + "_" + std::to_string(info.param.mode);
                         });

}  // namespace
