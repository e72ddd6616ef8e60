// The pond's snapshot: everything the renderer draws, already localized.

#include <nlohmann/json.hpp>

#include "PracticeCoordinator.h"

namespace velmora {

std::string PracticeCoordinator::snapshot() const
{
    // Member order follows what a reader of the text expects; the renderer
    // does not depend on it.
    using ordered_json = nlohmann::ordered_json;

    const PracticeState& state = m_state.get();
    const Instant now = m_system->now(); // One instant for every topic.
    const UserCalendar calendar = m_system->currentCalendar();
    const std::string language = resolvedLanguage();
    const std::size_t index = languageIndex();

    ordered_json topics = ordered_json::array();
    for (const Topic& topic : m_catalog->topics()) {
        if (!state.selected.contains(topic.id))
            continue;
        const auto lotus = state.lotuses.find(topic.id);
        topics.push_back({
            {"id", topic.id},
            {"title", topic.names.at(index)},
            {"moments", lotus == state.lotuses.end() ? 0 : lotus->second.moments},
            {"growthMoments", state.growthMoments(topic.id, now, calendar)},
            {"freshness", state.freshness(topic.id, now, calendar)},
            {"color", topic.color},
            {"icon", topic.icon},
        });
    }

    const ordered_json snapshot = {
        {"version", 1},
        {"topics", std::move(topics)},
        {"language", language},
        {"waterSoundEnabled", state.waterSoundEnabled},
        {"bellSoundEnabled", state.bellSoundEnabled},
        {"daysLabel", m_catalog->text("days", language, static_cast<std::int64_t>(state.practiceDays.size()))},
        {"daysSuffix", m_catalog->text("daysSuffix", language)},
        {"backLabel", m_catalog->text("back", language)},
        {"settingsLabel", m_catalog->text("settings", language)},
        {"noticeLabel", m_catalog->text("notice", language)},
        {"savedLabel", m_catalog->text("noticed", language)},
        {"errorLabel", m_catalog->text("saveError", language)},
    };
    return snapshot.dump();
}

} // namespace velmora
