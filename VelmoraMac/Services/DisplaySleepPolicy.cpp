#include "DisplaySleepPolicy.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <system_error>

#include <nlohmann/json.hpp>

namespace velmora::DisplaySleepPolicy {

namespace {

using Registry = PowerAssertionRegistry;

// Only the canonical decimal form counts, so that a process has exactly
// one key it can be found under.
bool isProcessNumber(const std::string& key)
{
    std::int32_t number = 0;
    const char* const end = key.data() + key.size();
    const auto [rest, error] = std::from_chars(key.data(), end, number);
    return error == std::errc() && rest == end && std::to_string(number) == key;
}

bool isListOfRecords(const nlohmann::json& value)
{
    return value.is_array()
        && std::ranges::all_of(value, [](const nlohmann::json& record) { return record.is_object(); });
}

// A service that answers anything else is not trusted with any of it.
bool isAssertionsByProcess(const nlohmann::json& answer)
{
    const auto items = answer.items();
    return answer.is_object() && std::all_of(items.begin(), items.end(), [](const auto& item) {
        return isProcessNumber(item.key()) && isListOfRecords(item.value());
    });
}

bool isString(const nlohmann::json& record, const char* key, const char* expected)
{
    const auto found = record.find(key);
    return found != record.end() && found->is_string() && found->get_ref<const std::string&>() == expected;
}

bool isLevelOn(const nlohmann::json& record)
{
    const auto found = record.find(Registry::levelKey);
    // Compared as numbers, so that 255.0 counts as well as 255.
    return found != record.end() && found->is_number() && *found == Registry::levelOn;
}

// The identifier when it is a number that a 32-bit identifier can hold
// exactly; a fraction or a value out of range names no assertion.
std::optional<std::uint32_t> identifierOf(const nlohmann::json& record)
{
    constexpr auto largest = std::numeric_limits<std::uint32_t>::max();
    const auto found = record.find(Registry::identifierKey);
    if (found == record.end())
        return std::nullopt;
    if (found->is_number_unsigned()) {
        const auto value = found->get<std::uint64_t>();
        if (value <= largest)
            return static_cast<std::uint32_t>(value);
    } else if (found->is_number_integer()) {
        const auto value = found->get<std::int64_t>();
        if (value >= 0 && value <= largest)
            return static_cast<std::uint32_t>(value);
    } else if (found->is_number_float()) {
        const auto value = found->get<double>();
        if (value >= 0 && value <= largest && std::trunc(value) == value)
            return static_cast<std::uint32_t>(value);
    }
    return std::nullopt;
}

} // namespace

void allowSystemTimer(PowerAssertionRegistry& registry, DiagnosticLog& log, std::int32_t processID)
{
    const std::optional<nlohmann::json> answer = registry.assertionsByProcess();
    if (!answer || !isAssertionsByProcess(*answer))
        return;
    const auto own = answer->find(std::to_string(processID));
    if (own == answer->end())
        return;
    for (const auto& record : *own) {
        if (!isString(record, Registry::typeKey, displayAssertionType)
            || !isString(record, Registry::nameKey, displayAssertionName) || !isLevelOn(record))
            continue;
        const auto identifier = identifierOf(record);
        if (!identifier)
            continue;
        const std::int32_t result = registry.setAssertionLevel(*identifier, Registry::levelOff);
        if (result != 0)
            log.write("Velmora: could not allow display sleep (" + std::to_string(result) + ")");
    }
}

} // namespace velmora::DisplaySleepPolicy
