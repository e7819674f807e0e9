#pragma once

#include <QByteArray>
#include <QString>
#include "common/SafeFile.h"

#include <functional>
#include <optional>
#include <vector>

namespace tavix {

// An INI file read and written the way the program's settings file has always
// been handled: "[SECTION]" heads and "KEY=value" entries; section and key
// names trimmed and matched without case; values trimmed, one pair of
// enclosing double quotes removed and at most 254 characters kept (what a
// 255-character buffer holds); lines starting with ";" are comments; the first
// matching section and the first matching key win. A missing or empty value
// reads as an empty string ("nothing").
//
// Writing changes one value and keeps every other line byte for byte; the
// whole file is replaced through a temporary file, so a crash during the write
// leaves the old file whole. Files are written in UTF-8 with CR LF line ends;
// LF and CR LF are both read.
class IniFile {
public:
    // The longest value a read returns.
    static constexpr qsizetype MaxValueLength = 254;

    // Called by save() after part of the content was written and before the
    // new file replaces the old one. Lets a test end the process mid-write.
    using PartWrittenHook = SafeFile::PartWrittenHook;

    IniFile() = default;

    // Parses file content held in memory.
    static IniFile fromText(const QByteArray& text);

    // A missing file gives an empty IniFile; nullopt when the file exists but
    // cannot be read.
    static std::optional<IniFile> load(const QString& path);

    QString value(const QString& section, const QString& key) const;

    // Replaces the first matching entry's value in place; a key not yet in its
    // section is added after the section's last entry, a missing section at the
    // end. False, and nothing changed, for names or values the file cannot hold
    // (line breaks, an empty name, "]" in a section name, "=" in a key name).
    bool setValue(const QString& section, const QString& key, const QString& value);

    // The content as save() writes it: every line ended by CR LF.
    QByteArray toText() const;

    bool save(const QString& path, const PartWrittenHook& partWritten = {}) const;

    // One key read from or written to a file, reading the file each time.
    static QString read(const QString& path, const QString& section, const QString& key);
    static bool write(const QString& path, const QString& section, const QString& key, const QString& value,
                      const PartWrittenHook& partWritten = {});

private:
    enum class Kind { Other, Section, Entry };
    struct Line {
        QByteArray raw;  // as read, without its line end
        Kind kind = Kind::Other;
        QString name;  // section or key name, trimmed
    };

    static Line parseLine(const QByteArray& raw, bool firstLine);
    static QString valueOf(const Line& entry);
    std::optional<std::size_t> findSection(const QString& section) const;
    std::size_t sectionEnd(std::size_t header) const;

    std::vector<Line> lines_;
};

}  // namespace tavix
