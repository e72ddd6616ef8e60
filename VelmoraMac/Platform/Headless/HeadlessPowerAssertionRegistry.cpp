#include "HeadlessPowerAssertionRegistry.h"

#include <string>
#include <utility>
#include <vector>

namespace velmora {

namespace {

bool names(const nlohmann::json& record, std::uint32_t identifier)
{
    if (!record.is_object())
        return false;
    const auto found = record.find(PowerAssertionRegistry::identifierKey);
    return found != record.end() && found->is_number() && *found == identifier;
}

} // namespace

std::optional<nlohmann::json> HeadlessPowerAssertionRegistry::assertionsByProcess() const
{
    const std::scoped_lock lock(m_mutex);
    ++m_queryCount;
    switch (m_answer) {
    case Answer::failure:
        return std::nullopt;
    case Answer::verbatim:
        return m_verbatim;
    case Answer::records:
        break;
    }
    nlohmann::json answer = nlohmann::json::object();
    for (const auto& [processID, records] : m_records)
        answer[std::to_string(processID)] = records;
    return answer;
}

std::int32_t HeadlessPowerAssertionRegistry::setAssertionLevel(std::uint32_t identifier, std::int64_t level)
{
    const std::scoped_lock lock(m_mutex);
    std::vector<nlohmann::json*> holders;
    for (auto& [processID, records] : m_records) {
        if (!records.is_array())
            continue;
        for (auto& record : records) {
            if (names(record, identifier))
                holders.push_back(&record);
        }
    }
    const auto set = m_results.find(identifier);
    std::int32_t result = holders.empty() ? notFound : 0;
    if (set != m_results.end())
        result = set->second;
    if (result == 0) {
        for (nlohmann::json* record : holders)
            (*record)[levelKey] = level;
    }
    m_levelChanges.push_back({identifier, level, result});
    return result;
}

void HeadlessPowerAssertionRegistry::setAssertions(std::int32_t processID, nlohmann::json records)
{
    const std::scoped_lock lock(m_mutex);
    if (records.is_null())
        m_records.erase(processID);
    else
        m_records[processID] = std::move(records);
}

nlohmann::json HeadlessPowerAssertionRegistry::assertions(std::int32_t processID) const
{
    const std::scoped_lock lock(m_mutex);
    const auto found = m_records.find(processID);
    return found == m_records.end() ? nlohmann::json() : found->second;
}

void HeadlessPowerAssertionRegistry::setResult(std::uint32_t identifier, std::int32_t result)
{
    const std::scoped_lock lock(m_mutex);
    m_results[identifier] = result;
}

void HeadlessPowerAssertionRegistry::failQueries()
{
    const std::scoped_lock lock(m_mutex);
    m_answer = Answer::failure;
}

void HeadlessPowerAssertionRegistry::answerVerbatim(nlohmann::json answer)
{
    const std::scoped_lock lock(m_mutex);
    m_answer = Answer::verbatim;
    m_verbatim = std::move(answer);
}

void HeadlessPowerAssertionRegistry::answerRecords()
{
    const std::scoped_lock lock(m_mutex);
    m_answer = Answer::records;
}

std::vector<HeadlessPowerAssertionRegistry::LevelChange> HeadlessPowerAssertionRegistry::levelChanges() const
{
    const std::scoped_lock lock(m_mutex);
    return m_levelChanges;
}

int HeadlessPowerAssertionRegistry::queryCount() const
{
    const std::scoped_lock lock(m_mutex);
    return m_queryCount;
}

} // namespace velmora
