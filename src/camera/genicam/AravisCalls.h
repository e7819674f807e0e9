#pragma once

#include <QString>
#include <cstdint>
#include <functional>

struct _GError;

namespace tavix::AravisCalls {

using Log = std::function<void(const QString&)>;

// Takes a GError, logs its message and says whether there was one.
bool failed(_GError*& error, const Log& log);

// A number Aravis hands out as the 32-bit integer the program uses, clamped.
std::int32_t clampInt(double v);

}  // namespace tavix::AravisCalls
