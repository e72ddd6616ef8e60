#pragma once

#include <cstdint>
#include <optional>

#include <nlohmann/json.hpp>

namespace velmora {

// The power-management service's record of the assertions processes hold
// (such as "keep the display awake"), and the one change the library makes
// to them. The records are untyped, as the service publishes them: whoever
// reads them checks every key's type before trusting it.
// Main thread only.
class PowerAssertionRegistry {
public:
    // Keys of an assertion record, as the service names them.
    static constexpr const char* typeKey = "AssertType";
    static constexpr const char* nameKey = "AssertName";
    static constexpr const char* levelKey = "AssertLevel";
    static constexpr const char* identifierKey = "AssertionId";

    // Values of levelKey.
    static constexpr std::int64_t levelOn = 255;
    static constexpr std::int64_t levelOff = 0;

    PowerAssertionRegistry() = default;
    PowerAssertionRegistry(const PowerAssertionRegistry&) = delete;
    PowerAssertionRegistry& operator=(const PowerAssertionRegistry&) = delete;
    PowerAssertionRegistry(PowerAssertionRegistry&&) = delete;
    PowerAssertionRegistry& operator=(PowerAssertionRegistry&&) = delete;
    virtual ~PowerAssertionRegistry() = default;

    // The assertions of every process that holds any: an object whose keys
    // are process numbers in decimal and whose values are arrays of records
    // (objects). That is what a well-behaved service answers; nothing here
    // guarantees it. None when the query fails. Never throws.
    [[nodiscard]] virtual std::optional<nlohmann::json> assertionsByProcess() const = 0;

    // Sets the level of the assertion `identifier`, whichever process holds
    // it; the assertion stays with its holder. Answers the service's result
    // code: 0 for success, anything else for a failure. Never throws.
    virtual std::int32_t setAssertionLevel(std::uint32_t identifier, std::int64_t level) = 0;
};

} // namespace velmora
