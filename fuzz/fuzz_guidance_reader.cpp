// Feeds arbitrary bytes to the guidance-file reader.
#include "common/GuidanceTable.h"
#include "common/RunError.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    static tavix::GuidanceTable table;  // 1001 x 2 strings: build it once
    try {
        table.parse(text);
    } catch (const tavix::RunError&) {
    }
    (void)table.line(0, 0);
    (void)table.line(1000, 1);
    return 0;
}
