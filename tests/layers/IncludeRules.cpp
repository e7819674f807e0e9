#include "IncludeRules.h"

#include <algorithm>
#include <fstream>
#include <regex>
#include <sstream>

namespace fs = std::filesystem;

namespace tavix::layers {

RoomOrder RoomOrder::read(const fs::path& file, std::string* error)
{
    RoomOrder order;
    std::ifstream in(file);
    if (!in) {
        *error = "cannot read " + file.string();
        return {};
    }
    std::string line;
    while (std::getline(in, line)) {
        line = line.substr(0, line.find('#'));
        std::istringstream words(line);
        std::vector<std::string> rooms;
        for (std::string room; words >> room;) {
            if (order.knows(room) || std::find(rooms.begin(), rooms.end(), room) != rooms.end()) {
                *error = "room " + room + " listed twice in " + file.string();
                return {};
            }
            rooms.push_back(room);
        }
        if (!rooms.empty())
            order.levels_.push_back(rooms);
    }
    return order;
}

bool RoomOrder::knows(const std::string& room) const
{
    return level(room) >= 0;
}

int RoomOrder::level(const std::string& room) const
{
    for (std::size_t i = 0; i < levels_.size(); ++i)
        if (std::find(levels_[i].begin(), levels_[i].end(), room) != levels_[i].end())
            return static_cast<int>(i);
    return -1;
}

namespace {

std::string roomOf(const std::string& relativePath)
{
    const auto slash = relativePath.rfind('/');
    return slash == std::string::npos ? std::string() : relativePath.substr(0, slash);
}

}  // namespace

std::vector<std::string> findViolations(const fs::path& sourceRoot, const RoomOrder& order)
{
    static const std::regex includeLine(R"(^\s*#\s*include\s*"([^"]+)\")");
    std::vector<fs::path> files;
    for (const auto& entry : fs::recursive_directory_iterator(sourceRoot)) {
        const auto ext = entry.path().extension();
        if (entry.is_regular_file() && (ext == ".h" || ext == ".cpp"))
            files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());

    std::vector<std::string> violations;
    for (const fs::path& path : files) {
        const std::string file = fs::relative(path, sourceRoot).generic_string();
        const std::string room = roomOf(file);
        if (!order.knows(room)) {
            violations.push_back(file + ": its folder '" + room + "' is no room of the rooms file");
            continue;
        }
        std::ifstream in(path);
        std::string line;
        for (int number = 1; std::getline(in, line); ++number) {
            std::smatch match;
            if (!std::regex_search(line, match, includeLine))
                continue;
            const std::string included = match[1];
            const std::string target = included.find('/') == std::string::npos ? room : roomOf(included);
            if (target == room)
                continue;
            const std::string where = file + ":" + std::to_string(number) + ": includes \"" + included + "\"";
            if (!order.knows(target))
                violations.push_back(where + ", of '" + target + "', which is no room");
            else if (order.level(target) == order.level(room))
                violations.push_back(where + ": '" + room + "' and '" + target + "' are peers");
            else if (order.level(target) > order.level(room))
                violations.push_back(where + ": '" + target + "' stands above '" + room + "'");
        }
    }
    return violations;
}

}  // namespace tavix::layers
