#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <vector>

#include <nlohmann/json.hpp>

#include "VelmoraMac/Platform/PowerAssertionRegistry.h"

namespace velmora {

// A power-management service in memory: the assertions a test gives each
// process, the result a test chooses for changing each one, and a record
// of every change asked for. The query can be made to fail or to answer
// anything at all, to play a service that misbehaves. Thread-safe, so that
// a test may inspect it while the main thread uses it.
class HeadlessPowerAssertionRegistry final : public PowerAssertionRegistry {
public:
    // The result of changing an assertion that no process holds.
    static constexpr std::int32_t notFound = -1;

    struct LevelChange {
        std::uint32_t identifier = 0;
        std::int64_t level = 0;
        std::int32_t result = 0;

        friend bool operator==(const LevelChange&, const LevelChange&) = default;
    };

    // The records set per process, unless told to fail or to answer
    // verbatim.
    [[nodiscard]] std::optional<nlohmann::json> assertionsByProcess() const override;
    // Answers the result set for `identifier`; unless one is set, 0 when a
    // record names it and notFound otherwise. On 0 every record that names
    // `identifier` takes the new level; on any other result nothing
    // changes. The change is recorded either way.
    std::int32_t setAssertionLevel(std::uint32_t identifier, std::int64_t level) override;

    // The assertions `processID` holds, replacing any set before: normally
    // an array of record objects, but anything goes, to play a malformed
    // answer. A null value removes the process.
    void setAssertions(std::int32_t processID, nlohmann::json records);
    // What the query answers for `processID` right now: its records with
    // the levels changed since; null for a process without any.
    [[nodiscard]] nlohmann::json assertions(std::int32_t processID) const;

    void setResult(std::uint32_t identifier, std::int32_t result);

    // The query fails from now on.
    void failQueries();
    // The query answers `answer` exactly, whatever its shape, from now on.
    void answerVerbatim(nlohmann::json answer);
    // The query answers the records set per process again.
    void answerRecords();

    // Every change asked for, failed ones included, in order.
    [[nodiscard]] std::vector<LevelChange> levelChanges() const;
    [[nodiscard]] int queryCount() const;

private:
    enum class Answer : std::uint8_t {
        records,
        failure,
        verbatim,
    };

    mutable std::mutex m_mutex;
    std::map<std::int32_t, nlohmann::json> m_records;
    std::map<std::uint32_t, std::int32_t> m_results;
    Answer m_answer = Answer::records;
    nlohmann::json m_verbatim;
    std::vector<LevelChange> m_levelChanges;
    mutable int m_queryCount = 0;
};

} // namespace velmora
