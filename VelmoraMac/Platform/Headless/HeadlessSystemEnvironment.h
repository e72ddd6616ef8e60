#pragma once

#include <chrono>
#include <mutex>

#include "VelmoraMac/Platform/SystemEnvironment.h"

namespace velmora {

// A system whose time, calendar and languages are whatever a test sets.
// Time stands still unless set or advanced. Thread-safe.
class HeadlessSystemEnvironment final : public SystemEnvironment {
public:
    explicit HeadlessSystemEnvironment(Instant now = Instant(), UserCalendar calendar = UserCalendar::utc(),
        std::vector<std::string> preferredLanguages = {});

    [[nodiscard]] Instant now() const override;
    [[nodiscard]] UserCalendar currentCalendar() const override;
    [[nodiscard]] std::vector<std::string> preferredLanguages() const override;
    // The calendar is only ever the one set, so there is nothing to re-read.
    void timeZoneDidChange() override { }

    void setNow(Instant now);
    void advance(std::chrono::milliseconds duration);
    void setCalendar(UserCalendar calendar);
    void setPreferredLanguages(std::vector<std::string> languages);

private:
    mutable std::mutex m_mutex;
    Instant m_now;
    UserCalendar m_calendar;
    std::vector<std::string> m_preferredLanguages;
};

} // namespace velmora
