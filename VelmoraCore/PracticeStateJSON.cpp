// The JSON form of the practice record: the content of the state file.

#include <nlohmann/json.hpp>

#include "PracticeState.h"
#include "StrictJSON.h"

namespace velmora {

namespace {

namespace strict = StrictJSON;
using nlohmann::json;
// Insertion order, so the file lists its members in the record's field order.
using ordered_json = nlohmann::ordered_json;

ordered_json encodeLotus(const LotusProgress& lotus)
{
    ordered_json encoded = ordered_json::object();
    encoded["moments"] = lotus.moments;
    if (lotus.lastDay)
        encoded["lastDay"] = *lotus.lastDay;
    if (lotus.growthMoments)
        encoded["growthMoments"] = *lotus.growthMoments;
    return encoded;
}

ordered_json encodeStrings(const PracticeState::StringSet& strings)
{
    ordered_json encoded = ordered_json::array();
    for (const std::string& string : strings)
        encoded.push_back(string);
    return encoded;
}

PracticeState::StringSet decodeStrings(const json& object, std::string_view key)
{
    const json& array = strict::array(strict::member(object, key), key);
    PracticeState::StringSet strings;
    for (const json& element : array)
        strings.insert(strict::string(element, std::string(key) + " element"));
    return strings;
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
    ordered_json encoded = ordered_json::object();
    encoded["version"] = version;
    encoded["onboarded"] = onboarded;
    encoded["selected"] = encodeStrings(selected);
    ordered_json& lotusObject = encoded["lotuses"] = ordered_json::object();
    for (const auto& [topicID, lotus] : lotuses)
        lotusObject[topicID] = encodeLotus(lotus);
    encoded["practiceDays"] = encodeStrings(practiceDays);
    encoded["language"] = language;
    encoded["hintSeen"] = hintSeen;
    if (wiltWeekSeen)
        encoded["wiltWeekSeen"] = *wiltWeekSeen;
    encoded["reminderEnabled"] = reminderEnabled;
    encoded["reminderHour"] = reminderHour;
    encoded["reminderMinute"] = reminderMinute;
    encoded["waterSoundEnabled"] = waterSoundEnabled;
    encoded["bellSoundEnabled"] = bellSoundEnabled;
    return encoded.dump();
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
