// Feeds arbitrary bytes to what Load picture reads: the bitmap reader for a
// file that starts with "BM", Qt's readers (JPEG and the rest) for any other.
// A picture that reads must be one the program can show and save.
#include "files/PictureFiles.h"
#include "media/BmpFile.h"
#include "media/JpegWriter.h"

#include <QBuffer>
#include <QCoreApplication>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // Qt finds its image plug-ins through the application object.
    static int argc = 1;
    static char name[] = "fuzz_picture_load";
    static char* argv[] = {name, nullptr};
    static QCoreApplication app(argc, argv);

    const QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(data), qsizetype(size));
    QImage picture;
    if (bytes.startsWith("BM")) {
        picture = tavix::BmpFile::decode(bytes);
    } else {
        QBuffer buffer;
        buffer.setData(bytes);
        buffer.open(QIODevice::ReadOnly);
        tavix::PictureFiles::readByContent(buffer, picture);
    }
    if (picture.isNull())
        return 0;
    // Small pictures only: encoding a huge one says nothing new and is slow.
    // JPEG itself holds no side over 65500 pixels; such a save is refused.
    if (qint64(picture.width()) * picture.height() <= 512 * 512 && picture.width() <= 65500 &&
        picture.height() <= 65500) {
        QByteArray jpeg;
        if (tavix::JpegWriter::encode(picture, 75, jpeg) != tavix::JpegWriter::kOk)
            std::abort();  // a picture we read must be savable
    }
    return 0;
}
