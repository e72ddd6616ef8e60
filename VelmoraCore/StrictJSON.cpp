#include "StrictJSON.h"

#include <limits>

namespace velmora::StrictJSON {

using nlohmann::json;

namespace {

[[noreturn]] void wrongType(std::string_view where, std::string_view expected, const json& value)
{
    throw json::type_error::create(
        302, std::string(where) + " must be " + std::string(expected) + ", but is " + value.type_name(), nullptr);
}

} // namespace

json parse(std::string_view text)
{
    if (const auto nul = text.find('\0'); nul != std::string_view::npos)
        throw json::parse_error::create(101, nul + 1, "syntax error: NUL byte in the document", nullptr);
    const json::parser_callback_t limitDepth = [](int depth, json::parse_event_t event, json& /*parsed*/) {
        if (depth >= maximumDepth
            && (event == json::parse_event_t::object_start || event == json::parse_event_t::array_start))
            throw json::parse_error::create(
                101, 0, "nesting deeper than " + std::to_string(maximumDepth) + " levels", nullptr);
        return true;
    };
    return json::parse(text.begin(), text.end(), limitDepth);
}

const json& object(const json& value, std::string_view where)
{
    if (!value.is_object())
        wrongType(where, "an object", value);
    return value;
}

const json& array(const json& value, std::string_view where)
{
    if (!value.is_array())
        wrongType(where, "an array", value);
    return value;
}

std::int64_t integer(const json& value, std::string_view where)
{
    if (value.is_number_unsigned()) {
        const auto unsignedValue = value.get<std::uint64_t>();
        if (unsignedValue > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
            wrongType(where, "an integer within the signed 64-bit range", value);
        return static_cast<std::int64_t>(unsignedValue);
    }
    if (!value.is_number_integer())
        wrongType(where, "an integer", value);
    return value.get<std::int64_t>();
}

bool boolean(const json& value, std::string_view where)
{
    if (!value.is_boolean())
        wrongType(where, "a Boolean", value);
    return value.get<bool>();
}

const std::string& string(const json& value, std::string_view where)
{
    if (!value.is_string())
        wrongType(where, "a string", value);
    return value.get_ref<const std::string&>();
}

const json& member(const json& object, std::string_view key)
{
    const auto found = object.find(key);
    if (found == object.end())
        throw json::out_of_range::create(403, "key '" + std::string(key) + "' not found", nullptr);
    return *found;
}

const json* optionalMember(const json& object, std::string_view key)
{
    const auto found = object.find(key);
    if (found == object.end() || found->is_null())
        return nullptr;
    return &*found;
}

} // namespace velmora::StrictJSON
