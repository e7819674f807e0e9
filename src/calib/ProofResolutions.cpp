#include "calib/ProofResolutions.h"

#include "common/ErrorLog.h"
#include "common/SafeFile.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

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
    return index >= 0 && index < Size ? sizes_[static_cast<size_t>(index)] : QSize();
}

void ProofResolutions::set(int index, QSize size)
{
    if (index >= 0 && index < Size)
        sizes_[static_cast<size_t>(index)] = size.isEmpty() ? QSize() : size;
}

void ProofResolutions::read(const QString& path, const ErrorLog& log)
{
    sizes_.fill(QSize());
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

bool ProofResolutions::parse(const QString& text)
{
    static const QRegularExpression kSize(QStringLiteral("^\\s*(\\d{1,5})\\s*[xX]\\s*(\\d{1,5})\\s*$"));
    std::array<QSize, Size> read{};
    const QStringList lines = text.split(QLatin1Char('\n'));
    for (int i = 0; i < Size && i < lines.size(); ++i) {
        const QString line = lines[i].trimmed();
        if (line.isEmpty())
            continue;
        const QRegularExpressionMatch m = kSize.match(line);
        const int width = m.hasMatch() ? m.captured(1).toInt() : 0;
        const int height = m.hasMatch() ? m.captured(2).toInt() : 0;
        if (width < 1 || height < 1 || width > kLargestSide || height > kLargestSide) {
            // One bad line makes every line doubtful: better no rescale than a wrong one.
            sizes_.fill(QSize());
            badLine_ = i + 1;
            return false;
        }
        read[static_cast<size_t>(i)] = QSize(width, height);
    }
    sizes_ = read;
    badLine_ = 0;
    return true;
}

QByteArray ProofResolutions::toFileText() const
{
    QByteArray text;
    for (const QSize& size : sizes_) {
        if (size.isValid() && !size.isEmpty())
            text += QByteArray::number(size.width()) + 'x' + QByteArray::number(size.height());
        text += "\r\n";
    }
    return text;
}

int ProofResolutions::write(const QString& path) const
{
    return SafeFile::write(path, toFileText());
}

}  // namespace tavix
