// Day keys, week keys and the parsing of day keys, all reckoned by ICU.

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <stdexcept>

#include <unicode/gregocal.h>
#include <unicode/locid.h>
#include <unicode/smpdtfmt.h>
#include <unicode/unistr.h>

#include "PracticeState.h"

namespace velmora {

namespace {

constexpr std::size_t dayKeyLength = 10;

void checkICU(UErrorCode status, const char* operation)
{
    // Only a program error (or an ICU without its data) gets here: every
    // real instant has a year, a month and a day.
    if (U_FAILURE(status))
        throw std::logic_error(std::string(operation) + ": " + u_errorName(status));
}

UDate toUDate(Instant instant)
{
    return static_cast<UDate>(instant.time_since_epoch().count());
}

// A Gregorian calendar moved to whichever zone is asked for. ICU calendars
// change their fields even when only read, so each thread keeps its own.
class ZonedGregorianCalendar {
public:
    ZonedGregorianCalendar()
        : m_calendar(*icu::TimeZone::getGMT(), icu::Locale::getRoot(), m_status)
    {
        checkICU(m_status, "creating a Gregorian calendar");
    }

    icu::Calendar& in(const UserCalendar& calendar)
    {
        // Holding the zone keeps its address from being reused by another
        // zone, so comparing addresses is a sound test for "same zone".
        if (!m_zoneInUse || &m_zoneInUse->timeZone() != &calendar.timeZone()) {
            m_calendar.setTimeZone(calendar.timeZone());
            m_zoneInUse = calendar;
        }
        return m_calendar;
    }

private:
    UErrorCode m_status = U_ZERO_ERROR; // Declared first: the calendar's construction reports into it.
    icu::GregorianCalendar m_calendar;
    std::optional<UserCalendar> m_zoneInUse;
};

icu::Calendar& gregorianIn(const UserCalendar& calendar)
{
    thread_local ZonedGregorianCalendar zoned;
    return zoned.in(calendar);
}

// A calendar for pure date arithmetic: in UTC every calendar day is one step.
icu::Calendar& utcDates()
{
    thread_local ZonedGregorianCalendar dates;
    return dates.in(UserCalendar::utc());
}

std::string dayKeyOfFields(icu::Calendar& gregorian)
{
    UErrorCode status = U_ZERO_ERROR;
    const int32_t year = gregorian.get(UCAL_YEAR, status);
    const int32_t month = gregorian.get(UCAL_MONTH, status) + 1;
    const int32_t day = gregorian.get(UCAL_DATE, status);
    checkICU(status, "reading a calendar day");
    std::array<char, 32> key{};
    // Three int32 fields with their hyphens fit in 32 bytes, so nothing is cut.
    (void)std::snprintf(key.data(), key.size(), "%04d-%02d-%02d", year, month, day);
    return key.data();
}

// The fixed "yyyy-MM-dd" format in UTC that day keys are checked against.
class DayKeyFormat {
public:
    DayKeyFormat()
    {
        UErrorCode status = U_ZERO_ERROR;
        const icu::Locale posix("en_US_POSIX");
        m_format = std::make_unique<icu::SimpleDateFormat>(icu::UnicodeString(u"yyyy-MM-dd"), posix, status);
        checkICU(status, "creating the day-key format");
        m_format->adoptCalendar(new icu::GregorianCalendar(*icu::TimeZone::getGMT(), posix, status));
        checkICU(status, "creating the day-key calendar");
        m_format->setLenient(false);
    }

    std::optional<Instant> parse(std::string_view key)
    {
        const auto text = icu::UnicodeString::fromUTF8(icu::StringPiece(key.data(), static_cast<int32_t>(key.size())));
        UErrorCode status = U_ZERO_ERROR;
        const UDate parsed = m_format->parse(text, status);
        if (U_FAILURE(status))
            return std::nullopt;
        // A day the parser normalised (such as the 30th of February), or any
        // other text that does not reproduce itself, is not a day key.
        icu::UnicodeString formatted;
        m_format->format(parsed, formatted);
        std::string reformatted;
        formatted.toUTF8String(reformatted);
        if (reformatted != key)
            return std::nullopt;
        return Instant(std::chrono::milliseconds(static_cast<std::int64_t>(parsed)));
    }

private:
    std::unique_ptr<icu::SimpleDateFormat> m_format;
};

bool hasDayKeyShape(std::string_view key)
{
    // The formatter only ever writes four digits, a hyphen, two digits, a
    // hyphen and two digits, so anything else cannot reproduce itself; this
    // spares ICU the obvious rejections without changing what is accepted.
    for (std::size_t i = 0; i < dayKeyLength; ++i) {
        const bool hyphen = i == 4 || i == 7;
        const char c = key[i];
        if (hyphen ? c != '-' : (c < '0' || c > '9'))
            return false;
    }
    return true;
}

} // namespace

std::string PracticeState::dayKey(Instant date, const UserCalendar& calendar)
{
    icu::Calendar& gregorian = gregorianIn(calendar);
    UErrorCode status = U_ZERO_ERROR;
    gregorian.setTime(toUDate(date), status);
    checkICU(status, "setting a calendar's time");
    return dayKeyOfFields(gregorian);
}

std::string PracticeState::weekKey(Instant date, const UserCalendar& calendar)
{
    icu::Calendar& gregorian = gregorianIn(calendar);
    UErrorCode status = U_ZERO_ERROR;
    gregorian.setTime(toUDate(date), status);
    const int32_t year = gregorian.get(UCAL_YEAR, status);
    const int32_t month = gregorian.get(UCAL_MONTH, status);
    const int32_t day = gregorian.get(UCAL_DATE, status);
    const int32_t weekday = gregorian.get(UCAL_DAY_OF_WEEK, status); // 1 is Sunday
    checkICU(status, "reading a calendar day");
    const int32_t daysSinceMonday = (weekday + 5) % 7;

    // Whole calendar days back from the local date. A zoned calendar steps in
    // 24-hour units corrected for offset changes, which goes wrong when a
    // zone skips a whole day (Apia, 30 December 2011).
    icu::Calendar& dates = utcDates();
    dates.clear();
    dates.set(year, month, day);
    dates.add(UCAL_DATE, -daysSinceMonday, status);
    checkICU(status, "moving back to Monday");
    return dayKeyOfFields(dates);
}

namespace {

// Remembers ICU's verdicts on recently seen day keys. Validating a state
// parses every practice day again, a few microseconds each through ICU,
// although almost all of them were checked at the previous save; the
// verdict depends on nothing but the text (UTC, fixed pattern), so a
// remembered one is exactly what ICU would answer again. Direct-mapped
// and fixed in size: no allocation, a collision only costs a parse.
class DayKeyVerdicts {
public:
    std::optional<Instant> parse(std::string_view key)
    {
        Slot& slot = m_slots.at(slotOf(key));
        if (slot.filled && std::string_view(slot.key.data(), slot.key.size()) == key)
            return slot.verdict;
        slot.verdict = m_format.parse(key);
        std::copy(key.begin(), key.end(), slot.key.begin());
        slot.filled = true;
        return slot.verdict;
    }

private:
    static constexpr std::size_t slotCount = 4096;

    struct Slot {
        std::array<char, dayKeyLength> key{};
        std::optional<Instant> verdict;
        bool filled = false;
    };

    // Keys of the day-key shape numbered in calendar order, so that any run
    // of consecutive days shorter than the table (eleven years) lands in
    // distinct slots.
    static std::size_t slotOf(std::string_view key)
    {
        const auto digits = [key](std::size_t from, std::size_t count) {
            std::size_t value = 0;
            for (std::size_t i = from; i < from + count; ++i)
                value = value * 10 + static_cast<std::size_t>(key[i] - '0');
            return value;
        };
        return (digits(0, 4) * 372 + digits(5, 2) * 31 + digits(8, 2)) % slotCount;
    }

    DayKeyFormat m_format;
    std::array<Slot, slotCount> m_slots{};
};

} // namespace

std::optional<Instant> PracticeState::parseDay(std::string_view key)
{
    if (key.size() != dayKeyLength || !hasDayKeyShape(key))
        return std::nullopt;
    // Per thread: ICU formatters must not be shared between threads.
    thread_local DayKeyVerdicts verdicts;
    return verdicts.parse(key);
}

} // namespace velmora
