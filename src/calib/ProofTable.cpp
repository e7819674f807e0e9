#include "calib/ProofTable.h"

#include "common/SafeFile.h"

#include "calib/ProofNumber.h"
#include "common/FreeFieldReader.h"
#include "common/RunError.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cmath>

namespace tavix {

namespace {

double numberField(FreeFieldReader& reader)
{
    double value = 0;
    if (!ProofNumber::parse(reader.next(), value))
        throw RunError(err::TypeMismatch);
    return value;
}

QString quoted(QString text)
{
    text.replace(QLatin1Char('"'), QLatin1Char('\''));
    text.replace(QLatin1Char('\r'), QLatin1Char(' '));
    text.replace(QLatin1Char('\n'), QLatin1Char(' '));
    return QLatin1Char('"') + text + QLatin1Char('"');
}

}  // namespace

ProofTable::ProofTable()
{
    for (int i = 0; i < Size; ++i)
        entries_[i] = defaultEntry(i);
}

ProofEntry ProofTable::defaultEntry(int index)
{
    ProofEntry e;
    e.Name = QStringLiteral("Proof") + QString::number(index + 1);
    return e;
}

const ProofEntry& ProofTable::at(int index) const
{
    if (index < 0 || index >= Size)
        throw RunError(err::SubscriptOutOfRange);
    return entries_[index];
}

ProofEntry& ProofTable::at(int index)
{
    if (index < 0 || index >= Size)
        throw RunError(err::SubscriptOutOfRange);
    return entries_[index];
}

QStringList ProofTable::names() const
{
    QStringList list;
    for (const ProofEntry& e : entries_)
        list << e.Name;
    return list;
}

bool ProofTable::ReadProofData(const QString& path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile()) {
        lastError_ = QFileInfo::exists(path) ? err::PathFileAccess : err::FileNotFound;
        return false;
    }
    if (!file.open(QIODevice::ReadOnly)) {
        lastError_ = err::PathFileAccess;
        return false;
    }
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        lastError_ = err::PathFileAccess;
        return false;
    }
    QString text = QString::fromUtf8(bytes);
    // Editors on other systems like to put a byte-order mark in front.
    if (text.startsWith(QChar(0xFEFF)))
        text.remove(0, 1);
    return parse(text);
}

bool ProofTable::parse(const QString& text)
{
    // Fill a copy, so that a malformed file leaves the table as it was.
    std::array<ProofEntry, Size> read = entries_;
    try {
        FreeFieldReader reader(text);
        for (int i = 0; i < Size; ++i) {
            ProofEntry& e = read[i];
            if (reader.atEnd()) {
                const double yValue = e.YValue;
                const qint16 axisOption = e.AxisOption;
                e = defaultEntry(i);
                e.YValue = yValue;
                e.AxisOption = axisOption;
                continue;
            }
            e.Name = reader.next();
            e.XFactor = numberField(reader);
            e.YFactor = numberField(reader);
            e.Unit = reader.next();
            e.XValue = numberField(reader);
            e.YValue = numberField(reader);
        }
    } catch (const RunError& error) {
        lastError_ = error.number();
        return false;
    }
    entries_ = read;
    lastError_ = 0;
    return true;
}

QByteArray ProofTable::toFileText() const
{
    QString text;
    for (const ProofEntry& e : entries_) {
        text += quoted(e.Name) + QLatin1Char(',') + ProofNumber::format(e.XFactor) + QLatin1Char(',') +
                ProofNumber::format(e.YFactor) + QLatin1Char(',') + quoted(e.Unit) + QLatin1Char(',') +
                ProofNumber::format(e.XValue) + QLatin1Char(',') + ProofNumber::format(e.YValue) +
                QStringLiteral("\r\n");
    }
    return text.toUtf8();
}

bool ProofTable::write(const QString& path) const
{
    for (const ProofEntry& e : entries_) {
        if (!std::isfinite(e.XFactor) || !std::isfinite(e.YFactor) || !std::isfinite(e.XValue) ||
            !std::isfinite(e.YValue)) {
            lastError_ = err::Overflow;
            return false;
        }
    }
    lastError_ = SafeFile::write(path, toFileText());
    return lastError_ == 0;
}

}  // namespace tavix
