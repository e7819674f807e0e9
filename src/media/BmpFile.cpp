#include "media/BmpFile.h"

#include "common/RunError.h"
#include "common/SafeFile.h"

#include <QBuffer>
#include <QFile>
#include <QImageReader>
#include <algorithm>
#include <cstring>

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>
#define TAVIX_BMP_X86 1
#endif

namespace tavix {

namespace {

constexpr quint32 kRgb = 0;        // BI_RGB
constexpr quint32 kBitFields = 3;  // BI_BITFIELDS
constexpr quint32 kAlphaBitFields = 6;
constexpr qint64 kMaxSide = 65535;

qsizetype rowBytes(int width)
{
    return (static_cast<qsizetype>(width) * 3 + 3) & ~qsizetype(3);
}

quint16 u16(const uchar* p)
{
    return static_cast<quint16>(p[0] | (p[1] << 8));
}

quint32 u32(const uchar* p)
{
    return static_cast<quint32>(p[0]) | (static_cast<quint32>(p[1]) << 8) |
           (static_cast<quint32>(p[2]) << 16) | (static_cast<quint32>(p[3]) << 24);
}

void put16(uchar* p, quint32 v)
{
    p[0] = static_cast<uchar>(v);
    p[1] = static_cast<uchar>(v >> 8);
}

void put32(uchar* p, quint32 v)
{
    put16(p, v);
    put16(p + 2, v >> 16);
}

// Row converters. 3-byte pixel order is swapped (RGB <-> BGR); 4-byte pixels
// are B,G,R,X in memory (QImage's RGB32 on a little-endian machine).

void swap3Scalar(const uchar* src, uchar* dst, int pixels)
{
    for (int i = 0; i < pixels; ++i, src += 3, dst += 3) {
        const uchar a = src[0];
        const uchar b = src[1];
        const uchar c = src[2];
        dst[0] = c;
        dst[1] = b;
        dst[2] = a;
    }
}

void pack4to3Scalar(const uchar* src, uchar* dst, int pixels)
{
    for (int i = 0; i < pixels; ++i, src += 4, dst += 3) {
        dst[0] = src[0];
        dst[1] = src[1];
        dst[2] = src[2];
    }
}

void unpack3to4Scalar(const uchar* src, uchar* dst, int pixels)
{
    for (int i = 0; i < pixels; ++i, src += 3, dst += 4) {
        dst[0] = src[0];
        dst[1] = src[1];
        dst[2] = src[2];
        dst[3] = 0xff;
    }
}

#ifdef TAVIX_BMP_X86
// Four pixels per 16-byte step; the four bytes stored past the twelve are
// rewritten by the next step, and the last steps stay inside the row.
__attribute__((target("ssse3"))) void swap3Ssse3(const uchar* src, uchar* dst, int pixels)
{
    const __m128i mask = _mm_setr_epi8(2, 1, 0, 5, 4, 3, 8, 7, 6, 11, 10, 9, 12, 13, 14, 15);
    int i = 0;
    for (; i + 6 <= pixels; i += 4) {  // 16 bytes read and written, 18 available
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + i * 3));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + i * 3), _mm_shuffle_epi8(v, mask));
    }
    swap3Scalar(src + i * 3, dst + i * 3, pixels - i);
}

__attribute__((target("ssse3"))) void pack4to3Ssse3(const uchar* src, uchar* dst, int pixels)
{
    const __m128i mask = _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
    int i = 0;
    for (; i + 6 <= pixels; i += 4) {  // the 16-byte store needs 16 of the 18 bytes that follow
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + i * 4));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + i * 3), _mm_shuffle_epi8(v, mask));
    }
    pack4to3Scalar(src + i * 4, dst + i * 3, pixels - i);
}

__attribute__((target("ssse3"))) void unpack3to4Ssse3(const uchar* src, uchar* dst, int pixels)
{
    const __m128i mask = _mm_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1);
    const __m128i alpha = _mm_set1_epi32(static_cast<int>(0xff000000u));
    int i = 0;
    for (; i + 6 <= pixels; i += 4) {  // reads 16 of the 18 bytes of six pixels
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + i * 3));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + i * 4),
                         _mm_or_si128(_mm_shuffle_epi8(v, mask), alpha));
    }
    unpack3to4Scalar(src + i * 3, dst + i * 4, pixels - i);
}
#endif

using RowFn = void (*)(const uchar*, uchar*, int);

struct RowFns {
    RowFn swap3 = swap3Scalar;
    RowFn pack4to3 = pack4to3Scalar;
    RowFn unpack3to4 = unpack3to4Scalar;
};

const RowFns& rowFns()
{
    static const RowFns fns = [] {
        RowFns f;
#ifdef TAVIX_BMP_X86
        if (__builtin_cpu_supports("ssse3")) {
            f.swap3 = swap3Ssse3;
            f.pack4to3 = pack4to3Ssse3;
            f.unpack3to4 = unpack3to4Ssse3;
        }
#endif
        return f;
    }();
    return fns;
}

constexpr bool kLittleEndian = Q_BYTE_ORDER == Q_LITTLE_ENDIAN;

bool encodable(QImage::Format format)
{
    switch (format) {
        case QImage::Format_RGB888:
        case QImage::Format_BGR888:
            return true;
        case QImage::Format_RGB32:
        case QImage::Format_ARGB32:
            return kLittleEndian;
        default:
            return false;
    }
}

QImage decodeWithQt(const uchar* data, qsizetype size)
{
    QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(data), size);
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, "bmp");
    QImage image = reader.read();
    return image;  // QImageReader copies the pixels, so the raw bytes may go
}

// The parsed header of a bitmap that this reader decodes itself.
struct Layout {
    int width = 0;
    int height = 0;
    bool topDown = false;
    int bits = 0;
    bool alpha = false;
    qsizetype stride = 0;
    qsizetype offset = 0;
    int dotsX = 0;
    int dotsY = 0;
};

enum class Parse { Own, Qt, Invalid };

Parse parse(const uchar* data, qsizetype size, Layout& l)
{
    if (size < 26 || data[0] != 'B' || data[1] != 'M')
        return Parse::Invalid;
    const quint32 headerSize = u32(data + 14);
    if (headerSize == 12)
        return Parse::Qt;  // OS/2 core header
    if (headerSize < 40 || size < BmpFile::kHeaderSize)
        return Parse::Invalid;
    const qint64 width = static_cast<qint32>(u32(data + 18));
    const qint64 height = static_cast<qint32>(u32(data + 22));
    const int bits = u16(data + 28);
    const quint32 compression = u32(data + 30);
    const qint64 offset = u32(data + 10);
    if (width <= 0 || height == 0 || width > kMaxSide || height > kMaxSide || -height > kMaxSide)
        return Parse::Invalid;
    if (offset < 14 + static_cast<qint64>(headerSize) || offset > size)
        return Parse::Invalid;

    l.width = static_cast<int>(width);
    l.height = static_cast<int>(height < 0 ? -height : height);
    l.topDown = height < 0;
    l.bits = bits;
    l.offset = static_cast<qsizetype>(offset);
    l.dotsX = static_cast<qint32>(u32(data + 38));
    l.dotsY = static_cast<qint32>(u32(data + 42));

    if (bits == 24 && compression == kRgb) {
        l.stride = rowBytes(l.width);
    } else if (bits == 32 &&
               (compression == kRgb || compression == kBitFields || compression == kAlphaBitFields)) {
        if (compression != kRgb) {
            const bool hasAlphaMask = headerSize >= 56 || compression == kAlphaBitFields;
            if (size < 66 + (hasAlphaMask ? 4 : 0))
                return Parse::Invalid;
            const quint32 alphaMask = hasAlphaMask ? u32(data + 66) : 0;
            if (u32(data + 54) != 0x00ff0000u || u32(data + 58) != 0x0000ff00u ||
                u32(data + 62) != 0x000000ffu || (alphaMask != 0 && alphaMask != 0xff000000u))
                return Parse::Qt;
            l.alpha = alphaMask != 0;
        }
        l.stride = static_cast<qsizetype>(l.width) * 4;
    } else {
        return Parse::Qt;
    }
    if (static_cast<qint64>(l.stride) * l.height > size - l.offset)
        return Parse::Invalid;  // cut off
    if (!kLittleEndian && bits == 32)
        return Parse::Qt;
    return Parse::Own;
}

// Decodes into `image`, reusing its buffer when it fits.
// asStored: a 24-bit file's rows are copied as they are (blue first) into a
// Format_BGR888 picture instead of being swapped into RGB888.
bool decodeInto(const uchar* data, qsizetype size, QImage& image, bool asStored = false)
{
    Layout l;
    switch (parse(data, size, l)) {
        case Parse::Invalid:
            return false;
        case Parse::Qt: {
            QImage decoded = decodeWithQt(data, size);
            if (decoded.isNull())
                return false;
            image = std::move(decoded);
            return true;
        }
        case Parse::Own:
            break;
    }

    const QImage::Format rgb24 = asStored ? QImage::Format_BGR888 : QImage::Format_RGB888;
    const QImage::Format format =
        l.bits == 24 ? rgb24 : (l.alpha ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    QImage target;
    if (image.width() == l.width && image.height() == l.height && image.format() == format &&
        image.isDetached())
        target = std::move(image);  // keeps its pages: no page faults on the next still
    else
        target = QImage(l.width, l.height, format);
    if (target.isNull())
        return false;

    const RowFns& fns = rowFns();
    const uchar* pixels = data + l.offset;
    for (int y = 0; y < l.height; ++y) {
        const uchar* src = pixels + static_cast<qsizetype>(l.topDown ? y : l.height - 1 - y) * l.stride;
        uchar* dst = target.scanLine(y);
        if (l.bits == 24 && asStored) {
            std::memcpy(dst, src, static_cast<size_t>(l.width) * 3);
        } else if (l.bits == 24) {
            fns.swap3(src, dst, l.width);
        } else if (l.alpha) {
            std::memcpy(dst, src, static_cast<size_t>(l.width) * 4);
        } else {
            auto* out = reinterpret_cast<quint32*>(dst);
            std::memcpy(out, src, static_cast<size_t>(l.width) * 4);
            for (int x = 0; x < l.width; ++x)
                out[x] |= 0xff000000u;
        }
    }
    if (l.dotsX > 0)
        target.setDotsPerMeterX(l.dotsX);
    if (l.dotsY > 0)
        target.setDotsPerMeterY(l.dotsY);
    image = std::move(target);
    return true;
}

}  // namespace

qsizetype BmpFile::fileSize(int width, int height)
{
    return kHeaderSize + rowBytes(width) * height;
}

namespace {

void putHeader(uchar* p, int width, int height, quint32 dotsPerMeterX, quint32 dotsPerMeterY)
{
    const qsizetype stride = rowBytes(width);
    std::memset(p, 0, BmpFile::kHeaderSize);
    p[0] = 'B';
    p[1] = 'M';
    put32(p + 2, static_cast<quint32>(BmpFile::fileSize(width, height)));
    put32(p + 10, BmpFile::kHeaderSize);
    put32(p + 14, 40);
    put32(p + 18, static_cast<quint32>(width));
    put32(p + 22, static_cast<quint32>(height));  // positive: bottom-up
    put16(p + 26, 1);
    put16(p + 28, 24);
    put32(p + 30, kRgb);
    put32(p + 34, static_cast<quint32>(stride * height));
    put32(p + 38, dotsPerMeterX);
    put32(p + 42, dotsPerMeterY);
}

// Rows [first, first + count) of the file (bottom-up) into dst, padded. The
// last of them first: so the picture is read upwards in memory, which the
// processor's prefetcher follows; read the other way, a 5-megapixel picture
// converts three times slower.
void putRows(const uchar* bits, int width, int height, qsizetype bytesPerLine, QImage::Format format,
             int first, int count, uchar* rows)
{
    const RowFns& fns = rowFns();
    const qsizetype stride = rowBytes(width);
    const qsizetype pad = stride - static_cast<qsizetype>(width) * 3;
    for (int i = count - 1; i >= 0; --i) {
        const int y = first + i;
        const uchar* src = bits + static_cast<qsizetype>(height - 1 - y) * bytesPerLine;
        uchar* dst = rows + i * stride;
        switch (format) {
            case QImage::Format_RGB888:
                fns.swap3(src, dst, width);
                break;
            case QImage::Format_BGR888:
                std::memcpy(dst, src, static_cast<size_t>(width) * 3);
                break;
            default:  // RGB32, ARGB32
                fns.pack4to3(src, dst, width);
                break;
        }
        if (pad)
            std::memset(dst + width * 3, 0, static_cast<size_t>(pad));
    }
}

constexpr quint32 kDefaultDotsPerMeter = 3780;  // 96 dpi, as Qt marks a picture without its own resolution

}  // namespace

bool BmpFile::encode(const uchar* bits, int width, int height, qsizetype bytesPerLine, QImage::Format format,
                     QByteArray& out)
{
    if (!bits || width <= 0 || height <= 0 || !encodable(format))
        return false;
    const qsizetype total = fileSize(width, height);
    if (out.size() != total)
        out.resize(total);
    uchar* p = reinterpret_cast<uchar*>(out.data());  // detaches only when shared
    putHeader(p, width, height, kDefaultDotsPerMeter, kDefaultDotsPerMeter);
    putRows(bits, width, height, bytesPerLine, format, 0, height, p + kHeaderSize);
    return true;
}

bool BmpFile::encode(const QImage& image, QByteArray& out)
{
    if (image.isNull())
        return false;
    if (encodable(image.format())) {
        const bool ok = encode(image.constBits(), image.width(), image.height(), image.bytesPerLine(),
                               image.format(), out);
        if (ok && image.dotsPerMeterX() > 0 && image.dotsPerMeterY() > 0) {
            put32(reinterpret_cast<uchar*>(out.data()) + 38, static_cast<quint32>(image.dotsPerMeterX()));
            put32(reinterpret_cast<uchar*>(out.data()) + 42, static_cast<quint32>(image.dotsPerMeterY()));
        }
        return ok;
    }
    return encode(image.convertToFormat(QImage::Format_RGB888), out);
}

int BmpFile::write(const QString& path, const QImage& image, QByteArray& buffer)
{
    if (image.isNull())
        return err::InvalidCall;
    if (!encodable(image.format()))
        return write(path, image.convertToFormat(QImage::Format_RGB888), buffer);
    // Converted a megabyte at a time into one buffer and written from there:
    // no buffer for the whole file to fill, whose fresh pages cost more than
    // the conversion. Every write but the last is exactly a megabyte, so that
    // the pieces meet at whole megabytes of the file: pieces that meet inside
    // the file system's larger pages made the flush to the disk a millisecond
    // longer for a 15 MB bitmap.
    constexpr qsizetype kPieceBytes = qsizetype(1) << 20;
    const int width = image.width();
    const int height = image.height();
    const qsizetype stride = rowBytes(width);
    const qsizetype capacity = kPieceBytes + stride;  // a row more than a piece: rows are converted whole
    if (buffer.size() < capacity)
        buffer.resize(capacity);
    uchar* chunk = reinterpret_cast<uchar*>(buffer.data());
    const bool ownResolution = image.dotsPerMeterX() > 0 && image.dotsPerMeterY() > 0;
    putHeader(chunk, width, height,
              ownResolution ? static_cast<quint32>(image.dotsPerMeterX()) : kDefaultDotsPerMeter,
              ownResolution ? static_cast<quint32>(image.dotsPerMeterY()) : kDefaultDotsPerMeter);
    qsizetype filled = kHeaderSize;  // bytes of the next piece in the buffer
    qsizetype carried = 0;           // bytes past the piece handed out last, to go first in the next
    int next = 0;                    // the next row of the file to convert
    return SafeFile::writeStreamed(path, [&]() -> SafeFile::Piece {
        if (carried > 0)
            std::memmove(chunk, chunk + kPieceBytes, static_cast<size_t>(carried));
        filled += carried;
        carried = 0;
        while (next < height && filled < kPieceBytes) {
            const int count =
                static_cast<int>(std::min<qsizetype>(height - next, (capacity - filled) / stride));
            putRows(image.constBits(), width, height, image.bytesPerLine(), image.format(), next, count,
                    chunk + filled);
            next += count;
            filled += stride * count;
        }
        if (filled == 0)
            return {};
        const qsizetype size = std::min(filled, kPieceBytes);
        carried = filled - size;
        filled = 0;
        return {reinterpret_cast<const char*>(chunk), size};
    });
}

int BmpFile::write(const QString& path, const QImage& image)
{
    // Kept for the thread's next picture: a fresh megabyte costs its page faults every time.
    thread_local QByteArray buffer;
    return write(path, image, buffer);
}

bool BmpFile::storedRows(const uchar* data, qsizetype size, StoredRows& rows)
{
    Layout l;
    if (!data || parse(data, size, l) != Parse::Own)
        return false;
    const uchar* pixels = data + l.offset;
    rows.width = l.width;
    rows.height = l.height;
    rows.step = l.topDown ? l.stride : -l.stride;
    rows.top = l.topDown ? pixels : pixels + static_cast<qsizetype>(l.height - 1) * l.stride;
    rows.format =
        l.bits == 24 ? QImage::Format_BGR888 : (l.alpha ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    rows.dotsPerMeterX = std::max(l.dotsX, 0);
    rows.dotsPerMeterY = std::max(l.dotsY, 0);
    return true;
}

QImage BmpFile::decode(const uchar* data, qsizetype size)
{
    QImage image;
    if (!data || !decodeInto(data, size, image))
        return {};
    return image;
}

QImage BmpFile::decode(const QByteArray& bytes)
{
    return decode(reinterpret_cast<const uchar*>(bytes.constData()), bytes.size());
}

namespace {

int readFile(const QString& path, QImage& image, bool asStored)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return err::FileNotFound;
    const qint64 size = file.size();
    // Mapped, the file's pages are read straight into the picture.
    if (uchar* mapped = size > 0 ? file.map(0, size) : nullptr) {
        const bool ok = decodeInto(mapped, static_cast<qsizetype>(size), image, asStored);
        file.unmap(mapped);
        return ok ? 0 : BmpFile::kInvalidPicture;
    }
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return err::FileNotFound;
    return decodeInto(reinterpret_cast<const uchar*>(bytes.constData()), bytes.size(), image, asStored)
               ? 0
               : BmpFile::kInvalidPicture;
}

}  // namespace

int BmpFile::read(const QString& path, QImage& image)
{
    return readFile(path, image, false);
}

int BmpFile::readAsStored(const QString& path, QImage& image)
{
    return readFile(path, image, true);
}

}  // namespace tavix
