#pragma once

#include <functional>

namespace tavix::RowHalves {

// Runs work(from, to) over the rows [0, rows) in two halves at once: the
// first on a thread of its own, the second on the caller's; returns when both
// are done. Worth it for a picture of megapixels made while the user waits
// (the camera's first frame); with fewer than `minimum` rows, or on a
// machine with one core, the caller does all of it.
void run(int rows, int minimum, const std::function<void(int from, int to)>& work);

}  // namespace tavix::RowHalves
