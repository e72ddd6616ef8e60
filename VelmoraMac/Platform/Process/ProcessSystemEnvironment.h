#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "VelmoraMac/Platform/SystemEnvironment.h"

namespace velmora {

// The system as a process without a desktop sees it: the system clock, the
// time zone from TZ or else the host's, and the preferred languages from the
// locale variables by gettext's rules. The desktop watches for time-zone
// changes and calls timeZoneDidChange(); until then the zone found at
// construction holds, since finding the host's zone reads files.
// Thread-safe, provided nothing changes the process environment meanwhile.
class ProcessSystemEnvironment final : public SystemEnvironment {
public:
    // Only the variables this reads: TZ, LANGUAGE, LC_ALL, LC_MESSAGES and
    // LANG. An unset variable is absent.
    using Variables = std::map<std::string, std::string, std::less<>>;
    using VariableReader = std::function<Variables()>;

    // Reads the process's own environment.
    ProcessSystemEnvironment();
    // Reads what `reader` returns instead, whenever it needs the variables.
    explicit ProcessSystemEnvironment(VariableReader reader);

    [[nodiscard]] Instant now() const override;
    [[nodiscard]] UserCalendar currentCalendar() const override;
    // Read anew on every call.
    [[nodiscard]] std::vector<std::string> preferredLanguages() const override;
    void timeZoneDidChange() override;

    static Variables processVariables();

    // gettext's choice of message languages. The locale is the first
    // non-empty one of LC_ALL, LC_MESSAGES and LANG. In the "C" or "POSIX"
    // locale (or none) nothing is preferred and, as in gettext, LANGUAGE is
    // ignored. Otherwise the entries of LANGUAGE, a colon-separated list,
    // are preferred in order; when it is unset or holds no usable entry, the
    // locale alone is. Encodings and modifiers are dropped ("fr_CA.UTF-8@euro"
    // gives "fr_CA") and "C" and "POSIX" entries are left out.
    static std::vector<std::string> languagesFrom(const Variables& variables);

    // The zone TZ names, when it is a zone of the time-zone database: "Area/
    // City", the same with glibc's leading colon, or a path into a zoneinfo
    // folder. None for anything else: a POSIX rule such as
    // "CET-1CEST,M3.5.0,M10.5.0/3" is not understood, and a custom "GMT+2"
    // is refused because POSIX and ICU read its sign oppositely.
    static std::optional<std::string> timeZoneFrom(const Variables& variables);

private:
    // TZ's zone, else the host's (ICU's detection, which reads
    // /etc/localtime afresh each time), else UTC.
    static UserCalendar calendarFrom(const Variables& variables);

    VariableReader m_reader;
    mutable std::mutex m_mutex;
    UserCalendar m_calendar;
};

} // namespace velmora
