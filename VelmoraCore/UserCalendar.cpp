#include "UserCalendar.h"

#include <stdexcept>
#include <utility>

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
    auto name = icu::UnicodeString::fromUTF8(icu::StringPiece(identifier.data(), static_cast<int32_t>(identifier.size())));
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

} // namespace velmora
