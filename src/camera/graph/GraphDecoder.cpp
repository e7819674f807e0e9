#include "camera/graph/GraphDecoder.h"

#include "media/BayerDemosaic.h"

#include <csetjmp>
#include <cstdio>

#include <jpeglib.h>

namespace tavix {

namespace {

struct Errors {
    jpeg_error_mgr base;
    std::jmp_buf jump;
};

[[noreturn]] void onError(j_common_ptr cinfo)
{
    std::longjmp(reinterpret_cast<Errors*>(cinfo->err)->jump, 1);
}

void quiet(j_common_ptr, int)
{
}

}  // namespace

// One decompressor for the decoder's life: no set-up per frame.
struct GraphDecoder::Jpeg {
    jpeg_decompress_struct cinfo{};
    Errors errors{};

    Jpeg()
    {
        cinfo.err = jpeg_std_error(&errors.base);
        errors.base.error_exit = onError;
        errors.base.emit_message = quiet;  // a camera's slightly broken frames are not worth a line each
        jpeg_create_decompress(&cinfo);
    }
    ~Jpeg() { jpeg_destroy_decompress(&cinfo); }
};

GraphDecoder::GraphDecoder() : jpeg_(std::make_unique<Jpeg>())
{
}

GraphDecoder::~GraphDecoder() = default;

int GraphDecoder::jpegScale(QSize frame, QSize shown)
{
    if (shown.isEmpty())
        return 1;
    int scale = 1;
    while (scale < 8 && (frame.width() + 2 * scale - 1) / (2 * scale) >= shown.width() &&
           (frame.height() + 2 * scale - 1) / (2 * scale) >= shown.height())
        scale *= 2;
    return scale;
}

uchar* GraphDecoder::reserve(QSize size, FrameView& view)
{
    const qsizetype stride = qsizetype(size.width()) * 3;
    const size_t bytes = static_cast<size_t>(stride) * static_cast<size_t>(size.height());
    if (pixels_.size() < bytes)
        pixels_.resize(bytes);
    view.bits = pixels_.data();
    view.width = size.width();
    view.height = size.height();
    view.bytesPerLine = stride;
    view.format = QImage::Format_RGB888;
    return pixels_.data();
}

bool GraphDecoder::jpeg(const uchar* data, size_t bytes, int scale, bool fast, FrameView& view)
{
    jpeg_decompress_struct& cinfo = jpeg_->cinfo;
    if (setjmp(jpeg_->errors.jump)) {
        jpeg_abort_decompress(&cinfo);
        return false;
    }
    jpeg_mem_src(&cinfo, data, static_cast<unsigned long>(bytes));
    if (jpeg_read_header(&cinfo, TRUE) != JPEG_HEADER_OK) {
        jpeg_abort_decompress(&cinfo);
        return false;
    }
    cinfo.out_color_space = JCS_RGB;
    cinfo.scale_num = 1;
    cinfo.scale_denom = static_cast<unsigned>(scale);
    cinfo.dct_method = fast ? JDCT_IFAST : JDCT_ISLOW;
    cinfo.do_fancy_upsampling = fast ? FALSE : TRUE;
    jpeg_start_decompress(&cinfo);
    FrameView out = view;
    uchar* to =
        reserve(QSize(static_cast<int>(cinfo.output_width), static_cast<int>(cinfo.output_height)), out);
    while (cinfo.output_scanline < cinfo.output_height) {
        JSAMPROW row = to + static_cast<qsizetype>(cinfo.output_scanline) * out.bytesPerLine;
        jpeg_read_scanlines(&cinfo, &row, 1);
    }
    jpeg_finish_decompress(&cinfo);
    view = out;
    return true;
}

RawLayout GraphDecoder::bayerLayout(const QByteArray& pattern)
{
    if (pattern == "rggb")
        return RawLayout::BayerRggb;
    if (pattern == "grbg")
        return RawLayout::BayerGrbg;
    if (pattern == "gbrg")
        return RawLayout::BayerGbrg;
    if (pattern == "bggr")
        return RawLayout::BayerBggr;
    return RawLayout::None;
}

bool GraphDecoder::bayer(const uchar* cells, qsizetype stride, QSize size, RawLayout layout, FrameView& view)
{
    BayerDemosaic::Pattern p = BayerDemosaic::Pattern::RGGB;
    switch (layout) {
        case RawLayout::BayerRggb:
            break;
        case RawLayout::BayerGrbg:
            p = BayerDemosaic::Pattern::GRBG;
            break;
        case RawLayout::BayerGbrg:
            p = BayerDemosaic::Pattern::GBRG;
            break;
        case RawLayout::BayerBggr:
            p = BayerDemosaic::Pattern::BGGR;
            break;
        default:
            return false;
    }
    if (size.width() < 2 || size.height() < 2)
        return false;
    uchar* to = reserve(size, view);
    BayerDemosaic::toRgb(cells, stride, size.width(), size.height(), p, to, view.bytesPerLine);
    return true;
}

}  // namespace tavix
