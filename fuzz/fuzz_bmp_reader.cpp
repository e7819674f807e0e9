// Feeds arbitrary bytes to the bitmap reader. A picture that reads must also
// survive being written and read again with the same colours.
#include "media/BmpFile.h"

#include <QByteArray>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QImage image = tavix::BmpFile::decode(data, static_cast<qsizetype>(size));
    if (image.isNull())
        return 0;
    // Small pictures only: a round trip of a huge one says nothing new and is slow.
    if (qint64(image.width()) * image.height() > 512 * 512)
        return 0;

    QByteArray written;
    if (!tavix::BmpFile::encode(image, written))
        std::abort();  // a picture we read must be writable
    const QImage again = tavix::BmpFile::decode(written);
    if (again.isNull())
        std::abort();  // the program could not read its own file
    if (again != image.convertToFormat(QImage::Format_RGB888))
        std::abort();  // writing lost or changed colours
    return 0;
}
