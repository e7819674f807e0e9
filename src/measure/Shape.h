#pragma once

#include "measure/PointD.h"

#include <QString>
#include <vector>

namespace tavix {

// A straight piece of a drawing, in picture pixels.
struct Segment {
    PointD a;
    PointD b;

    friend bool operator==(const Segment&, const Segment&) = default;
};

// A text drawn beside a measurement. The painter centres it horizontally on
// the anchor and puts it just above the anchor (or just below it).
struct Label {
    PointD anchor;  // picture pixels
    QString text;
    int value = -1;  // index of the value it shows, -1 for a point's number
    bool below = false;
};

// What a measurement or a rubber band looks like, in picture pixels. Colours
// are slots of the measurement settings: line colours 1 to 3, value colours
// 1 and 2; the painter turns slots and positions into pixels on a target.
struct Shape {
    std::vector<Segment> lines;                  // the measured lines
    std::vector<Segment> guides;                 // construction lines: extensions, radii
    std::vector<std::vector<PointD>> polylines;  // arcs and circles
    std::vector<PointD> marks;                   // placed points, drawn as small crosses
    std::vector<Label> labels;
    int lineSlot = 1;
    int guideSlot = 3;
    int valueSlot = 1;

    bool empty() const
    {
        return lines.empty() && guides.empty() && polylines.empty() && marks.empty() && labels.empty();
    }
};

}  // namespace tavix
