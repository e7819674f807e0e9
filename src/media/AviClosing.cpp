#include "media/AviClosing.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <algorithm>
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

// What the header list is to say once the file is closed.
struct HeaderCounts {
    std::uint32_t firstPart = 0;  // avih: the frames of the first RIFF part
    std::uint32_t all = 0;        // strh and dmlh: the frames of every part
    // The video stream's super index: one entry a standard index. Empty: the
    // super index becomes padding, so that readers take the idx1.
    std::vector<unsigned char> superEntries;
    std::uint32_t superCount = 0;
    unsigned char frameId[4] = {'0', '0', 'd', 'c'};
};

// Where the header walk stands: the video stream found, its super index written.
struct HeaderWalk {
    bool videoSeen = false;
    bool superWritten = false;
};

// Counts in the header list set; the writer's super index filled, or blanked
// when there is none to write. A writer that had not yet passed 1 GB left the
// super index's room as padding in the video stream's list: it is filled there.
bool fixHeaders(File& file, std::int64_t from, std::int64_t to, const HeaderCounts& counts, HeaderWalk& walk)
{
    unsigned char h[12];
    for (std::int64_t at = from; at + 8 <= to;) {
        if (!file.read(at, h, 12))
            return false;
        const std::uint32_t size = le32(h + 4);
        const std::int64_t data = at + 8;
        const bool superRoom =
            isFourCc(h, "indx") || (isFourCc(h, "JUNK") && walk.videoSeen && size >= 24 + 16);
        if (isFourCc(h, "LIST")) {
            if (!fixHeaders(file, data + 4, data + size, counts, walk))
                return false;
        } else if (isFourCc(h, "avih")) {
            if (!file.put32(data + 16, counts.firstPart))  // dwTotalFrames
                return false;
        } else if (isFourCc(h, "strh")) {
            if (isFourCc(h + 8, "vids") && !walk.videoSeen) {
                walk.videoSeen = true;
                if (!file.put32(data + 32, counts.all))  // dwLength
                    return false;
            }
        } else if (isFourCc(h, "dmlh")) {
            if (!file.put32(data, counts.all))  // dwTotalFrames of all the file's parts
                return false;
        } else if (superRoom && counts.superCount > 0 && !walk.superWritten) {
            walk.superWritten = true;
            // As many entries as the writer left room for.
            const std::uint32_t n = std::min((size - 24) / 16, counts.superCount);
            unsigned char head[24] = {4, 0, 0, 0};  // 4 longs an entry, an index of indexes
            putLe32(head + 4, n);
            std::memcpy(head + 8, counts.frameId, 4);
            if (!file.write(at, reinterpret_cast<const unsigned char*>("indx"), 4) ||
                !file.write(data, head, sizeof head) ||
                !file.write(data + 24, counts.superEntries.data(), 16 * n))
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

// The movie chunks from `at` on, up to the first that is cut or not a movie
// chunk at all: the frames go to `frames`, a standard index to `index`.
// Returns where the walk stopped.
std::int64_t walkMovie(File& file, std::int64_t at, std::int64_t fileSize, std::vector<Chunk>& frames,
                       Chunk* index)
{
    unsigned char h[8];
    while (at + 8 <= fileSize && file.read(at, h, 8)) {
        Chunk c{};
        std::memcpy(c.id, h, 4);
        c.at = at;
        c.size = le32(h + 4);
        if (!isMovieChunk(c.id) || c.at + 8 + c.size > fileSize)
            break;
        if (isFrame(c.id))
            frames.push_back(c);
        else if (index && c.id[0] == 'i' && c.id[1] == 'x')
            *index = c;
        at = c.end();
    }
    return at;
}

// An OpenDML part after the first: "RIFF" size "AVIX" "LIST" size "movi", then its chunks.
struct ExtendedPart {
    std::int64_t at = 0;
    std::vector<Chunk> frames;
    Chunk index{};  // its standard index; size 0 when it has none
    std::int64_t end = 0;
};

// The standard index of a part's frames, as an "ix##" chunk; offsets point at
// the frames' data and count from `base`.
std::vector<unsigned char> standardIndex(const std::vector<Chunk>& frames, size_t kept, std::int64_t base)
{
    std::vector<unsigned char> ix(32 + 8 * kept, 0);
    ix[0] = 'i';
    ix[1] = 'x';
    ix[2] = frames.front().id[0];
    ix[3] = frames.front().id[1];
    putLe32(ix.data() + 4, static_cast<std::uint32_t>(ix.size() - 8));
    ix[8] = 2;   // 2 longs an entry
    ix[11] = 1;  // an index of chunks
    putLe32(ix.data() + 12, static_cast<std::uint32_t>(kept));
    std::memcpy(ix.data() + 16, frames.front().id, 4);
    for (int i = 0; i < 8; ++i)
        ix[20 + i] = static_cast<unsigned char>(static_cast<std::uint64_t>(base) >> (8 * i));
    for (size_t i = 0; i < kept; ++i) {
        putLe32(ix.data() + 32 + 8 * i, static_cast<std::uint32_t>(frames[i].at + 8 - base));
        putLe32(ix.data() + 36 + 8 * i, frames[i].size);  // every frame a key frame
    }
    return ix;
}

}  // namespace

namespace {

// A file cut in its first RIFF part: the index after its last whole frame.
AviClosing::Result closeFirstPart(File& file, const Chunk& header, const Chunk& movie,
                                  const std::vector<Chunk>& frames, std::int64_t end)
{
    AviClosing::Result r;
    auto fail = [&r](const char* why) {
        r.error = QString::fromLatin1(why);
        return r;
    };
    // With no room for the index, frames go until it fits.
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

    HeaderWalk walk;
    HeaderCounts counts;
    counts.firstPart = counts.all = static_cast<std::uint32_t>(kept);
    if (!file.put32(4, static_cast<std::uint32_t>(closedSize - 8)) ||
        !file.put32(movie.at + 4, static_cast<std::uint32_t>(indexAt - movie.at - 8)) ||
        !fixHeaders(file, header.at + 12, header.at + 8 + header.size, counts, walk))
        return fail("the headers cannot be written");
    r.ok = true;
    r.frames = static_cast<std::int64_t>(kept);
    return r;
}

// The superindex entry of a part's standard index.
void addSuperEntry(HeaderCounts& counts, const Chunk& index, size_t frames)
{
    unsigned char e[16] = {};
    for (int i = 0; i < 8; ++i)
        e[i] = static_cast<unsigned char>(static_cast<std::uint64_t>(index.at) >> (8 * i));
    putLe32(e + 8, index.size + 8);
    putLe32(e + 12, static_cast<std::uint32_t>(frames));
    counts.superEntries.insert(counts.superEntries.end(), e, e + 16);
    ++counts.superCount;
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
    unsigned char h[24];
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

    // The first part's chunks written whole; the sizes in its header are the
    // ones the writer put there at the start, unless it finished.
    std::vector<Chunk> frames;
    Chunk firstIndex{};
    const std::int64_t end = walkMovie(file, movie.at + 12, fileSize, frames, &firstIndex);
    Chunk idx1{};
    std::memcpy(idx1.id, "idx1", 4);
    idx1.at = end;
    if (end + 8 > fileSize || !file.read(end, h, 8) || !isFourCc(h, "idx1") ||
        end + 8 + (idx1.size = le32(h + 4)) > fileSize)
        return closeFirstPart(file, header, movie, frames, end);

    // A file of several parts (OpenDML): the first ends with its idx1, each
    // further one with its standard index. The last may be cut anywhere.
    std::vector<ExtendedPart> parts;
    std::int64_t at = idx1.end();
    bool cut = false;
    while (at < fileSize) {
        if (at + 24 > fileSize || !file.read(at, h, 24) || !isFourCc(h, "RIFF") || !isFourCc(h + 8, "AVIX") ||
            !isFourCc(h + 12, "LIST") || !isFourCc(h + 20, "movi")) {
            cut = true;  // a part's header cut short: what comes after the last whole part goes
            break;
        }
        ExtendedPart part;
        part.at = at;
        part.end = walkMovie(file, at + 24, fileSize, part.frames, &part.index);
        const bool whole =
            part.index.at > 0 && part.index.end() == part.end && at + 8 + le32(h + 4) == part.end;
        parts.push_back(part);
        if (!whole) {
            cut = true;
            break;
        }
        at = part.end;
    }
    size_t all = frames.size();
    for (const ExtendedPart& part : parts)
        all += part.frames.size();
    unsigned char sizes[4];
    const bool finished = !cut && file.read(4, sizes, 4) && le32(sizes) == idx1.end() - 8 &&
                          file.read(movie.at + 4, sizes, 4) && le32(sizes) == idx1.at - movie.at - 8;
    if (finished) {
        r.ok = true;  // complete already
        r.frames = static_cast<std::int64_t>(all);
        return r;
    }

    std::int64_t closedEnd = at;
    if (cut && !parts.empty() && parts.back().at == at) {  // cut inside its last part
        ExtendedPart& last = parts.back();
        // The last part's whole frames get their standard index; with no room
        // for it, frames go until it fits, and a part left empty goes.
        size_t kept = last.frames.size();
        for (;; --kept) {
            if (kept == 0) {
                closedEnd = last.at;
                parts.pop_back();
                break;
            }
            const std::int64_t cutAt = last.frames[kept - 1].end();
            const std::vector<unsigned char> ix = standardIndex(last.frames, kept, last.at);
            if (!file.truncate(cutAt))
                return fail("the file cannot be cut to its last whole frame");
            if (!file.write(cutAt, ix.data(), ix.size()))
                continue;
            last.frames.resize(kept);
            last.index =
                Chunk{{ix[0], ix[1], ix[2], ix[3]}, cutAt, static_cast<std::uint32_t>(ix.size() - 8)};
            last.end = cutAt + static_cast<std::int64_t>(ix.size());
            closedEnd = last.end;
            if (!file.put32(last.at + 4, static_cast<std::uint32_t>(last.end - last.at - 8)) ||
                !file.put32(last.at + 16, static_cast<std::uint32_t>(last.end - last.at - 20)))
                return fail("the headers cannot be written");
            break;
        }
    }
    if (!file.truncate(closedEnd))
        return fail("the file cannot be cut after its last part");

    HeaderCounts counts;
    counts.firstPart = static_cast<std::uint32_t>(frames.size());
    counts.all = static_cast<std::uint32_t>(frames.size());
    if (!frames.empty())
        std::memcpy(counts.frameId, frames.front().id, 4);
    if (firstIndex.at > 0)
        addSuperEntry(counts, firstIndex, frames.size());
    for (const ExtendedPart& part : parts) {
        if (firstIndex.at > 0)
            addSuperEntry(counts, part.index, part.frames.size());
        counts.all += static_cast<std::uint32_t>(part.frames.size());
    }
    HeaderWalk walk;
    if (!file.put32(4, static_cast<std::uint32_t>(idx1.end() - 8)) ||
        !file.put32(movie.at + 4, static_cast<std::uint32_t>(idx1.at - movie.at - 8)) ||
        !fixHeaders(file, header.at + 12, header.at + 8 + header.size, counts, walk))
        return fail("the headers cannot be written");
    r.ok = true;
    r.frames = counts.all;
    return r;
}

}  // namespace tavix
