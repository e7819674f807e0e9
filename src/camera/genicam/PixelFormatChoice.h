#pragma once

#include <cstdint>
#include <vector>

namespace tavix::PixelFormatChoice {

// The pixel format to stream in, among those the camera offers (Aravis's
// numbers): a colour camera sends colour, so a colour format the program can
// show wins over the camera's present one when that is grey; then the present
// one when the program can show it; then the format of the fewest bits per
// pixel. -1 when the program can show none of them.
std::int64_t choose(std::uint32_t current, const std::vector<std::uint32_t>& offered);

}  // namespace tavix::PixelFormatChoice
