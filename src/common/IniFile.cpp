#include "common/IniFile.h"

#include "common/SafeFile.h"

#include <QFile>
#include <QFileInfo>

namespace tavix {

namespace {

bool sameName(const QString& a, const QString& b)
{
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

bool isAsciiBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\v' || c == '\f' || c == '\r';
}

bool hasLineBreak(const QString& text)
{
    return text.contains(QLatin1Char('\n')) || text.contains(QLatin1Char('\r'));
}

}  // namespace

IniFile::Line IniFile::parseLine(const QByteArray& raw, bool firstLine)
{
    Line line{raw, Kind::Other, {}};
    QString text = QString::fromUtf8(raw);
    if (firstLine && text.startsWith(QChar(0xFEFF)))  // byte-order mark
        text.remove(0, 1);
    text = text.trimmed();
    if (text.isEmpty() || text.startsWith(QLatin1Char(';')))
        return line;
    if (text.startsWith(QLatin1Char('['))) {
        const qsizetype close = text.indexOf(QLatin1Char(']'));
        if (close > 0) {
            line.kind = Kind::Section;
            line.name = text.mid(1, close - 1).trimmed();
        }
        return line;
    }
    const qsizetype eq = text.indexOf(QLatin1Char('='));
    if (eq >= 0) {
        line.kind = Kind::Entry;
        line.name = text.left(eq).trimmed();
    }
    return line;
}

QString IniFile::valueOf(const Line& entry)
{
    QString value = QString::fromUtf8(entry.raw.mid(entry.raw.indexOf('=') + 1)).trimmed();
    if (value.size() >= 2 && value.startsWith(QLatin1Char('"')) && value.endsWith(QLatin1Char('"')))
        value = value.mid(1, value.size() - 2);
    if (value.size() > MaxValueLength) {
        qsizetype keep = MaxValueLength;
        if (value[keep - 1].isHighSurrogate())  // never keep half a character
            --keep;
        value.truncate(keep);
    }
    return value;
}

IniFile IniFile::fromText(const QByteArray& text)
{
    IniFile file;
    qsizetype start = 0;
    while (start < text.size()) {
        qsizetype end = text.indexOf('\n', start);
        if (end < 0)
            end = text.size();
        QByteArray raw = text.mid(start, end - start);
        if (raw.endsWith('\r'))
            raw.chop(1);
        file.lines_.push_back(parseLine(raw, file.lines_.empty()));
        start = end + 1;
    }
    return file;
}

std::optional<IniFile> IniFile::load(const QString& path)
{
    QFile file(path);
    if (!file.exists())
        return IniFile{};
    if (QFileInfo(path).isDir() || !file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return fromText(file.readAll());
}

std::optional<std::size_t> IniFile::findSection(const QString& section) const
{
    const QString name = section.trimmed();
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        if (lines_[i].kind == Kind::Section && sameName(lines_[i].name, name))
            return i;
    }
    return std::nullopt;
}

std::size_t IniFile::sectionEnd(std::size_t header) const
{
    std::size_t i = header + 1;
    while (i < lines_.size() && lines_[i].kind != Kind::Section)
        ++i;
    return i;
}

QString IniFile::value(const QString& section, const QString& key) const
{
    const std::optional<std::size_t> header = findSection(section);
    if (!header)
        return {};
    const QString name = key.trimmed();
    const std::size_t end = sectionEnd(*header);
    for (std::size_t i = *header + 1; i < end; ++i) {
        if (lines_[i].kind == Kind::Entry && sameName(lines_[i].name, name))
            return valueOf(lines_[i]);
    }
    return {};
}

bool IniFile::setValue(const QString& section, const QString& key, const QString& value)
{
    const QString sectionName = section.trimmed();
    const QString keyName = key.trimmed();
    if (sectionName.isEmpty() || keyName.isEmpty() || hasLineBreak(section) || hasLineBreak(key) ||
        hasLineBreak(value) || sectionName.contains(QLatin1Char(']')) || keyName.contains(QLatin1Char('=')) ||
        keyName.startsWith(QLatin1Char(';')) || keyName.startsWith(QLatin1Char('[')))
        return false;

    const QByteArray entry = keyName.toUtf8() + '=' + value.toUtf8();
    const std::optional<std::size_t> header = findSection(sectionName);
    if (!header) {
        if (!lines_.empty() && !QString::fromUtf8(lines_.back().raw).trimmed().isEmpty())
            lines_.push_back(Line{});  // a blank line between sections
        lines_.push_back(parseLine('[' + sectionName.toUtf8() + ']', lines_.empty()));
        lines_.push_back(parseLine(entry, false));
        return true;
    }

    const std::size_t end = sectionEnd(*header);
    std::size_t insertAt = *header + 1;
    for (std::size_t i = *header + 1; i < end; ++i) {
        Line& line = lines_[i];
        if (line.kind != Kind::Entry)
            continue;
        if (sameName(line.name, keyName)) {
            // Keep the key as it was written, with its blanks up to the old value.
            qsizetype prefix = line.raw.indexOf('=') + 1;
            qsizetype valueStart = prefix;
            while (valueStart < line.raw.size() && isAsciiBlank(line.raw[valueStart]))
                ++valueStart;
            if (valueStart < line.raw.size())
                prefix = valueStart;
            line.raw = line.raw.left(prefix) + value.toUtf8();
            return true;
        }
        insertAt = i + 1;
    }
    lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(insertAt), parseLine(entry, false));
    return true;
}

QByteArray IniFile::toText() const
{
    QByteArray text;
    for (const Line& line : lines_)
        text += line.raw + "\r\n";
    return text;
}

bool IniFile::save(const QString& path, const PartWrittenHook& partWritten) const
{
    return SafeFile::write(path, toText(), partWritten) == 0;
}

QString IniFile::read(const QString& path, const QString& section, const QString& key)
{
    const std::optional<IniFile> file = load(path);
    return file ? file->value(section, key) : QString();
}

bool IniFile::write(const QString& path, const QString& section, const QString& key, const QString& value,
                    const PartWrittenHook& partWritten)
{
    std::optional<IniFile> file = load(path);
    return file && file->setValue(section, key, value) && file->save(path, partWritten);
}

}  // namespace tavix
