#pragma once

#include "camera/sim/SimCamera.h"
#include "camera/sim/SimScene.h"
#include "measure/PointD.h"

#include <QImage>
#include <QPointF>

namespace tavix::test {

// The simulated camera's resolution indices the measuring is checked at.
constexpr int kMode640 = 1;
constexpr int kMode1280 = 5;
constexpr int kMode2592 = 8;

// One still from the simulated camera at a resolution, sensor noise included.
inline QImage simStill(int mode)
{
    SimCamera::Options o;
    o.defaultMode = mode;
    o.threaded = false;
    SimCamera camera(o);
    camera.Init();
    camera.Open(0);
    return camera.renderFrame();
}

// A point of the scene (micrometres from the field's centre) on a still.
inline PointD scenePixel(const QImage& still, QPointF micrometres)
{
    const QPointF p = SimScene::toPixel(still.size(), micrometres);
    return {p.x(), p.y()};
}

}  // namespace tavix::test
