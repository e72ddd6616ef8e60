#include "ProcessSystemEnvironment.h"

#include <array>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <utility>

#include <unicode/timezone.h>
#include <unicode/ucal.h>
#include <unicode/unistr.h>

namespace velmora {

namespace {

std::string_view variable(const ProcessSystemEnvironment::Variables& variables, std::string_view name)
{
    const auto found = variables.find(name);
    return found == variables.end() ? std::string_view() : std::string_view(found->second);
}

// "fr_CA.UTF-8@euro" gives "fr_CA".
std::string_view withoutEncodingAndModifier(std::string_view locale)
{
    return locale.substr(0, locale.find_first_of(".@"));
}

bool isUntranslated(std::string_view language)
{
    return language == "C" || language == "POSIX";
}

bool isSystemZone(const std::string& identifier)
{
    UErrorCode status = U_ZERO_ERROR;
    icu::UnicodeString canonical;
    UBool isSystemID = false;
    icu::TimeZone::getCanonicalID(icu::UnicodeString::fromUTF8(identifier), canonical, isSystemID, status);
    return U_SUCCESS(status) && isSystemID;
}

} // namespace

ProcessSystemEnvironment::ProcessSystemEnvironment()
    : ProcessSystemEnvironment(&ProcessSystemEnvironment::processVariables)
{
}

ProcessSystemEnvironment::ProcessSystemEnvironment(VariableReader reader)
    : m_reader(std::move(reader))
    , m_calendar(calendarFrom(m_reader()))
{
}

Instant ProcessSystemEnvironment::now() const
{
    return std::chrono::time_point_cast<std::chrono::milliseconds>(std::chrono::system_clock::now());
}

UserCalendar ProcessSystemEnvironment::currentCalendar() const
{
    const std::scoped_lock lock(m_mutex);
    return m_calendar;
}

std::vector<std::string> ProcessSystemEnvironment::preferredLanguages() const
{
    return languagesFrom(m_reader());
}

void ProcessSystemEnvironment::timeZoneDidChange()
{
    UserCalendar calendar = calendarFrom(m_reader());
    const std::scoped_lock lock(m_mutex);
    m_calendar = std::move(calendar);
}

ProcessSystemEnvironment::Variables ProcessSystemEnvironment::processVariables()
{
    Variables variables;
    for (const char* name : {"TZ", "LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"}) {
        // Nothing in the library changes the environment, so reading it from
        // several threads is safe.
        if (const char* value = std::getenv(name)) // NOLINT(concurrency-mt-unsafe)
            variables.emplace(name, value);
    }
    return variables;
}

std::vector<std::string> ProcessSystemEnvironment::languagesFrom(const Variables& variables)
{
    std::string_view locale;
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        locale = variable(variables, name);
        if (!locale.empty())
            break;
    }
    locale = withoutEncodingAndModifier(locale);
    if (locale.empty() || isUntranslated(locale))
        return {};

    std::vector<std::string> languages;
    std::string_view list = variable(variables, "LANGUAGE");
    while (!list.empty()) {
        const std::size_t colon = list.find(':');
        const std::string_view entry = withoutEncodingAndModifier(list.substr(0, colon));
        if (!entry.empty() && !isUntranslated(entry))
            languages.emplace_back(entry);
        list = colon == std::string_view::npos ? std::string_view() : list.substr(colon + 1);
    }
    if (languages.empty())
        languages.emplace_back(locale);
    return languages;
}

std::optional<std::string> ProcessSystemEnvironment::timeZoneFrom(const Variables& variables)
{
    std::string_view zone = variable(variables, "TZ");
    if (zone.starts_with(':'))
        zone.remove_prefix(1);
    if (zone.starts_with('/')) {
        constexpr std::string_view folder = "/zoneinfo/";
        const std::size_t found = zone.rfind(folder);
        if (found == std::string_view::npos)
            return std::nullopt;
        zone.remove_prefix(found + folder.size());
        // The database's variants with and without leap seconds name the
        // same civil time.
        for (const std::string_view variant : {"posix/", "right/"}) {
            if (zone.starts_with(variant))
                zone.remove_prefix(variant.size());
        }
    }
    if (zone.empty() || !isSystemZone(std::string(zone)))
        return std::nullopt;
    return std::string(zone);
}

UserCalendar ProcessSystemEnvironment::calendarFrom(const Variables& variables)
{
    if (const std::optional<std::string> zone = timeZoneFrom(variables))
        return UserCalendar::inTimeZone(*zone);
    // Not ICU's default zone: ICU caches that for the life of the process.
    std::unique_ptr<icu::TimeZone> host(icu::TimeZone::detectHostTimeZone());
    icu::UnicodeString identifier;
    if (!host || host->getID(identifier) == icu::UnicodeString(UCAL_UNKNOWN_ZONE_ID))
        return UserCalendar::utc();
    return UserCalendar::adoptingTimeZone(std::move(host));
}

} // namespace velmora
