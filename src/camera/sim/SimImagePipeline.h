#pragma once

#include "common/PictureMemory.h"

#include <QImage>
#include <QPointF>
#include <QSize>
#include <array>
#include <cstdint>
#include <vector>

namespace tavix {

// The camera settings that change the simulated picture, in the camera's
// own units.
struct SimLook {
    double exposureMs = 20.0;  // 20 ms at gain 1 is the lamp's nominal level
    int gain = 32;             // 32 = x1
    int blackLevel = 4;        // added output levels
    int brightness = 0;        // added output levels
    int contrast = 32;         // 32 = x1, around mid-grey
    int gamma = 64;            // out = in ^ (gamma / 64), while gammaOn
    bool gammaOn = true;
    std::array<int, 3> rgbGain{64, 64, 64};  // 64 = x1
    std::array<int, 3> rgbOffset{0, 0, 0};   // added output levels
    bool flipH = false;
    bool flipV = false;
    bool colour = true;   // false: grey, R = G = B
    int saturation = 64;  // 64 = x1
    int hue = 0;          // degrees around the grey axis; +120 turns red into green
    bool colourCorrection = false;
    bool colourProcessing = true;  // false: no colour matrix (saturation, hue, correction)
    bool tnr = false;              // temporal noise reduction: blend with the previous frame
    bool noise = true;

    bool operator==(const SimLook&) const = default;
};

// Turns the scene into frames. The still scene is processed once per change
// of settings into a finished picture; a frame is then that picture plus
// sensor noise, the moving particle and, with TNR, the blend with the
// previous frame, all in one pass over the rows. The first frame of a size
// (with the usual settings: no colour mixing, no flip) is drawn straight into
// the frame and finished row by row, the same picture sooner: the scene and
// the finished picture, two more pictures of new memory, are made for the
// next frame. Not thread-safe: one owner renders.
//
// Processing order: per-channel white-balance gains and the colour matrix
// (saturation, hue, correction, or grey) on the lit scene; then per-channel
// tables: exposure x gain, black level, offsets, contrast, brightness, gamma.
class SimImagePipeline {
public:
    void setSize(QSize size);
    QSize size() const { return size_; }
    void setLook(const SimLook& look);
    const SimLook& look() const { return look_; }

    // Writes one frame of the set size, RGB888, into `dst`. `previous` is the
    // last frame (same size and stride), blended in while TNR is on, or null. `noiseSeed` picks
    // where the noise pattern is laid this time.
    void compose(uchar* dst, qsizetype bytesPerLine, const uchar* previous, QPointF particleUm,
                 std::uint32_t noiseSeed);

    // The mean grey level of the processed still scene (without noise), for
    // the automatic exposure.
    double meanLevel();
    // The processed colour of one lit scene colour, without noise.
    QColor process(QColor lit);

private:
    void ensureScene();
    void ensureMask();
    void ensureLook();
    void preparePass();
    void ensureFinished();
    void ensureNoise();
    void buildMatrix();
    void buildTables();
    std::array<std::array<uchar, 256>, 3> foldedTables() const;
    bool drawsFromScene(const uchar* previous);

    QSize size_;
    SimLook look_;
    bool sceneDirty_ = true;
    bool matrixDirty_ = true;
    bool preparedValid_ = false;
    bool diagonal_ = false;
    bool finishedDirty_ = true;
    bool tablesDirty_ = true;
    bool firstOfSize_ = true;

    QImage scene_;  // lit scene, RGB888
    QImage particleMask_;
    QSize maskSize_;
    std::array<int, 9> matrix_{};  // colour matrix x gains, 12 fractional bits
    std::array<std::array<uchar, 256>, 3> tables_{};
    PictureMemory::Buffer<uchar> prepared_;  // after gains and a mixing matrix, flipped; 3 * width per row
    PictureMemory::Buffer<uchar> finished_;  // after the tables
    double meanLevel_ = 0;

    PictureMemory::Buffer<std::int16_t>
        unitNoise_;                             // rows of (width + slack) pixels, standard deviation 1024
    PictureMemory::Buffer<std::int8_t> noise_;  // the same scaled to the gain, one value for each of R, G, B
    double noiseSigma_ = -1;
};

}  // namespace tavix
