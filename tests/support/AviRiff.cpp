#include "AviRiff.h"

#include <QFile>
#include <QtEndian>

namespace tavix::test {

namespace {

class Reader {
public:
    explicit Reader(const QString& path) : file_(path) { open_ = file_.open(QIODevice::ReadOnly); }

    bool open() const { return open_; }
    qint64 size() const { return file_.size(); }

    QByteArray bytes(qint64 at, qint64 count)
    {
        if (at < 0 || at + count > file_.size() || !file_.seek(at))
            return {};
        return file_.read(count);
    }
    quint32 u32(qint64 at)
    {
        const QByteArray b = bytes(at, 4);
        return b.size() == 4 ? qFromLittleEndian<quint32>(b.constData()) : 0;
    }
    quint64 u64(qint64 at)
    {
        const QByteArray b = bytes(at, 8);
        return b.size() == 8 ? qFromLittleEndian<quint64>(b.constData()) : 0;
    }
    QByteArray id(qint64 at) { return bytes(at, 4); }

private:
    QFile file_;
    bool open_ = false;
};

bool videoChunk(const QByteArray& id)
{
    return id.size() == 4 && id.at(2) == 'd' && (id.at(3) == 'c' || id.at(3) == 'b');
}

qint64 padded(quint32 size)
{
    return qint64(size) + (size & 1);
}

struct Walk {
    Reader& r;
    AviRiff& out;
    bool videoStreamSeen = false;

    // The chunks of a list's body [from, to); false with out.error set when they do not fit.
    bool list(qint64 from, qint64 to, const QByteArray& type)
    {
        qint64 at = from;
        while (at + 8 <= to) {
            const QByteArray id = r.id(at);
            const quint32 size = r.u32(at + 4);
            const qint64 data = at + 8;
            if (data + size > to) {
                out.error =
                    QStringLiteral("chunk %1 at %2 runs past its list").arg(QString::fromLatin1(id)).arg(at);
                return false;
            }
            if (id == "LIST") {
                if (!list(data + 4, data + size, r.id(data)))
                    return false;
            } else if (type == "movi" && videoChunk(id)) {
                ++out.frames;
            } else if (id == "avih") {
                out.avihFrames = r.u32(data + 16);
            } else if (id == "strh" && r.id(data) == "vids" && !videoStreamSeen) {
                videoStreamSeen = true;
                out.strhLength = r.u32(data + 32);
            } else if (id == "dmlh") {
                out.dmlhFrames = r.u32(data);
            } else if (id == "indx") {
                superIndex(data);
            } else if (id == "idx1") {
                out.idx1Frames = 0;
                for (qint64 e = data; e + 16 <= data + size; e += 16)
                    if (videoChunk(r.id(e)))
                        ++out.idx1Frames;
            }
            at = data + padded(size);
        }
        return true;
    }

    void superIndex(qint64 data)
    {
        const quint32 inUse = r.u32(data + 4);
        if (inUse == 0)
            return;
        out.indxFrames = 0;
        const qint64 entries = data + 24;
        for (quint32 i = 0; i < inUse; ++i) {
            const auto at = static_cast<qint64>(r.u64(entries + 16 * qint64(i)));
            const QByteArray id = r.id(at);
            if (id.size() != 4 || !id.startsWith("ix")) {
                ++out.indxBroken;
                continue;
            }
            out.indxFrames += r.u32(at + 8 + 4);  // nEntriesInUse of the standard index
        }
    }
};

}  // namespace

AviRiff AviRiff::of(const QString& path)
{
    AviRiff out;
    Reader r(path);
    if (!r.open()) {
        out.error = QStringLiteral("cannot open ") + path;
        return out;
    }
    Walk walk{r, out};
    qint64 at = 0;
    while (at < r.size()) {
        const QByteArray type = r.id(at + 8);
        const quint32 size = r.u32(at + 4);
        if (r.id(at) != "RIFF" || (type != (out.parts == 0 ? "AVI " : "AVIX"))) {
            out.error = QStringLiteral("no RIFF part at %1").arg(at);
            return out;
        }
        if (at + 8 + size > r.size()) {
            out.error = QStringLiteral("RIFF part at %1 runs past the end of the file").arg(at);
            return out;
        }
        ++out.parts;
        if (!walk.list(at + 12, at + 8 + size, type))
            return out;
        at += 8 + padded(size);
    }
    out.ok = out.parts > 0;
    if (!out.ok)
        out.error = QStringLiteral("empty file");
    return out;
}

}  // namespace tavix::test
