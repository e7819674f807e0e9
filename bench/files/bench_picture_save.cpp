// Saving a 2592x1944 still: as a bitmap against a raw write of the bitmap's
// bytes, and as a JPEG at quality 75 and 95 against libjpeg-turbo's own
// compressor on the same picture. Every file of the program is written to a
// temporary name, flushed to the disk and renamed, so the baselines write
// their files the same way (write + fsync + rename). The *Encode* cases leave
// the disk out and compare the compressors alone, Qt's JPEG plug-in included:
// the figures that chose the JPEG writer. The *TemporaryBitmap* cases time the
// parts of the step the save button's JPEG path takes before compressing
// (bitmap encoded, written as a scratch file, read back).
//
// Run with --benchmark_repetitions=9 --benchmark_enable_random_interleaving=true
// --benchmark_report_aggregates_only=true and compare the medians.
#include "BaselineRatio.h"
#include "SimFrameBench.h"
#include "common/SafeFile.h"
#include "files/PictureFiles.h"
#include "media/BmpFile.h"
#include "media/JpegWriter.h"

#include <benchmark/benchmark.h>
#include <QBuffer>
#include <QFile>
#include <QImageWriter>
#include <QTemporaryDir>

#include <fcntl.h>
#include <unistd.h>
#include <cstdio>
#include <cstdlib>

#include <jpeglib.h>

using namespace tavix;

namespace {

constexpr int kMode = 8;  // 2592x1944

// The still as the program holds it after a freeze: 24-bit from the camera's bitmap.
const QImage& still()
{
    return bench::simFrame(kMode);
}

// The same still in the 32-bit form that drawing the measurements gives.
const QImage& still32()
{
    static const QImage frame = still().convertToFormat(QImage::Format_RGB32);
    return frame;
}

const QImage& pictureFor(int format)
{
    return format == 32 ? still32() : still();
}

QString scratch(const char* name)
{
    static QTemporaryDir dir(QStringLiteral("bench_picture_save"));  // in the working folder, on disk
    return dir.filePath(QLatin1String(name));
}

// What SafeFile does, by hand: temporary file, flushed to the disk, renamed.
bool writeSyncRename(const QString& target, const unsigned char* data, size_t size)
{
    const QByteArray path = QFile::encodeName(target);
    const QByteArray temporary = path + ".tmp";
    const int fd = ::open(temporary.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    const bool ok = fd >= 0 && ::write(fd, data, size) == static_cast<ssize_t>(size) && ::fsync(fd) == 0;
    if (fd >= 0)
        ::close(fd);
    return ok && std::rename(temporary.constData(), path.constData()) == 0;
}

// libjpeg-turbo on its own: into memory with its own destination, 4:2:0,
// the same quality, RGB rows as they are.
unsigned long libjpegEncode(const QImage& image, int quality, unsigned char** out)
{
    jpeg_compress_struct cinfo;
    jpeg_error_mgr errors;
    cinfo.err = jpeg_std_error(&errors);
    jpeg_create_compress(&cinfo);
    unsigned long size = 0;
    jpeg_mem_dest(&cinfo, out, &size);
    cinfo.image_width = image.width();
    cinfo.image_height = image.height();
    const bool rgb32 = image.format() == QImage::Format_RGB32;
    cinfo.input_components = rgb32 ? 4 : 3;
    cinfo.in_color_space = rgb32 ? JCS_EXT_BGRX : JCS_RGB;
    jpeg_set_defaults(&cinfo);
    jpeg_set_quality(&cinfo, quality, TRUE);
    jpeg_start_compress(&cinfo, TRUE);
    while (cinfo.next_scanline < cinfo.image_height) {
        JSAMPROW row = const_cast<JSAMPROW>(image.constScanLine(static_cast<int>(cinfo.next_scanline)));
        jpeg_write_scanlines(&cinfo, &row, 1);
    }
    jpeg_finish_compress(&cinfo);
    jpeg_destroy_compress(&cinfo);
    return size;
}

QByteArray qtEncode(const QImage& image, int quality)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "jpeg");
    writer.setQuality(quality);
    writer.write(image);
    return bytes;
}

// --- Bitmap -------------------------------------------------------------------

// The save button's whole bitmap path for the 24-bit and the 32-bit still,
// timed in turn with the raw write of the same file's bytes.
void BmpSave_SavePicture(benchmark::State& state)
{
    PictureFiles::SaveRequest request;
    request.fileName = scratch("picture.bmp");
    request.source = pictureFor(static_cast<int>(state.range(0)));
    QByteArray bytes;
    BmpFile::encode(still(), bytes);
    const QString path = scratch("baseline.bmp");
    bool failed = false;
    bench::timeAgainstBaseline(
        state,
        [&] {
            failed = failed ||
                     PictureFiles::savePicture(request).outcome != PictureFiles::SaveResult::Outcome::Written;
        },
        [&] {
            failed =
                failed || !writeSyncRename(path, reinterpret_cast<const unsigned char*>(bytes.constData()),
                                           static_cast<size_t>(bytes.size()));
        });
    if (failed)
        state.SkipWithError("the picture could not be saved");
}
BENCHMARK(BmpSave_SavePicture)->Arg(24)->Arg(32)->Unit(benchmark::kMillisecond)->UseManualTime();

// --- JPEG with the disk -----------------------------------------------------------

void JpegBaseline_LibjpegWriteSyncRename(benchmark::State& state)
{
    const int quality = static_cast<int>(state.range(0));
    const QString path = scratch("baseline.jpg");
    for (auto _ : state) {
        unsigned char* bytes = nullptr;
        const unsigned long size = libjpegEncode(still(), quality, &bytes);
        const bool ok = writeSyncRename(path, bytes, size);
        std::free(bytes);
        if (!ok)
            state.SkipWithError("the file could not be written");
    }
}
BENCHMARK(JpegBaseline_LibjpegWriteSyncRename)
    ->Arg(75)
    ->Arg(95)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

void JpegSave_SaveJpeg(benchmark::State& state)
{
    const auto quality = static_cast<quint8>(state.range(0));
    const QString path = scratch("savejpeg.jpg");
    for (auto _ : state) {
        if (SaveJpeg(&still(), path, quality) != 0)
            state.SkipWithError("the picture could not be saved");
    }
}
BENCHMARK(JpegSave_SaveJpeg)->Arg(75)->Arg(95)->Unit(benchmark::kMillisecond)->UseRealTime();

// The save button's whole JPEG path: through the temporary bitmap and back,
// then the JPEG.
void JpegSave_SavePicture(benchmark::State& state)
{
    PictureFiles::SaveRequest request;
    request.fileName = scratch("picture.jpg");
    request.source = still();
    request.jpegQuality = static_cast<quint8>(state.range(0));
    request.tempBitmapPath = scratch("temp.bmp");
    for (auto _ : state) {
        if (PictureFiles::savePicture(request).outcome != PictureFiles::SaveResult::Outcome::Written)
            state.SkipWithError("the picture could not be saved");
    }
}
BENCHMARK(JpegSave_SavePicture)->Arg(75)->Arg(95)->Unit(benchmark::kMillisecond)->UseRealTime();

// --- JPEG compressors alone (arguments: quality, picture depth) -------------------

void JpegEncode_Libjpeg(benchmark::State& state)
{
    const QImage& image = pictureFor(static_cast<int>(state.range(1)));
    for (auto _ : state) {
        unsigned char* bytes = nullptr;
        benchmark::DoNotOptimize(libjpegEncode(image, static_cast<int>(state.range(0)), &bytes));
        std::free(bytes);
    }
}

void JpegEncode_JpegWriter(benchmark::State& state)
{
    const QImage& image = pictureFor(static_cast<int>(state.range(1)));
    for (auto _ : state) {
        QByteArray bytes;
        if (JpegWriter::encode(image, static_cast<int>(state.range(0)), bytes) != 0)
            state.SkipWithError("the picture could not be compressed");
        benchmark::DoNotOptimize(bytes.data());
    }
}

void JpegEncode_QtPlugin(benchmark::State& state)
{
    const QImage& image = pictureFor(static_cast<int>(state.range(1)));
    for (auto _ : state) {
        QByteArray bytes = qtEncode(image, static_cast<int>(state.range(0)));
        if (bytes.isEmpty())
            state.SkipWithError("Qt wrote nothing");
        benchmark::DoNotOptimize(bytes.data());
    }
}

void encodeArgs(benchmark::internal::Benchmark* b)
{
    b->ArgNames({"q", "bits"});
    for (const int quality : {75, 95})
        for (const int bits : {24, 32})
            b->Args({quality, bits});
    b->Unit(benchmark::kMillisecond);
}
BENCHMARK(JpegEncode_Libjpeg)->Apply(encodeArgs);
BENCHMARK(JpegEncode_JpegWriter)->Apply(encodeArgs);
BENCHMARK(JpegEncode_QtPlugin)->Apply(encodeArgs);

// --- the temporary bitmap of the JPEG path ------------------------------------

// The bitmap half of the step: encoded into memory.
void TemporaryBitmap_Encode(benchmark::State& state)
{
    QByteArray bytes;
    for (auto _ : state) {
        BmpFile::encode(still(), bytes);
        benchmark::DoNotOptimize(bytes.data());
    }
}
BENCHMARK(TemporaryBitmap_Encode)->Unit(benchmark::kMillisecond)->UseRealTime();

// Written over the old file, as SafeFile::writeScratch does.
void TemporaryBitmap_WriteScratch(benchmark::State& state)
{
    QByteArray bytes;
    BmpFile::encode(still(), bytes);
    const QString path = scratch("scratch.bmp");
    for (auto _ : state) {
        if (SafeFile::writeScratch(path, bytes) != 0)
            state.SkipWithError("the file could not be written");
    }
}
BENCHMARK(TemporaryBitmap_WriteScratch)->Unit(benchmark::kMillisecond)->UseRealTime();

// The same bytes after emptying the file first (O_TRUNC): on ext4 the close
// then waits for the disk, which is why the scratch write does not do this.
void TemporaryBitmap_WriteTruncatingFirst(benchmark::State& state)
{
    QByteArray bytes;
    BmpFile::encode(still(), bytes);
    const QByteArray path = QFile::encodeName(scratch("truncated.bmp"));
    for (auto _ : state) {
        const int fd = ::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        const bool ok = fd >= 0 && ::write(fd, bytes.constData(), bytes.size()) == bytes.size();
        if (fd >= 0)
            ::close(fd);
        if (!ok)
            state.SkipWithError("the file could not be written");
    }
}
BENCHMARK(TemporaryBitmap_WriteTruncatingFirst)->Unit(benchmark::kMillisecond)->UseRealTime();

// Read back into the picture the JPEG is made from.
void TemporaryBitmap_ReadBack(benchmark::State& state)
{
    QByteArray bytes;
    BmpFile::encode(still(), bytes);
    const QString path = scratch("readback.bmp");
    SafeFile::writeScratch(path, bytes);
    for (auto _ : state) {
        QImage picture;
        if (BmpFile::read(path, picture) != 0)
            state.SkipWithError("the file could not be read");
        benchmark::DoNotOptimize(picture.constBits());
    }
}
BENCHMARK(TemporaryBitmap_ReadBack)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
