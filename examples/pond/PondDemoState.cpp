#include "PondDemoState.h"

#include <array>
#include <fstream>
#include <string_view>
#include <system_error>
#include <utility>

#include <nlohmann/json.hpp>

namespace pond {
namespace {

namespace fs = std::filesystem;

// Growth of each topic, in no pattern, so that every size shows somewhere
// and neighbours differ.
constexpr std::array<std::pair<std::string_view, int>, 17> demoGrowth = {{
    {"alcohol", 14},
    {"smoking", 9},
    {"drugs", 3},
    {"sex", 12},
    {"porn", 0},
    {"overeating", 6},
    {"social_media", 11},
    {"doomscrolling", 1},
    {"phone", 7},
    {"shopping", 14},
    {"money", 4},
    {"control", 10},
    {"approval", 2},
    {"past_relationship", 13},
    {"craving", 5},
    {"aversion", 8},
    {"delusion", 14},
}};

nlohmann::json demoPractice()
{
    nlohmann::json selected = nlohmann::json::array();
    nlohmann::json lotuses = nlohmann::json::object();
    for (const auto& [id, growth] : demoGrowth) {
        selected.push_back(id);
        // More moments than growth: some were lost to idle days once.
        lotuses[std::string(id)] = {{"moments", growth * 3 + 2}, {"growthMoments", growth}};
    }
    return {
        {"version", 1},
        {"onboarded", true},
        {"selected", std::move(selected)},
        {"lotuses", std::move(lotuses)},
        {"practiceDays",
            {"2025-03-10", "2025-03-11", "2025-03-13", "2025-03-14", "2025-03-17", "2025-03-18", "2025-03-19"}},
        {"language", "system"},
        {"hintSeen", true},
        {"reminderEnabled", false},
        {"reminderHour", 20},
        {"reminderMinute", 0},
        {"waterSoundEnabled", true},
        {"bellSoundEnabled", true},
    };
}

} // namespace

fs::path PondDemoState::write(const fs::path& dataHome)
{
    const fs::path folder = dataHome / "app.velmora.mac";
    fs::path file = folder / "practice.json";
    fs::create_directories(folder);
    if (fs::exists(file))
        throw fs::filesystem_error(
            "a practice is there already; it is left as it is", file, std::make_error_code(std::errc::file_exists));
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out << demoPractice().dump();
    out.close();
    if (!out)
        throw fs::filesystem_error("cannot write the demo practice", file, std::make_error_code(std::errc::io_error));
    return file;
}

} // namespace pond
