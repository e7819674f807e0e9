#pragma once

#include "camera/CameraChoice.h"

#include <QStringList>
#include <functional>
#include <vector>

namespace tavix {

// The camera choice of the camera settings dialog: the cameras there are,
// the one running, and the switch to another. The switch itself (closing the
// camera in use, opening the new one, keeping the choice for the next start)
// is the caller's.
class CameraChooser {
public:
    // True when the chosen camera now runs; false when it could not be opened
    // and the camera in use goes on.
    using Switch = std::function<bool(const CameraChoice&)>;

    CameraChooser(std::vector<CameraChoice> cameras, const CameraChoice& current, Switch doSwitch);

    // As the list shows them: the name and, in brackets, where it is plugged in.
    QStringList items() const;
    // The camera running: the entry of its driver and id, else the first of
    // its driver (a camera opened before it was chosen by id); -1 when none.
    int currentIndex() const { return current_; }
    // True when another camera now runs. Choosing the one running does nothing.
    bool choose(int index);

private:
    std::vector<CameraChoice> cameras_;
    Switch switch_;
    int current_ = -1;
};

}  // namespace tavix
