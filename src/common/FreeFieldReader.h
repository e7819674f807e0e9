#pragma once

#include <QString>
#include <QStringList>

namespace tavix {

// Reads comma-separated fields in the free-field style of the program's data
// files: a field is either bare (trimmed, up to the next comma or line end) or
// enclosed in double quotes, in which case it may hold commas. Line ends
// separate fields like commas; blank lines are skipped. Accepts LF and CR LF.
class FreeFieldReader {
public:
    explicit FreeFieldReader(QString text);

    // True when no further field can be read (only blanks and line ends left).
    bool atEnd() const;

    // The next field. Throws RunError(InputPastEnd) when there is none.
    QString next();

private:
    void skipBlanks();
    QString text_;
    qsizetype pos_ = 0;
    bool afterComma_ = false;
};

}  // namespace tavix
