#pragma once

#include "calib/ProofEntry.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <array>

namespace tavix {

// The fixed table of calibration entries and its file.
//
// File: one line per entry in index order, six comma-separated fields
// Name, XFactor, YFactor, Unit, XValue, YValue; text fields in double quotes,
// numbers in the form of ProofNumber::format; UTF-8, CR LF.
class ProofTable {
public:
    static constexpr int Size = 20;

    // Every entry as a missing line would leave it: "Proof1" … "Proof20", all 0.
    ProofTable();

    // Throw RunError(SubscriptOutOfRange) outside 0..19.
    const ProofEntry& at(int index) const;
    ProofEntry& at(int index);

    std::array<ProofEntry, Size>& entries() { return entries_; }
    const std::array<ProofEntry, Size>& entries() const { return entries_; }

    // The names in index order, as the selection list shows them.
    QStringList names() const;

    // Fills the table from the calibration file. False when the file is
    // missing, unreadable or malformed (see parse); the table is then left as
    // it was and lastError() tells why.
    bool ReadProofData(const QString& path);

    // Fills the table from the text of a calibration file. The fields are read
    // one record after another, line ends separating like commas (LF or CR LF),
    // text fields quoted or bare. Entries past the end of the text get the
    // default name "Proof" + number, factors, XValue and unit cleared; their
    // YValue stays as it was. Records after the twentieth are ignored.
    // Malformed, giving false and leaving the table untouched:
    //  - the text ends inside a record (fewer than six fields left),
    //  - a numeric field that is not a number or beyond the range of a double
    //    (ProofNumber::parse; an empty numeric field counts as 0).
    bool parse(const QString& text);

    // The whole file: 20 lines of UTF-8 with CR LF ends. A double quote in a
    // name or unit would end the field early, so it is written as ' ; a line
    // break would split the record, so it is written as a blank.
    QByteArray toFileText() const;

    // Rewrites the whole file through a temporary file that replaces the old
    // one only when complete, so a failed write leaves the old file whole.
    // False when the file cannot be written or a number is infinite or NaN
    // (the file could not be read back); the old file is then untouched.
    bool write(const QString& path) const;

    // The run-time error number of the last failed read or write, 0 after success.
    int lastError() const { return lastError_; }

    static ProofEntry defaultEntry(int index);

private:
    std::array<ProofEntry, Size> entries_;
    mutable int lastError_ = 0;
};

}  // namespace tavix
