#pragma once

#include <stdexcept>
#include <string>

namespace tavix {

// The classic run-time error numbers, which appear in the program's log lines
// ("ReadStringTableData Error.(53)").
namespace err {
constexpr int InvalidCall = 5;
constexpr int Overflow = 6;
constexpr int SubscriptOutOfRange = 9;
constexpr int TypeMismatch = 13;
constexpr int BadFileName = 52;
constexpr int FileNotFound = 53;
constexpr int InputPastEnd = 62;
constexpr int DiskFull = 61;
constexpr int PathFileAccess = 75;
constexpr int PathNotFound = 76;
}  // namespace err

// A run-time error raised inside a routine and caught by that routine's guard,
// which logs the number. It never leaves the routine that owns the guard.
class RunError : public std::runtime_error {
public:
    explicit RunError(int number)
        : std::runtime_error("run-time error " + std::to_string(number)), number_(number)
    {
    }
    int number() const { return number_; }

private:
    int number_;
};

}  // namespace tavix
