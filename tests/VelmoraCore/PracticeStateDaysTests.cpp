#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <unicode/gregocal.h>
#include <unicode/locid.h>
#include <unicode/smpdtfmt.h>
#include <unicode/unistr.h>

#include "CoreTestSupport.h"
#include "VelmoraCore/PracticeState.h"

namespace velmora {
namespace {

using test::utc;

struct DayCase {
    const char* zone = nullptr;
    Instant instant;
    const char* dayKey = nullptr;
    const char* weekKey = nullptr;
};

TEST(PracticeStateDays, DayAndWeekKeys_FollowTheLocalCalendarDayOfTheZone)
{
    const DayCase cases[] = {
        // Two hours east of UTC: 23:30 local is still the 14th although it is 21:30 UTC.
        {"Europe/Helsinki", utc(2025, 3, 14, 21, 30), "2025-03-14", "2025-03-10"},
        {"Europe/Helsinki", utc(2025, 3, 14, 22, 30), "2025-03-15", "2025-03-10"},
        // West of UTC: early UTC mornings still belong to the previous local day.
        {"America/Los_Angeles", utc(2025, 3, 15, 6, 30), "2025-03-14", "2025-03-10"},
        {"America/Los_Angeles", utc(2025, 3, 17, 6, 59), "2025-03-16", "2025-03-10"},
        {"America/Los_Angeles", utc(2025, 3, 17, 7, 0), "2025-03-17", "2025-03-17"},
        // Half-hour and far-east offsets.
        {"Asia/Kolkata", utc(2025, 3, 9, 18, 30), "2025-03-10", "2025-03-10"},
        {"Pacific/Kiritimati", utc(2025, 3, 9, 10, 0), "2025-03-10", "2025-03-10"},
        // Sao Paulo, 2018: clocks jumped from midnight to 01:00 on Sunday the 4th of November.
        {"America/Sao_Paulo", utc(2018, 11, 4, 2, 59, 59), "2018-11-03", "2018-10-29"},
        {"America/Sao_Paulo", utc(2018, 11, 4, 3, 0), "2018-11-04", "2018-10-29"},
        {"America/Sao_Paulo", utc(2018, 11, 5, 1, 59), "2018-11-04", "2018-10-29"}, // now two hours behind UTC
        {"America/Sao_Paulo", utc(2018, 11, 5, 2, 0), "2018-11-05", "2018-11-05"},
        // ... and back from midnight to 23:00 on Saturday the 16th of February 2019: the hour repeats.
        {"America/Sao_Paulo", utc(2019, 2, 17, 2, 30), "2019-02-16", "2019-02-11"},
        {"America/Sao_Paulo", utc(2019, 2, 17, 3, 0), "2019-02-17", "2019-02-11"},
        // Apia skipped Friday the 30th of December 2011 entirely, from UTC-10 to UTC+14.
        {"Pacific/Apia", utc(2011, 12, 30, 9, 59, 59), "2011-12-29", "2011-12-26"},
        {"Pacific/Apia", utc(2011, 12, 30, 10, 0), "2011-12-31", "2011-12-26"},
        {"Pacific/Apia", utc(2012, 1, 1, 10, 0), "2012-01-02", "2012-01-02"},
        // In UTC, the first, a middle and the last day of a week map to its Monday.
        {"UTC", utc(2025, 3, 10), "2025-03-10", "2025-03-10"},
        {"UTC", utc(2025, 3, 16, 23, 59, 59), "2025-03-16", "2025-03-10"},
        // A week that begins in the previous month and year.
        {"UTC", utc(2025, 1, 1, 12), "2025-01-01", "2024-12-30"},
    };
    for (const DayCase& c : cases) {
        const UserCalendar calendar = UserCalendar::inTimeZone(c.zone);
        EXPECT_EQ(PracticeState::dayKey(c.instant, calendar), c.dayKey) << c.zone << " day " << c.dayKey;
        EXPECT_EQ(PracticeState::weekKey(c.instant, calendar), c.weekKey) << c.zone << " day " << c.dayKey;
    }
}

TEST(PracticeStateDays, ParseDay_RefusesEverythingThatIsNotExactlyADayKey)
{
    const char* refused[] = {
        "", "2024-02-30", "2023-02-29", "2024-13-01", "2024-2-03", "2024-02-3 ", "2024/02/03", "+024-02-03",
        "0000-01-01", "２０２４-02-03",
        "2024‐02-03", // with a typographic hyphen
        "2024-02-03\n",
        "1582-10-10", // Falls in the days that the calendar reform skipped.
    };
    for (const char* key : refused)
        EXPECT_FALSE(PracticeState::parseDay(key)) << '"' << key << '"';
    EXPECT_FALSE(PracticeState::parseDay(std::string_view("2024-02-0\0", 10)));
}

// What day keys have always been checked against: text that ICU's
// non-lenient "yyyy-MM-dd" parses in GMT with its Gregorian calendar (Julian
// before the reform) and formats back unchanged.
class ICUDayKeyReference {
public:
    ICUDayKeyReference()
    {
        UErrorCode status = U_ZERO_ERROR;
        const icu::Locale posix("en_US_POSIX");
        m_format = std::make_unique<icu::SimpleDateFormat>(icu::UnicodeString(u"yyyy-MM-dd"), posix, status);
        m_format->adoptCalendar(new icu::GregorianCalendar(*icu::TimeZone::getGMT(), posix, status));
        m_format->setLenient(false);
        if (U_FAILURE(status))
            throw std::runtime_error(u_errorName(status));
    }

    std::optional<Instant> parse(std::string_view key) const
    {
        const auto text = icu::UnicodeString::fromUTF8(icu::StringPiece(key.data(), static_cast<int32_t>(key.size())));
        UErrorCode status = U_ZERO_ERROR;
        const UDate parsed = m_format->parse(text, status);
        if (U_FAILURE(status))
            return std::nullopt;
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

std::string dayKeyText(int year, int month, int day)
{
    std::array<char, 32> key{};
    (void)std::snprintf(key.data(), key.size(), "%04d-%02d-%02d", year, month, day);
    return key.data();
}

TEST(PracticeStateDays, ParseDay_AgreesWithICUOnEveryKey)
{
    const ICUDayKeyReference icu;
    std::vector<std::string> keys = {
        "",
        "2024-02-3 ",
        " 2024-02-03",
        "2024-02-03\n",
        "2024/02/03",
        "+024-02-03",
        "-024-02-03",
        "2024-2-03",
        "02024-02-03",
        "２０２４-02-03",
        "2024‐02-03",
        "2024-02-0a",
        "2024-02-03T00:00",
        "24-02-03",
        std::string("2024-02-0\0", 10),
    };
    // Whole years around the edges: no year 0, the Julian leap years and
    // the skipped days of the reform, the epoch, century years, the last year.
    const std::pair<int, int> yearRanges[]
        = {{0, 2}, {1580, 1600}, {1899, 1901}, {1969, 1971}, {2000, 2000}, {2100, 2100}, {9998, 9999}};
    for (const auto& [first, last] : yearRanges)
        for (int year = first; year <= last; ++year)
            for (int month = 0; month <= 13; ++month)
                for (int day = 0; day <= 32; ++day)
                    keys.push_back(dayKeyText(year, month, day));
    // Every year's leap day and last day, which the leap rules decide.
    for (int year = 0; year <= 9999; ++year) {
        keys.push_back(dayKeyText(year, 2, 29));
        keys.push_back(dayKeyText(year, 12, 31));
    }
    for (const std::string& key : keys)
        EXPECT_EQ(PracticeState::parseDay(key), icu.parse(key)) << '"' << key << '"';
}

TEST(PracticeStateDays, DayKeys_RoundTripThroughParseDayAsMidnightUTC)
{
    EXPECT_EQ(PracticeState::parseDay("1970-01-01"), utc(1970, 1, 1));
    EXPECT_EQ(PracticeState::parseDay("9999-12-31"), utc(9999, 12, 31));
    // Years below one thousand keep their leading zeros.
    for (const char* key : {"0001-01-01", "0999-06-01", "1582-10-15", "1900-02-28", "2000-02-29", "2100-03-01"}) {
        const std::optional<Instant> day = PracticeState::parseDay(key);
        ASSERT_TRUE(day) << key;
        EXPECT_EQ(PracticeState::dayKey(*day, UserCalendar::utc()), key);
    }
}

TEST(PracticeStateDays, UserCalendar_RefusesUnknownZonesAndAcceptsCustomOffsets)
{
    EXPECT_THROW((void)UserCalendar::inTimeZone("Mars/Olympus_Mons"), std::invalid_argument);
    EXPECT_THROW((void)UserCalendar::inTimeZone(""), std::invalid_argument);
    const UserCalendar twoEast = UserCalendar::inTimeZone("GMT+02:00");
    EXPECT_EQ(PracticeState::dayKey(utc(2025, 3, 14, 21, 30), twoEast), "2025-03-14");
    EXPECT_EQ(PracticeState::dayKey(utc(2025, 3, 14, 22, 0), twoEast), "2025-03-15");
}

} // namespace
} // namespace velmora
