// The pond's snapshot: everything the renderer draws, already localized.
//
// It is written on every change, and most of its bytes are the topics'
// icons, which never change: each topic's constant parts are encoded once,
// in both the snapshot's and the envelope's form, and spliced in.

#include <algorithm>
#include <vector>

#include "PondSnapshotWriter.h"
#include "PracticeCoordinator.h"

namespace velmora {

// Member order follows what a reader of the text expects; the renderer does
// not depend on it, but the text stays what the JSON library would write for
// the same members in this order.
struct PracticeCoordinator::SnapshotParts {
    struct TopicParts {
        std::string id;
        // Per language index: the object up to the value of "moments".
        std::vector<PondSnapshot> heads;
        // From the colour to the end of the object.
        PondSnapshot tail;
    };

    explicit SnapshotParts(const ContentCatalog& catalog)
    {
        topics.reserve(catalog.topics().size());
        for (const Topic& topic : catalog.topics()) {
            TopicParts parts;
            parts.id = topic.id;
            for (const std::string& title : topic.names) {
                PondSnapshotWriter head;
                head.raw(R"({"id":)");
                head.string(topic.id);
                head.raw(R"(,"title":)");
                head.string(title);
                head.raw(R"(,"moments":)");
                parts.heads.push_back(std::move(head).finish());
            }
            PondSnapshotWriter tail(topic.icon.size() + topic.color.size() + tailOverhead);
            tail.raw(R"(,"color":)");
            tail.string(topic.color);
            tail.raw(R"(,"icon":)");
            tail.string(topic.icon);
            tail.raw("}");
            parts.tail = std::move(tail).finish();
            topics.push_back(std::move(parts));
        }
    }

    // Member names, punctuation and the dynamic values of one topic, at most.
    static constexpr std::size_t tailOverhead = 32;
    static constexpr std::size_t topicOverhead = 128;
    // The object's other members, labels included.
    static constexpr std::size_t restOverhead = 1024;

    // In catalog order.
    std::vector<TopicParts> topics;
};

const PracticeCoordinator::SnapshotParts& PracticeCoordinator::snapshotParts() const
{
    if (!m_snapshotParts)
        m_snapshotParts = std::make_shared<const SnapshotParts>(*m_catalog);
    return *m_snapshotParts;
}

PracticeCoordinator::SnapshotMoment PracticeCoordinator::snapshotMoment() const
{
    // One instant for every topic.
    return {m_system->now(), m_system->currentCalendar(), m_system->preferredLanguages()};
}

PondSnapshot PracticeCoordinator::snapshot() const
{
    return snapshotOf(m_state.get(), snapshotMoment());
}

PondSnapshot PracticeCoordinator::snapshotOf(const PracticeState& state, const SnapshotMoment& moment) const
{
    const SnapshotParts& parts = snapshotParts();
    const Instant now = moment.now;
    const UserCalendar& calendar = moment.calendar;
    const std::string today = PracticeState::dayKey(now, calendar);
    const std::string language = PracticeState::resolvedLanguage(state.language, moment.preferredLanguages);
    const std::size_t index = indexOfLanguage(language);

    std::vector<const SnapshotParts::TopicParts*> selected;
    selected.reserve(parts.topics.size());
    std::size_t bytes = SnapshotParts::restOverhead;
    for (const SnapshotParts::TopicParts& topic : parts.topics) {
        if (!state.selected.contains(topic.id))
            continue;
        selected.push_back(&topic);
        bytes += topic.heads.at(index).escaped.size() + topic.tail.escaped.size() + SnapshotParts::topicOverhead;
    }

    PondSnapshotWriter writer(bytes);
    writer.raw(R"({"version":1,"topics":[)");
    for (const SnapshotParts::TopicParts* topic : selected) {
        const std::string& id = topic->id;
        if (topic != selected.front())
            writer.raw(",");
        writer.splice(topic->heads.at(index));
        const auto lotus = state.lotuses.find(id);
        writer.integer(lotus == state.lotuses.end() ? 0 : lotus->second.moments);
        writer.raw(R"(,"growthMoments":)");
        writer.integer(state.growthMoments(id, today));
        writer.raw(R"(,"freshness":)");
        writer.number(state.freshness(id, now, calendar));
        writer.splice(topic->tail);
    }
    writer.raw(R"(],"language":)");
    writer.string(language);
    writer.raw(R"(,"waterSoundEnabled":)");
    writer.boolean(state.waterSoundEnabled);
    writer.raw(R"(,"bellSoundEnabled":)");
    writer.boolean(state.bellSoundEnabled);
    const auto label
        = [&](std::string_view member, std::string_view key, std::optional<std::int64_t> count = std::nullopt) {
              writer.raw(member);
              writer.string(m_catalog->text(key, language, count));
          };
    label(R"(,"daysLabel":)", "days", static_cast<std::int64_t>(state.practiceDays.size()));
    label(R"(,"daysSuffix":)", "daysSuffix");
    label(R"(,"backLabel":)", "back");
    label(R"(,"settingsLabel":)", "settings");
    label(R"(,"noticeLabel":)", "notice");
    label(R"(,"savedLabel":)", "noticed");
    label(R"(,"errorLabel":)", "saveError");
    writer.raw("}");
    return std::move(writer).finish();
}

} // namespace velmora
