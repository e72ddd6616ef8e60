#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

namespace velmora::StrictJSON {

// Documents nested deeper than this are refused while parsing: the library
// parses any depth but its dump() and copies recurse and exhaust the stack.
constexpr int maximumDepth = 64;

// Parses one JSON document. Throws nlohmann::json::parse_error for malformed
// text, for a NUL byte anywhere (the library would otherwise stop reading
// there and accept what came before) and for nesting beyond maximumDepth.
nlohmann::json parse(std::string_view text);

// Typed access that refuses what the library would silently convert: a
// fraction, an exponent or a Boolean where an integer belongs, an integer
// beyond the signed 64-bit range, a number where a Boolean belongs.
// `where` names the value in error messages, such as "lotuses.phone.moments".
// Failures are nlohmann::json::type_error (302) and out_of_range (403).
const nlohmann::json& object(const nlohmann::json& value, std::string_view where);
const nlohmann::json& array(const nlohmann::json& value, std::string_view where);
std::int64_t integer(const nlohmann::json& value, std::string_view where);
bool boolean(const nlohmann::json& value, std::string_view where);
const std::string& string(const nlohmann::json& value, std::string_view where);

// The member `key` of an object; throws out_of_range (403) when it is absent.
// A null member is returned as it is and fails the typed access after it.
const nlohmann::json& member(const nlohmann::json& object, std::string_view key);
// The member `key`, or nullptr when it is absent or null.
const nlohmann::json* optionalMember(const nlohmann::json& object, std::string_view key);

} // namespace velmora::StrictJSON
