#include "PondSnapshot.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <utility>

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
        throw PondSnapshotError(std::string(what) + " has no "
            + (type == json::value_t::string       ? "text"
                    : type == json::value_t::array ? "list"
                                                   : "number")
            + " \"" + key + "\"");
    return *found;
}

std::string optionalText(const json& object, const char* key)
{
    const auto found = object.find(key);
    return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

bool optionalSwitch(const json& object, const char* key)
{
    const auto found = object.find(key);
    return found != object.end() && found->is_boolean() && found->get<bool>();
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

// Reads the envelope's three members as the parser meets them, without
// building it as a document: the payload, most of the event, is unescaped
// once and moved out, then parsed as the snapshot. Members it does not know
// are skipped at any depth.
class EnvelopeReader : public nlohmann::json_sax<json> {
public:
    std::optional<double> version;
    std::optional<std::string> kind;
    std::optional<std::string> payload;

    bool null() override { return scalar(); }
    bool boolean(bool /*value*/) override { return scalar(); }
    bool number_integer(number_integer_t value) override { return number(static_cast<double>(value)); }
    bool number_unsigned(number_unsigned_t value) override { return number(static_cast<double>(value)); }
    bool number_float(number_float_t value, const string_t& /*text*/) override { return number(value); }
    bool string(string_t& value) override
    {
        if (m_depth == 1 && m_key == "kind")
            kind = value;
        else if (m_depth == 1 && m_key == "payload")
            payload = std::move(value);
        return scalar();
    }
    bool binary(binary_t& /*value*/) override { return scalar(); }
    bool start_object(std::size_t /*elements*/) override
    {
        // The event itself must be an object.
        if (m_depth == 0 && m_started)
            return false;
        m_started = true;
        ++m_depth;
        m_key.clear();
        return true;
    }
    bool end_object() override { return leave(); }
    bool start_array(std::size_t /*elements*/) override
    {
        if (m_depth == 0)
            return false;
        ++m_depth;
        m_key.clear();
        return true;
    }
    bool end_array() override { return leave(); }
    bool key(string_t& value) override
    {
        if (m_depth == 1)
            m_key = std::move(value);
        return true;
    }
    bool parse_error(
        std::size_t /*position*/, const std::string& /*token*/, const nlohmann::detail::exception& /*error*/) override
    {
        return false;
    }

private:
    bool number(double value)
    {
        if (m_depth == 1 && m_key == "version")
            version = value;
        return scalar();
    }
    bool scalar()
    {
        if (m_depth == 1)
            m_key.clear();
        // A lone value is no envelope.
        return m_depth > 0;
    }
    bool leave()
    {
        --m_depth;
        if (m_depth == 1)
            m_key.clear();
        return true;
    }

    int m_depth = 0;
    bool m_started = false;
    std::string m_key;
};

} // namespace

PondSnapshot PondSnapshot::fromEvent(std::string_view event)
{
    EnvelopeReader envelope;
    if (!json::sax_parse(event, &envelope))
        throw PondSnapshotError("the event is not a JSON object");
    if (!envelope.version)
        throw PondSnapshotError("the event has no number \"version\"");
    if (*envelope.version != 1)
        throw PondSnapshotError("the event has a version other than 1");
    if (!envelope.kind)
        throw PondSnapshotError("the event has no text \"kind\"");
    if (*envelope.kind != "practice")
        throw PondSnapshotError("the event is not of kind \"practice\"");
    if (!envelope.payload)
        throw PondSnapshotError("the event has no text \"payload\"");
    const json snapshot = parsed(*envelope.payload, "the payload");
    if (member(snapshot, "version", json::value_t::number_integer, "the snapshot") != 1)
        throw PondSnapshotError("the snapshot has a version other than 1");

    PondSnapshot read;
    for (const json& object : member(snapshot, "topics", json::value_t::array, "the snapshot"))
        read.topics.push_back(topic(object));
    read.language = optionalText(snapshot, "language");
    read.daysLabel = optionalText(snapshot, "daysLabel");
    read.noticeLabel = optionalText(snapshot, "noticeLabel");
    read.savedLabel = optionalText(snapshot, "savedLabel");
    read.waterSoundEnabled = optionalSwitch(snapshot, "waterSoundEnabled");
    read.bellSoundEnabled = optionalSwitch(snapshot, "bellSoundEnabled");
    return read;
}

} // namespace pond
