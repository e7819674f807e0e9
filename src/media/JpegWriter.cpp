#include "media/JpegWriter.h"

#include "common/RunError.h"
#include "common/SafeFile.h"

#include <algorithm>
#include <csetjmp>
#include <cstdio>  // jpeglib.h needs FILE and size_t declared first
#include <new>

#include <jerror.h>
#include <jpeglib.h>

namespace tavix {

namespace {

// How libjpeg-turbo reads the rows of a picture format, or JCS_UNKNOWN when
// the picture has to be converted first.
struct InputLayout {
    J_COLOR_SPACE space = JCS_UNKNOWN;
    int components = 0;
};

InputLayout layoutOf(QImage::Format format)
{
    constexpr bool little = Q_BYTE_ORDER == Q_LITTLE_ENDIAN;
    switch (format) {
        case QImage::Format_RGB888:
            return {JCS_RGB, 3};
        case QImage::Format_BGR888:
            return {JCS_EXT_BGR, 3};
        case QImage::Format_RGB32:
        case QImage::Format_ARGB32:
        case QImage::Format_ARGB32_Premultiplied:
            // 0xAARRGGBB words: B, G, R, A in memory on a little-endian machine.
            return little ? InputLayout{JCS_EXT_BGRX, 4} : InputLayout{JCS_EXT_XRGB, 4};
        case QImage::Format_RGBX8888:
        case QImage::Format_RGBA8888:
        case QImage::Format_RGBA8888_Premultiplied:
            return {JCS_EXT_RGBX, 4};
        case QImage::Format_Grayscale8:
            return {JCS_GRAYSCALE, 1};
        default:
            return {};
    }
}

// Pictures with a colour table of greys and 16-bit grey pictures make grey
// files, as Qt's plug-in writes them.
bool greyOnly(const QImage& picture)
{
    switch (picture.format()) {
        case QImage::Format_Grayscale16:
            return true;
        case QImage::Format_Mono:
        case QImage::Format_MonoLSB:
        case QImage::Format_Indexed8: {
            const QList<QRgb> table = picture.colorTable();
            return std::all_of(table.cbegin(), table.cend(), [](QRgb c) { return qIsGray(c); });
        }
        default:
            return false;
    }
}

// The library reports errors through a callback that must not return; it
// jumps back to the encoder here. Nothing between holds a C++ object.
struct ErrorManager {
    jpeg_error_mgr base;
    std::jmp_buf jump;
    bool outOfMemory;
};

[[noreturn]] void onError(j_common_ptr cinfo)
{
    auto* errors = reinterpret_cast<ErrorManager*>(cinfo->err);
    if (errors->base.msg_code == JERR_OUT_OF_MEMORY)
        errors->outOfMemory = true;
    std::longjmp(errors->jump, 1);
}

void onMessage(j_common_ptr, int)
{
}  // warnings of a compression are of no use to the user

// Compressed bytes go straight into the caller's QByteArray, sized by a
// generous guess and grown by halves, so that a picture costs one or two
// allocations instead of a doubling series from 4 KB.
struct Destination {
    jpeg_destination_mgr base;
    QByteArray* out;
    qsizetype used;
};

bool grow(Destination* d, qsizetype newSize) noexcept
{
    try {
        d->out->resize(newSize);
    } catch (const std::bad_alloc&) {
        return false;
    }
    d->base.next_output_byte = reinterpret_cast<JOCTET*>(d->out->data()) + d->used;
    d->base.free_in_buffer = static_cast<size_t>(newSize - d->used);
    return true;
}

void initDestination(j_compress_ptr)
{
}

boolean emptyOutput(j_compress_ptr cinfo)
{
    auto* d = reinterpret_cast<Destination*>(cinfo->dest);
    d->used = d->out->size();  // the library calls this only when the buffer is full
    if (!grow(d, d->used + d->used / 2 + 65536)) {
        cinfo->err->msg_code = JERR_OUT_OF_MEMORY;
        cinfo->err->error_exit(reinterpret_cast<j_common_ptr>(cinfo));
    }
    return TRUE;
}

void termDestination(j_compress_ptr cinfo)
{
    auto* d = reinterpret_cast<Destination*>(cinfo->dest);
    d->out->truncate(d->out->size() - static_cast<qsizetype>(d->base.free_in_buffer));
}

// A first guess of the compressed size: about a quarter of the raw pixels at
// the highest quality of a camera picture, a few percent at the usual ones.
qsizetype initialSize(const JpegWriter::Rows& rows, int quality)
{
    const qsizetype pixels = static_cast<qsizetype>(rows.width) * rows.height;
    const qsizetype perMille = quality >= 95 ? 900 : quality >= 85 ? 450 : 250;
    return pixels * perMille / 1000 + 16384;
}

// The JFIF resolution as Qt's JPEG plug-in writes it: dots per centimetre
// when the picture's resolution is a whole number of them, else dots per inch.
void setDensity(jpeg_compress_struct& cinfo, const JpegWriter::Rows& rows)
{
    const int x = rows.dotsPerMeterX;
    const int y = rows.dotsPerMeterY;
    if (x <= 0 || y <= 0)
        return;  // the library's default: no unit, square pixels
    if (x % 100 == 0 && y % 100 == 0) {
        cinfo.density_unit = 2;
        cinfo.X_density = static_cast<UINT16>(std::min(x / 100, 65535));
        cinfo.Y_density = static_cast<UINT16>(std::min(y / 100, 65535));
    } else {
        cinfo.density_unit = 1;
        cinfo.X_density = static_cast<UINT16>(std::clamp(qRound(x * 0.0254), 1, 65535));
        cinfo.Y_density = static_cast<UINT16>(std::clamp(qRound(y * 0.0254), 1, 65535));
    }
}

// The compression itself, kept free of C++ objects with destructors because
// an error of the library jumps back into the middle of it.
int compress(const JpegWriter::Rows& picture, InputLayout layout, int quality, Destination& dest)
{
    jpeg_compress_struct cinfo;
    ErrorManager errors;
    cinfo.err = jpeg_std_error(&errors.base);
    errors.base.error_exit = onError;
    errors.base.emit_message = onMessage;
    errors.outOfMemory = false;
    if (setjmp(errors.jump)) {
        jpeg_destroy_compress(&cinfo);
        return errors.outOfMemory ? JpegWriter::kOutOfMemory : JpegWriter::kEncoderFailed;
    }
    jpeg_create_compress(&cinfo);
    dest.base.init_destination = initDestination;
    dest.base.empty_output_buffer = emptyOutput;
    dest.base.term_destination = termDestination;
    cinfo.dest = &dest.base;

    cinfo.image_width = static_cast<JDIMENSION>(picture.width);
    cinfo.image_height = static_cast<JDIMENSION>(picture.height);
    cinfo.input_components = layout.components;
    cinfo.in_color_space = layout.space;
    jpeg_set_defaults(&cinfo);  // 4:2:0 for colour, baseline Huffman tables
    jpeg_set_quality(&cinfo, quality, TRUE);
    setDensity(cinfo, picture);
    jpeg_start_compress(&cinfo, TRUE);

    // One 4:2:0 row group per call: fewer calls into the library.
    JSAMPROW rows[JpegWriter::kRowBatch];
    while (cinfo.next_scanline < cinfo.image_height) {
        const JDIMENSION first = cinfo.next_scanline;
        const JDIMENSION count = std::min<JDIMENSION>(JpegWriter::kRowBatch, cinfo.image_height - first);
        for (JDIMENSION i = 0; i < count; ++i)
            rows[i] = const_cast<JSAMPROW>(picture.row(static_cast<int>(first + i)));
        jpeg_write_scanlines(&cinfo, rows, count);
    }
    jpeg_finish_compress(&cinfo);
    jpeg_destroy_compress(&cinfo);
    return JpegWriter::kOk;
}

// Into `out`, grown from a first guess of its size.
int compressInto(const JpegWriter::Rows& rows, InputLayout layout, int quality, QByteArray& out)
{
    Destination dest{};
    dest.out = &out;
    dest.used = 0;
    out.resize(0);  // keeps its storage: the next picture of a series needs no fresh pages
    if (!grow(&dest, initialSize(rows, quality)))
        return JpegWriter::kOutOfMemory;
    const int status = compress(rows, layout, std::clamp(quality, 0, JpegWriter::kMaxQuality), dest);
    if (status != JpegWriter::kOk)
        out.clear();
    return status;
}

}  // namespace

int JpegWriter::encode(const QImage& picture, int quality, QByteArray& out)
{
    if (picture.isNull())
        return kNoPicture;
    if (picture.width() > kMaxSide || picture.height() > kMaxSide)
        return kInvalidPicture;

    InputLayout layout = layoutOf(picture.format());
    QImage converted;
    if (layout.space == JCS_UNKNOWN) {
        converted =
            picture.convertToFormat(greyOnly(picture) ? QImage::Format_Grayscale8 : QImage::Format_RGB888);
        if (converted.isNull())
            return kOutOfMemory;
        layout = layoutOf(converted.format());
    }
    const QImage& source = converted.isNull() ? picture : converted;
    const uchar* bits = source.constBits();
    const qsizetype stride = source.bytesPerLine();
    Rows rows{source.width(),         source.height(),
              source.format(),        source.dotsPerMeterX(),
              source.dotsPerMeterY(), [bits, stride](int y) { return bits + y * stride; }};
    return compressInto(rows, layout, quality, out);
}

int JpegWriter::encode(const Rows& rows, int quality, QByteArray& out)
{
    const InputLayout layout = layoutOf(rows.format);
    if (rows.width <= 0 || rows.height <= 0 || !rows.row || layout.space == JCS_UNKNOWN)
        return kNoPicture;
    if (rows.width > kMaxSide || rows.height > kMaxSide)
        return kInvalidPicture;
    return compressInto(rows, layout, quality, out);
}

int JpegWriter::statusOfWriteError(int runError)
{
    switch (runError) {
        case 0:
            return kOk;
        case err::PathNotFound:
            return kFolderMissing;
        case err::PathFileAccess:
            return kAccessDenied;
        default:
            return kWriteFailed;
    }
}

int JpegWriter::writeErrorOfStatus(int status)
{
    switch (status) {
        case kFolderMissing:
            return err::PathNotFound;
        case kAccessDenied:
            return err::PathFileAccess;
        case kWriteFailed:
            return err::DiskFull;
        default:
            return 0;
    }
}

int SaveJpeg(const QImage* picture, const QString& fileName, quint8 quality)
{
    if (!picture || picture->isNull())
        return JpegWriter::kNoPicture;
    const int q = std::min<int>(quality, JpegWriter::kMaxQuality);
    QByteArray bytes;
    const int status = JpegWriter::encode(*picture, q, bytes);
    if (status != JpegWriter::kOk)
        return status;
    return JpegWriter::statusOfWriteError(SafeFile::write(fileName, bytes));
}

}  // namespace tavix
