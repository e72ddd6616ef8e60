#include "PondSnapshot.h"

#include <algorithm>
#include <cmath>

#include <nlohmann/json.hpp>

namespace pond {
namespace {

using nlohmann::json;

// The water's own muted tone: what a lotus wears when its colour is broken.
constexpr PondColor mutedColor = PondColor::fromBytes(0xA9, 0xB8, 0xAD);

json parsed(std::string_view text, const char* what)
{
    json value = json::parse(text, nullptr, false);
    if (value.is_discarded())
        throw PondSnapshotError(std::string(what) + " is not JSON");
    if (!value.is_object())
        throw PondSnapshotError(std::string(what) + " is not a JSON object");
    return value;
}

const json& member(const json& object, const char* key, json::value_t type, const char* what)
{
    const auto found = object.find(key);
    // Any number will do where a number is wanted: JSON does not tell 1
    // from 1.0, and neither do we.
    const bool matches = found != object.end()
        && (found->type() == type || (type == json::value_t::number_integer && found->is_number()));
    if (!matches)
        throw PondSnapshotError(std::string(what) + " has no " + (type == json::value_t::string ? "text" : type == json::value_t::array ? "list"
                                                                                                                                        : "number")
            + " \"" + key + "\"");
    return *found;
}

std::string optionalText(const json& object, const char* key)
{
    const auto found = object.find(key);
    return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

int clampedGrowth(const json& value)
{
    const double growth = value.get<double>();
    if (!std::isfinite(growth))
        return 0;
    return static_cast<int>(std::clamp(std::round(growth), 0.0, static_cast<double>(PondSnapshot::maximumGrowth)));
}

PondTopic topic(const json& object)
{
    if (!object.is_object())
        throw PondSnapshotError("a topic is not a JSON object");
    PondTopic read;
    read.id = member(object, "id", json::value_t::string, "a topic").get<std::string>();
    if (read.id.empty())
        throw PondSnapshotError("a topic has an empty \"id\"");
    read.title = member(object, "title", json::value_t::string, "a topic").get<std::string>();
    read.growthMoments = clampedGrowth(member(object, "growthMoments", json::value_t::number_integer, "a topic"));
    const auto moments = object.find("moments");
    if (moments != object.end() && moments->is_number())
        read.moments = std::max(0LL, static_cast<long long>(moments->get<double>()));
    read.color = PondColor::parse(optionalText(object, "color"), mutedColor);
    read.icon = optionalText(object, "icon");
    return read;
}

} // namespace

PondSnapshot PondSnapshot::fromEvent(std::string_view event)
{
    const json envelope = parsed(event, "the event");
    if (member(envelope, "version", json::value_t::number_integer, "the event") != 1)
        throw PondSnapshotError("the event has a version other than 1");
    if (member(envelope, "kind", json::value_t::string, "the event") != "practice")
        throw PondSnapshotError("the event is not of kind \"practice\"");
    const json snapshot = parsed(member(envelope, "payload", json::value_t::string, "the event").get_ref<const std::string&>(), "the payload");
    if (member(snapshot, "version", json::value_t::number_integer, "the snapshot") != 1)
        throw PondSnapshotError("the snapshot has a version other than 1");

    PondSnapshot read;
    for (const json& object : member(snapshot, "topics", json::value_t::array, "the snapshot"))
        read.topics.push_back(topic(object));
    read.language = optionalText(snapshot, "language");
    read.daysLabel = optionalText(snapshot, "daysLabel");
    read.noticeLabel = optionalText(snapshot, "noticeLabel");
    read.savedLabel = optionalText(snapshot, "savedLabel");
    return read;
}

} // namespace pond
