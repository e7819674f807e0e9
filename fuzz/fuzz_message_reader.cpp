// Feeds arbitrary bytes to the message-file reader and looks a few ids up.
#include "common/MessageTable.h"
#include "common/RunError.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    tavix::MessageTable table;
    try {
        table.parse(text);
    } catch (const tavix::RunError&) {
        return 0;
    }
    for (int i = 0; i < table.size() && i < 8; ++i)
        (void)table.text(table.at(i).id, 42);
    (void)table.text(-1, QStringLiteral("@"));
    return 0;
}
