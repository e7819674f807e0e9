#include "calib/ProofResolutions.h"

#include "common/ErrorLog.h"
#include "common/SafeFile.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStringList>
#include <cmath>

namespace tavix {

namespace {

// Wider than any sensor, narrow enough that width x height stays an int.
constexpr int kLargestSide = 65535;

}  // namespace

QString ProofResolutions::pathBeside(const QString& proofFilePath)
{
    return proofFilePath + QStringLiteral(".res");
}

QSize ProofResolutions::at(int index) const
{
    return geometry(index).size;
}

const PictureGeometry& ProofResolutions::geometry(int index) const
{
    static const PictureGeometry unknown;
    return index >= 0 && index < Size ? entries_[static_cast<size_t>(index)] : unknown;
}

void ProofResolutions::set(int index, const PictureGeometry& made)
{
    if (index >= 0 && index < Size)
        entries_[static_cast<size_t>(index)] = made.size.isEmpty() ? PictureGeometry() : made;
}

void ProofResolutions::read(const QString& path, const ErrorLog& log)
{
    entries_.fill(PictureGeometry());
    if (!QFileInfo::exists(path))
        return;
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly)) {
        log.write(QStringLiteral("Proof Resolution File Read Error.(0)"));
        return;
    }
    QString text = QString::fromUtf8(file.readAll());
    if (text.startsWith(QChar(0xFEFF)))
        text.remove(0, 1);
    if (!parse(text))
        log.write(QStringLiteral("Proof Resolution File Read Error.(%1)").arg(badLine_));
}

namespace {

std::optional<double> positive(const QString& text)
{
    bool ok = false;
    const double value = text.toDouble(&ok);
    return ok && std::isfinite(value) && value > 0 ? std::optional<double>(value) : std::nullopt;
}

std::optional<QRectF> field(const QString& text)
{
    const QStringList parts = text.split(QLatin1Char(','));
    if (parts.size() != 4)
        return std::nullopt;
    double v[4] = {};
    for (int i = 0; i < 4; ++i) {
        bool ok = false;
        v[i] = parts[i].toDouble(&ok);
        if (!ok || !std::isfinite(v[i]))
            return std::nullopt;
    }
    if (v[2] <= 0 || v[3] <= 0)
        return std::nullopt;
    return QRectF(v[0], v[1], v[2], v[3]);
}

// What follows the resolution: "px=2 field=0,0,2560,2048 cam=driver/id".
// Keys this program does not know are passed over, for files of later versions.
bool parseGeometry(const QString& rest, PictureGeometry& made)
{
    static const QRegularExpression kBlank(QStringLiteral("\\s"));
    std::optional<double> pixel;
    std::optional<QRectF> area;
    QString text = rest.trimmed();
    while (!text.isEmpty()) {
        if (text.startsWith(QLatin1String("cam="))) {
            made.camera = text.mid(4).trimmed();
            break;
        }
        const qsizetype blank = text.indexOf(kBlank);
        const QString token = blank < 0 ? text : text.left(blank);
        text = blank < 0 ? QString() : text.mid(blank).trimmed();
        const qsizetype equals = token.indexOf(QLatin1Char('='));
        if (equals < 1)
            return false;
        const QString key = token.left(equals);
        const QString value = token.mid(equals + 1);
        if (key == QLatin1String("px")) {
            if (!(pixel = positive(value)))
                return false;
        } else if (key == QLatin1String("field")) {
            if (!(area = field(value)))
                return false;
        }
    }
    if (pixel)
        made.mode = ModeGeometry{*pixel, area.value_or(QRectF())};
    return true;
}

QByteArray number(double value)
{
    return QByteArray::number(value, 'g', 17);
}

}  // namespace

bool ProofResolutions::parse(const QString& text)
{
    static const QRegularExpression kLine(QStringLiteral("^(\\d{1,5})\\s*[xX]\\s*(\\d{1,5})(?:\\s+(.*))?$"));
    std::array<PictureGeometry, Size> read{};
    const QStringList lines = text.split(QLatin1Char('\n'));
    for (int i = 0; i < Size && i < lines.size(); ++i) {
        const QString line = lines[i].trimmed();
        if (line.isEmpty())
            continue;
        const QRegularExpressionMatch m = kLine.match(line);
        const int width = m.hasMatch() ? m.captured(1).toInt() : 0;
        const int height = m.hasMatch() ? m.captured(2).toInt() : 0;
        PictureGeometry made{QSize(width, height)};
        if (width < 1 || height < 1 || width > kLargestSide || height > kLargestSide ||
            !parseGeometry(m.captured(3), made)) {
            // One bad line makes every line doubtful: better no rescale than a wrong one.
            entries_.fill(PictureGeometry());
            badLine_ = i + 1;
            return false;
        }
        read[static_cast<size_t>(i)] = made;
    }
    entries_ = read;
    badLine_ = 0;
    return true;
}

QByteArray ProofResolutions::toFileText() const
{
    QByteArray text;
    for (const PictureGeometry& made : entries_) {
        if (made.size.isValid() && !made.size.isEmpty())
            text += QByteArray::number(made.size.width()) + 'x' + QByteArray::number(made.size.height());
        if (made.size.isValid() && made.mode) {
            const QRectF& f = made.mode->field;
            text += " px=" + number(made.mode->pixelSize);
            if (!f.isEmpty())
                text += " field=" + number(f.x()) + ',' + number(f.y()) + ',' + number(f.width()) + ',' +
                        number(f.height());
            // The name ends the line, so it may hold blanks but never a line break.
            QString camera = made.camera;
            camera.replace(QLatin1Char('\r'), QLatin1Char(' ')).replace(QLatin1Char('\n'), QLatin1Char(' '));
            if (!camera.trimmed().isEmpty())
                text += " cam=" + camera.trimmed().toUtf8();
        }
        text += "\r\n";
    }
    return text;
}

int ProofResolutions::write(const QString& path) const
{
    return SafeFile::write(path, toFileText());
}

}  // namespace tavix
