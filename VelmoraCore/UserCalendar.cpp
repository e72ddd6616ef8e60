#include "UserCalendar.h"

#include <stdexcept>
#include <string>
#include <utility>

#include <unicode/locid.h>
#include <unicode/ucal.h>
#include <unicode/unistr.h>

namespace velmora {

UserCalendar::UserCalendar(std::shared_ptr<const icu::TimeZone> zone, std::string identifier)
    : m_zone(std::move(zone))
    , m_identifier(std::move(identifier))
{
}

std::string UserCalendar::identifierOf(const icu::TimeZone& zone)
{
    icu::UnicodeString identifier;
    zone.getID(identifier);
    std::string utf8;
    identifier.toUTF8String(utf8);
    return utf8;
}

UserCalendar UserCalendar::inTimeZone(std::string_view identifier)
{
    auto name
        = icu::UnicodeString::fromUTF8(icu::StringPiece(identifier.data(), static_cast<int32_t>(identifier.size())));
    std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createTimeZone(name));
    // ICU answers an unknown identifier with a zone that behaves as GMT; a
    // misspelt zone must not silently shift every day key.
    if (!zone || identifierOf(*zone) == UCAL_UNKNOWN_ZONE_ID)
        throw std::invalid_argument("unknown time zone \"" + std::string(identifier) + "\"");
    return adoptingTimeZone(std::move(zone));
}

UserCalendar UserCalendar::adoptingTimeZone(std::unique_ptr<icu::TimeZone> zone)
{
    if (!zone)
        throw std::invalid_argument("a calendar needs a time zone");
    std::string identifier = identifierOf(*zone);
    return {std::shared_ptr<const icu::TimeZone>(std::move(zone)), std::move(identifier)};
}

UserCalendar UserCalendar::utc()
{
    static const UserCalendar utc = inTimeZone("UTC");
    return utc;
}

icu::GregorianCalendar UserCalendar::gregorian() const
{
    UErrorCode status = U_ZERO_ERROR;
    icu::GregorianCalendar calendar(*m_zone, icu::Locale::getRoot(), status);
    // Only an ICU without its data gets here.
    if (U_FAILURE(status))
        throw std::logic_error(std::string("creating a Gregorian calendar: ") + u_errorName(status));
    calendar.setLenient(true);
    calendar.setSkippedWallTimeOption(UCAL_WALLTIME_NEXT_VALID);
    calendar.setRepeatedWallTimeOption(UCAL_WALLTIME_FIRST);
    return calendar;
}

icu::Calendar& ReusedGregorianCalendar::in(const UserCalendar& calendar)
{
    // Holding the zone keeps its address from being reused by another zone,
    // so comparing addresses is a sound test for "same zone as last time".
    if (!m_zoneInUse || &m_zoneInUse->timeZone() != &calendar.timeZone()) {
        m_calendar.setTimeZone(calendar.timeZone());
        m_zoneInUse = calendar;
    }
    return m_calendar;
}

} // namespace velmora
