// The JSON form of the practice record: the content of the state file.

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "PracticeState.h"
#include "StrictJSON.h"

namespace velmora {

namespace {

namespace strict = StrictJSON;
using nlohmann::json;
// The state is written by hand into one string: building the library's
// tree first cost an allocation per practice day. The output is what the
// tree's compact dump() gave: members in field order, no spaces.

// Printable ASCII that needs no escape: what day keys, topic IDs and
// language codes always are.
bool isPlain(std::string_view string)
{
    return std::all_of(
        string.begin(), string.end(), [](char c) { return c >= ' ' && c <= '~' && c != '"' && c != '\\'; });
}

void appendString(std::string& out, std::string_view string)
{
    if (isPlain(string)) {
        out += '"';
        out += string;
        out += '"';
        return;
    }
    // Anything else is escaped (and invalid UTF-8 refused, type_error 316)
    // by the library itself, exactly as its tree would have.
    out += json(string).dump();
}

void appendInteger(std::string& out, std::int64_t value)
{
    std::array<char, 24> digits{};
    const auto [last, error] = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    (void)error; // 24 characters hold any 64-bit integer with its sign.
    out.append(digits.data(), last);
}

void appendBoolean(std::string& out, bool value)
{
    out += value ? "true" : "false";
}

// `"name":`, for member names that are plain by construction.
void appendName(std::string& out, std::string_view name)
{
    out += '"';
    out += name;
    out += "\":";
}

void appendStrings(std::string& out, const PracticeState::StringSet& strings)
{
    // The common case, every element plain, is sized once and copied into
    // place: appending piece by piece costs more than the thousands of
    // practice days themselves.
    std::size_t length = 2;
    for (const std::string& string : strings) {
        if (!isPlain(string)) {
            length = 0;
            break;
        }
        length += string.size() + 3;
    }
    if (length != 0) {
        if (!strings.empty())
            --length; // No comma after the last.
        const std::size_t start = out.size();
        out.resize(start + length);
        char* next = out.data() + start;
        *next++ = '[';
        for (const std::string& string : strings) {
            if (next != out.data() + start + 1)
                *next++ = ',';
            *next++ = '"';
            next = std::copy(string.begin(), string.end(), next);
            *next++ = '"';
        }
        *next = ']';
        return;
    }
    out += '[';
    bool first = true;
    for (const std::string& string : strings) {
        if (!first)
            out += ',';
        first = false;
        appendString(out, string);
    }
    out += ']';
}

void appendLotus(std::string& out, const LotusProgress& lotus)
{
    out += '{';
    appendName(out, "moments");
    appendInteger(out, lotus.moments);
    if (lotus.lastDay) {
        out += ',';
        appendName(out, "lastDay");
        appendString(out, *lotus.lastDay);
    }
    if (lotus.growthMoments) {
        out += ',';
        appendName(out, "growthMoments");
        appendInteger(out, *lotus.growthMoments);
    }
    out += '}';
}

// Slightly above the final length for plain strings, so the string grows at
// most once more for escapes.
std::size_t estimatedLength(const PracticeState& state)
{
    constexpr std::size_t fixedMembers = 320;
    constexpr std::size_t perString = 3; // Quotes and comma.
    constexpr std::size_t perLotus = 80;
    std::size_t length
        = fixedMembers + state.language.size() + (state.wiltWeekSeen ? state.wiltWeekSeen->size() + 20 : 0);
    for (const std::string& id : state.selected)
        length += id.size() + perString;
    for (const auto& [topicID, lotus] : state.lotuses)
        length += topicID.size() + perLotus + (lotus.lastDay ? lotus.lastDay->size() : 0);
    constexpr std::size_t dayKeyLength = 10;
    return length + state.practiceDays.size() * (dayKeyLength + perString);
}

PracticeState::StringSet decodeStrings(const json& object, std::string_view key)
{
    const json& array = strict::array(strict::member(object, key), key);
    const std::string where = std::string(key) + " element";
    std::vector<std::string> strings;
    strings.reserve(array.size());
    for (const json& element : array)
        strings.push_back(strict::string(element, where));
    // Sorted once here: inserting one by one would move the tail each time
    // for a file that lists its strings in any order but ascending.
    return PracticeState::StringSet(std::move(strings));
}

std::int64_t decodeInteger(const json& object, std::string_view key)
{
    return strict::integer(strict::member(object, key), key);
}

bool decodeBoolean(const json& object, std::string_view key)
{
    return strict::boolean(strict::member(object, key), key);
}

LotusProgress decodeLotus(const json& value, const std::string& where)
{
    strict::object(value, where);
    LotusProgress lotus;
    lotus.moments = strict::integer(strict::member(value, "moments"), where + ".moments");
    if (const json* lastDay = strict::optionalMember(value, "lastDay"))
        lotus.lastDay = strict::string(*lastDay, where + ".lastDay");
    if (const json* growthMoments = strict::optionalMember(value, "growthMoments"))
        lotus.growthMoments = strict::integer(*growthMoments, where + ".growthMoments");
    return lotus;
}

} // namespace

std::string PracticeState::toJSON() const
{
    std::string out;
    out.reserve(estimatedLength(*this));
    out += '{';
    appendName(out, "version");
    appendInteger(out, version);
    out += ',';
    appendName(out, "onboarded");
    appendBoolean(out, onboarded);
    out += ',';
    appendName(out, "selected");
    appendStrings(out, selected);
    out += ',';
    appendName(out, "lotuses");
    out += '{';
    bool firstLotus = true;
    for (const auto& [topicID, lotus] : lotuses) {
        if (!firstLotus)
            out += ',';
        firstLotus = false;
        appendString(out, topicID);
        out += ':';
        appendLotus(out, lotus);
    }
    out += "},";
    appendName(out, "practiceDays");
    appendStrings(out, practiceDays);
    out += ',';
    appendName(out, "language");
    appendString(out, language);
    out += ',';
    appendName(out, "hintSeen");
    appendBoolean(out, hintSeen);
    if (wiltWeekSeen) {
        out += ',';
        appendName(out, "wiltWeekSeen");
        appendString(out, *wiltWeekSeen);
    }
    out += ',';
    appendName(out, "reminderEnabled");
    appendBoolean(out, reminderEnabled);
    out += ',';
    appendName(out, "reminderHour");
    appendInteger(out, reminderHour);
    out += ',';
    appendName(out, "reminderMinute");
    appendInteger(out, reminderMinute);
    out += ',';
    appendName(out, "waterSoundEnabled");
    appendBoolean(out, waterSoundEnabled);
    out += ',';
    appendName(out, "bellSoundEnabled");
    appendBoolean(out, bellSoundEnabled);
    out += '}';
    return out;
}

PracticeState PracticeState::fromJSON(std::string_view text)
{
    const json document = strict::parse(text);
    const json& root = strict::object(document, "the practice state");

    PracticeState state;
    state.version = decodeInteger(root, "version");
    state.onboarded = decodeBoolean(root, "onboarded");
    state.selected = decodeStrings(root, "selected");
    const json& lotusObject = strict::object(strict::member(root, "lotuses"), "lotuses");
    for (const auto& [topicID, lotus] : lotusObject.items())
        state.lotuses.emplace(topicID, decodeLotus(lotus, "lotuses." + topicID));
    state.practiceDays = decodeStrings(root, "practiceDays");
    state.language = strict::string(strict::member(root, "language"), "language");
    state.hintSeen = decodeBoolean(root, "hintSeen");
    if (const json* wiltWeekSeen = strict::optionalMember(root, "wiltWeekSeen"))
        state.wiltWeekSeen = strict::string(*wiltWeekSeen, "wiltWeekSeen");
    state.reminderEnabled = decodeBoolean(root, "reminderEnabled");
    state.reminderHour = decodeInteger(root, "reminderHour");
    state.reminderMinute = decodeInteger(root, "reminderMinute");
    state.waterSoundEnabled = decodeBoolean(root, "waterSoundEnabled");
    state.bellSoundEnabled = decodeBoolean(root, "bellSoundEnabled");
    return state;
}

} // namespace velmora
