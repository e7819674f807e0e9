// Feeds arbitrary bytes to the calibration file reader. A text that reads must
// also survive being written and read again unchanged.
#include "calib/ProofTable.h"

#include <QString>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    tavix::ProofTable table;
    if (!table.parse(text))
        return 0;

    const QByteArray written = table.toFileText();
    tavix::ProofTable again;
    if (!again.parse(QString::fromUtf8(written)))
        std::abort();  // the program could not read its own file
    if (again.toFileText() != written)
        std::abort();  // writing is not stable
    return 0;
}
