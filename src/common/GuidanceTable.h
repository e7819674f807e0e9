#pragma once

#include <QString>
#include <array>

namespace tavix {

class ErrorLog;

// The two-line operating hints, by guidance number 0 to 1000.
class GuidanceTable {
public:
    static constexpr int kMaxNumber = 1000;

    // Reads the guidance file; logs "ReadGuidanceData Error.(n)" and returns
    // false on any error (missing file, number outside 0..1000, bad record).
    bool ReadGuidanceData(const QString& path, const ErrorLog& log);

    // Parses records of number, line 0, line 1; throws RunError. The table is
    // cleared first, so on an error it holds the records read before it.
    void parse(const QString& text);

    // Line 0 or 1 of a number; "" for numbers not in the file.
    QString line(int number, int index) const;

private:
    std::array<std::array<QString, 2>, kMaxNumber + 1> lines_;
};

}  // namespace tavix
