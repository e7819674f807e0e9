#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace tavix::layers {

// The rooms of a source tree in their order, as its rooms file lists them:
// one line a level from the ground up, peers on one line, '#' comments.
class RoomOrder {
public:
    // Empty with `error` set when the file cannot be read or names a room twice.
    static RoomOrder read(const std::filesystem::path& file, std::string* error);

    bool knows(const std::string& room) const;
    // The line of a room, counted from 0 at the ground; -1 for an unknown room.
    int level(const std::string& room) const;

private:
    std::vector<std::vector<std::string>> levels_;
};

// Every `#include "..."` of the .h and .cpp files under `sourceRoot` that runs
// against the order, one line each: "file:line: includes \"x\" ..." with the
// reason. A file's room is its folder under `sourceRoot`; an include without
// a folder is of the file's own room.
std::vector<std::string> findViolations(const std::filesystem::path& sourceRoot, const RoomOrder& order);

}  // namespace tavix::layers
