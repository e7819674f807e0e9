#include "media/AviClosing.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <cstring>
#include <vector>

namespace tavix {

namespace {

constexpr std::uint32_t kKeyFrame = 0x10;  // AVIIF_KEYFRAME: every Motion-JPEG frame is one

std::uint32_t le32(const unsigned char* p)
{
    return std::uint32_t(p[0]) | std::uint32_t(p[1]) << 8 | std::uint32_t(p[2]) << 16 |
           std::uint32_t(p[3]) << 24;
}

void putLe32(unsigned char* p, std::uint32_t v)
{
    for (int i = 0; i < 4; ++i)
        p[i] = static_cast<unsigned char>(v >> (8 * i));
}

bool isFourCc(const unsigned char* id, const char* text)
{
    return std::memcmp(id, text, 4) == 0;
}

bool digit(unsigned char c)
{
    return c >= '0' && c <= '9';
}

// The open file with checked reads and in-place writes of 32-bit fields.
class File {
public:
    explicit File(const QString& path) : fd_(::open(QFile::encodeName(path).constData(), O_RDWR)) {}
    ~File()
    {
        if (fd_ >= 0)
            ::close(fd_);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    bool isOpen() const { return fd_ >= 0; }
    std::int64_t size() const
    {
        struct stat st {};
        return ::fstat(fd_, &st) == 0 ? st.st_size : -1;
    }
    bool read(std::int64_t at, unsigned char* to, size_t bytes) const
    {
        return ::pread(fd_, to, bytes, at) == static_cast<ssize_t>(bytes);
    }
    bool write(std::int64_t at, const unsigned char* from, size_t bytes)
    {
        return ::pwrite(fd_, from, bytes, at) == static_cast<ssize_t>(bytes);
    }
    bool put32(std::int64_t at, std::uint32_t value)
    {
        unsigned char b[4];
        putLe32(b, value);
        return write(at, b, 4);
    }
    bool truncate(std::int64_t to) { return ::ftruncate(fd_, to) == 0; }

private:
    int fd_;
};

struct Chunk {
    unsigned char id[4];
    std::int64_t at = 0;  // where its header starts
    std::uint32_t size = 0;
    std::int64_t end() const { return at + 8 + size + (size & 1); }
};

// Video frames ("00dc", "00db"), each one an index entry.
bool isFrame(const unsigned char* id)
{
    return digit(id[0]) && digit(id[1]) && id[2] == 'd' && (id[3] == 'c' || id[3] == 'b');
}

// A chunk a writer puts into the movie list: stream data, its index, padding.
bool isMovieChunk(const unsigned char* id)
{
    return (digit(id[0]) && digit(id[1])) || (id[0] == 'i' && id[1] == 'x') || isFourCc(id, "JUNK");
}

// Counts and blanks in the header list: frame counts set to `frames`, the
// writer's super index turned into padding.
bool fixHeaders(File& file, std::int64_t from, std::int64_t to, std::uint32_t frames, bool& videoSeen)
{
    unsigned char h[12];
    for (std::int64_t at = from; at + 8 <= to;) {
        if (!file.read(at, h, 12))
            return false;
        const std::uint32_t size = le32(h + 4);
        const std::int64_t data = at + 8;
        if (isFourCc(h, "LIST")) {
            if (!fixHeaders(file, data + 4, data + size, frames, videoSeen))
                return false;
        } else if (isFourCc(h, "avih")) {
            if (!file.put32(data + 16, frames))  // dwTotalFrames
                return false;
        } else if (isFourCc(h, "strh")) {
            if (isFourCc(h + 8, "vids") && !videoSeen) {
                videoSeen = true;
                if (!file.put32(data + 32, frames))  // dwLength
                    return false;
            }
        } else if (isFourCc(h, "dmlh")) {
            if (!file.put32(data, frames))  // dwTotalFrames of all the file's parts
                return false;
        } else if (isFourCc(h, "indx")) {
            // Its entries were to be written at the end, which never came.
            if (!file.write(at, reinterpret_cast<const unsigned char*>("JUNK"), 4))
                return false;
        }
        at = data + size + (size & 1);
    }
    return true;
}

}  // namespace

AviClosing::Result AviClosing::close(const QString& path)
{
    Result r;
    auto fail = [&r](const char* why) {
        r.error = QString::fromLatin1(why);
        return r;
    };
    File file(path);
    if (!file.isOpen())
        return fail("the file cannot be opened");
    const std::int64_t fileSize = file.size();
    unsigned char h[12];
    if (!file.read(0, h, 12) || !isFourCc(h, "RIFF") || !isFourCc(h + 8, "AVI "))
        return fail("not an AVI file");

    Chunk header{};
    Chunk movie{};
    bool haveHeader = false;
    bool haveMovie = false;
    for (std::int64_t at = 12; at + 12 <= fileSize && !haveMovie;) {
        if (!file.read(at, h, 12))
            return fail("the file cannot be read");
        Chunk c{};
        std::memcpy(c.id, h, 4);
        c.at = at;
        c.size = le32(h + 4);
        if (isFourCc(h, "LIST") && isFourCc(h + 8, "hdrl")) {
            header = c;
            haveHeader = true;
        } else if (isFourCc(h, "LIST") && isFourCc(h + 8, "movi")) {
            movie = c;
            haveMovie = true;
        }
        at = c.end();
    }
    if (!haveHeader || !haveMovie)
        return fail("the file has no movie list");

    // The chunks written whole, up to the first that is cut or not a chunk at all.
    std::vector<Chunk> frames;
    std::int64_t end = movie.at + 12;
    while (end + 8 <= fileSize) {
        Chunk c{};
        if (!file.read(end, h, 8))
            return fail("the file cannot be read");
        std::memcpy(c.id, h, 4);
        c.at = end;
        c.size = le32(h + 4);
        if (isFourCc(c.id, "idx1")) {
            if (c.at + 8 + c.size > fileSize)
                break;    // an index cut short is written again
            r.ok = true;  // complete already
            r.frames = static_cast<std::int64_t>(frames.size());
            return r;
        }
        if (isFourCc(c.id, "RIFF"))
            return fail("a file of several parts is not closed here");
        if (!isMovieChunk(c.id) || c.at + 8 + c.size > fileSize)
            break;
        if (isFrame(c.id))
            frames.push_back(c);
        end = c.end();
    }

    // The index after the last frame; with no room for it, frames go until it fits.
    size_t kept = frames.size();
    std::vector<unsigned char> index;
    std::int64_t indexAt = 0;
    for (;;) {
        const std::int64_t cut = kept == frames.size() ? end : frames[kept - 1].end();
        const std::int64_t moviData = movie.at + 8;  // idx1 offsets count from the list type
        indexAt = cut;
        index.assign(8 + 16 * kept, 0);
        std::memcpy(index.data(), "idx1", 4);
        putLe32(index.data() + 4, static_cast<std::uint32_t>(16 * kept));
        for (size_t i = 0; i < kept; ++i) {
            unsigned char* e = index.data() + 8 + 16 * i;
            std::memcpy(e, frames[i].id, 4);
            putLe32(e + 4, kKeyFrame);
            putLe32(e + 8, static_cast<std::uint32_t>(frames[i].at - moviData));
            putLe32(e + 12, frames[i].size);
        }
        // Cutting also gives back a missing pad byte of the last frame, as a zero.
        if (!file.truncate(cut))
            return fail("the file cannot be cut to its last whole frame");
        if (file.write(indexAt, index.data(), index.size()))
            break;
        if (kept == 0)
            return fail("no room on the disk for the index");
        --kept;
    }
    const std::int64_t closedSize = indexAt + static_cast<std::int64_t>(index.size());
    if (!file.truncate(closedSize))
        return fail("the file cannot be cut after its index");

    bool videoSeen = false;
    const auto count = static_cast<std::uint32_t>(kept);
    if (!file.put32(4, static_cast<std::uint32_t>(closedSize - 8)) ||
        !file.put32(movie.at + 4, static_cast<std::uint32_t>(indexAt - movie.at - 8)) ||
        !fixHeaders(file, header.at + 12, header.at + 8 + header.size, count, videoSeen))
        return fail("the headers cannot be written");
    r.ok = true;
    r.frames = static_cast<std::int64_t>(kept);
    return r;
}

}  // namespace tavix
