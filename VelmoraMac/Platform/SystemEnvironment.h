#pragma once

#include <string>
#include <vector>

#include "VelmoraCore/Instant.h"
#include "VelmoraCore/UserCalendar.h"

namespace velmora {

// What the shell asks of the system about the user's time and language: the
// current instant, the calendar days are reckoned in, and the languages the
// user prefers. Every call answers anew, so a change reaches the next
// caller. Safe to call from any thread.
class SystemEnvironment {
public:
    SystemEnvironment() = default;
    SystemEnvironment(const SystemEnvironment&) = delete;
    SystemEnvironment& operator=(const SystemEnvironment&) = delete;
    SystemEnvironment(SystemEnvironment&&) = delete;
    SystemEnvironment& operator=(SystemEnvironment&&) = delete;
    virtual ~SystemEnvironment() = default;

    [[nodiscard]] virtual Instant now() const = 0;
    // A calendar in the user's current time zone.
    [[nodiscard]] virtual UserCalendar currentCalendar() const = 0;
    // Language identifiers, most preferred first ("fr_CA", "pt", ...); empty
    // when the user states no preference.
    [[nodiscard]] virtual std::vector<std::string> preferredLanguages() const = 0;

    // Told that the system's time zone may have changed: the next
    // currentCalendar() reflects the change.
    virtual void timeZoneDidChange() = 0;
};

} // namespace velmora
