#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "FlatStringSet.h"
#include "Instant.h"
#include "LotusProgress.h"
#include "UserCalendar.h"

namespace velmora {

// The whole persisted record of one user's practice, with its defaults, its
// validation, its JSON form and the rules of noticing and lotus growth.
//
// A plain value: every change is made on a copy, which is then validated and
// stored (PracticeStore) or dropped. All operations are pure and may be
// called from any thread.
struct PracticeState {
    using StringSet = FlatStringSet;
    using LotusMap = std::map<std::string, LotusProgress, std::less<>>;

    std::int64_t version = 1;
    bool onboarded = false;
    // Topic IDs the user has chosen.
    StringSet selected;
    // Growth per topic ID; a lotus survives the deselection of its topic.
    LotusMap lotuses;
    // Day keys of the days on which at least one moment was noticed.
    StringSet practiceDays;
    // "system" (follow the preferred languages) or one of languages().
    std::string language = "system";
    bool hintSeen = false;
    // A week key. Only stored and validated; every change carries it along.
    std::optional<std::string> wiltWeekSeen;
    bool reminderEnabled = false;
    std::int64_t reminderHour = 20;
    std::int64_t reminderMinute = 0;
    bool waterSoundEnabled = true;
    bool bellSoundEnabled = true;

    bool operator==(const PracticeState&) const = default;

    // The seventeen topic IDs.
    static const StringSet& topicIDs();
    // The practice languages in their fixed order: a language is reported
    // elsewhere by its position in this list.
    static const std::vector<std::string>& languages();

    // "yyyy-MM-dd" of the Gregorian calendar day of `date` in the calendar's
    // time zone. Day keys compare correctly as plain strings.
    static std::string dayKey(Instant date, const UserCalendar& calendar);
    // The day key of the Monday that begins the week of `date`, whatever
    // the calendar's own first weekday.
    static std::string weekKey(Instant date, const UserCalendar& calendar);
    // Midnight UTC of the day `key` names, or none when `key` is not exactly
    // a well-formed day key. Only for counting whole days between keys.
    static std::optional<Instant> parseDay(std::string_view key);

    // One code of languages(): `language` itself when it is one, otherwise
    // the first preferred identifier ("fr_CA", "zh-Hans-CN", most preferred
    // first) whose primary code is one, otherwise "en".
    static std::string resolvedLanguage(std::string_view language, const std::vector<std::string>& preferred);

    // The record itself when every rule holds; otherwise throws
    // PracticeError::invalidData. Never repairs anything.
    const PracticeState& validated() const;

    // The topic's growth counter (0 to 14) as of the day of `date`, after the
    // decay of idle days. A topic without a lotus gives 0.
    [[nodiscard]] std::int64_t growthMoments(
        std::string_view topicID, Instant date, const UserCalendar& calendar) const;
    // The same as of the day `todayKey` names (a dayKey), for callers that
    // ask about many topics on one day and compute the key once.
    [[nodiscard]] std::int64_t growthMoments(std::string_view topicID, std::string_view todayKey) const;
    // Always 1.0: wilting shows only through the decay of growthMoments.
    [[nodiscard]] double freshness(std::string_view topicID, Instant date, const UserCalendar& calendar) const;
    // A copy with one more moment noticed for a selected topic on the day of
    // `date`. Throws PracticeError::notSelected for a topic that is not
    // selected and PracticeError::invalidData when its moment counter is full.
    [[nodiscard]] PracticeState notice(std::string_view topicID, Instant date, const UserCalendar& calendar) const;

    // Compact JSON, members in field order, optional members only when
    // present.
    [[nodiscard]] std::string toJSON() const;
    // Strict decoding: any malformed text, missing member or member of the
    // wrong type throws the JSON library's error (nlohmann::json::exception);
    // never a PracticeError. Does not validate.
    static PracticeState fromJSON(std::string_view text);
};

} // namespace velmora
