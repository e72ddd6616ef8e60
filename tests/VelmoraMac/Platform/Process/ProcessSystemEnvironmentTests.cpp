#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include "VelmoraMac/Platform/Process/ProcessSystemEnvironment.h"

namespace velmora {
namespace {

using Variables = ProcessSystemEnvironment::Variables;
using Languages = std::vector<std::string>;

TEST(ProcessSystemEnvironment, Languages_FollowGettextsRules)
{
    struct LanguageCase {
        const char* name = nullptr;
        Variables variables;
        Languages expected;
    };
    const LanguageCase cases[] = {
        {"nothing set", {}, {}},
        {"LANG alone", {{"LANG", "fr_CA.UTF-8"}}, {"fr_CA"}},
        {"LANG C with an encoding", {{"LANG", "C.UTF-8"}}, {}},
        {"LC_MESSAGES before LANG", {{"LC_MESSAGES", "es_MX.UTF-8"}, {"LANG", "de_DE.UTF-8"}}, {"es_MX"}},
        {"LC_ALL before LC_MESSAGES", {{"LC_ALL", "hi_IN"}, {"LC_MESSAGES", "es_MX"}, {"LANG", "de_DE"}}, {"hi_IN"}},
        {"empty LC_ALL counts as unset", {{"LC_ALL", ""}, {"LANG", "ru_RU.UTF-8"}}, {"ru_RU"}},
        {"C in LC_ALL hides LANG", {{"LC_ALL", "C"}, {"LANG", "ru_RU.UTF-8"}}, {}},
        {"LANGUAGE stripped, empty and C entries skipped",
            {{"LANGUAGE", ":ru_RU.KOI8-R::C:fr_FR@euro:POSIX:de"}, {"LANG", "en_US"}}, {"ru_RU", "fr_FR", "de"}},
        {"LANGUAGE with nothing usable falls back to the locale", {{"LANGUAGE", "::C"}, {"LANG", "es_ES.UTF-8"}},
            {"es_ES"}},
        {"LANGUAGE ignored in the C locale", {{"LANGUAGE", "fr:de"}, {"LANG", "C.UTF-8"}}, {}},
        {"other categories ignored", {{"LC_CTYPE", "fr_FR.UTF-8"}, {"LC_TIME", "de_DE"}}, {}},
    };
    for (const LanguageCase& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(ProcessSystemEnvironment::languagesFrom(c.variables), c.expected);
    }
}

TEST(ProcessSystemEnvironment, TimeZone_IsTheDatabaseZoneThatTzNames)
{
    struct ZoneCase {
        std::optional<std::string> tz;
        std::optional<std::string> expected;
    };
    const ZoneCase cases[] = {
        {std::nullopt, std::nullopt},
        {"", std::nullopt},
        {"Europe/Berlin", "Europe/Berlin"},
        {":America/Sao_Paulo", "America/Sao_Paulo"},
        {"/usr/share/zoneinfo/Asia/Kolkata", "Asia/Kolkata"},
        {"/usr/share/zoneinfo/posix/Australia/Lord_Howe", "Australia/Lord_Howe"},
        {"/etc/localtime", std::nullopt},
        {"CET-1CEST,M3.5.0,M10.5.0/3", std::nullopt},
        // POSIX offsets have the opposite sign to the database's Etc/GMT+2.
        {"GMT+2", std::nullopt},
        {"Mars/Olympus_Mons", std::nullopt},
    };
    for (const ZoneCase& c : cases) {
        SCOPED_TRACE(c.tz.value_or("(unset)"));
        Variables variables;
        if (c.tz)
            variables.emplace("TZ", *c.tz);
        EXPECT_EQ(ProcessSystemEnvironment::timeZoneFrom(variables), c.expected);
    }
}

TEST(ProcessSystemEnvironment, CalendarFollowsTzOnlyOnceToldOfAChange_AndLanguagesAreReadOnEveryCall)
{
    Variables variables = {{"TZ", "Asia/Tokyo"}, {"LANG", "fr_FR.UTF-8"}};
    ProcessSystemEnvironment system([&variables] { return variables; });
    EXPECT_EQ(system.currentCalendar().timeZoneIdentifier(), "Asia/Tokyo");
    EXPECT_EQ(system.preferredLanguages(), Languages{"fr_FR"});

    variables = {{"TZ", ":Europe/Berlin"}, {"LANG", "hi_IN.UTF-8"}, {"LANGUAGE", "pi:hi"}};
    EXPECT_EQ(system.currentCalendar().timeZoneIdentifier(), "Asia/Tokyo");
    EXPECT_EQ(system.preferredLanguages(), (Languages{"pi", "hi"}));
    system.timeZoneDidChange();
    EXPECT_EQ(system.currentCalendar().timeZoneIdentifier(), "Europe/Berlin");

    // A zone TZ does not name falls back to the host's.
    std::unique_ptr<icu::TimeZone> host(icu::TimeZone::detectHostTimeZone());
    icu::UnicodeString hostIdentifier;
    host->getID(hostIdentifier);
    std::string expected;
    hostIdentifier.toUTF8String(expected);
    variables = {{"TZ", "CET-1CEST,M3.5.0,M10.5.0/3"}};
    system.timeZoneDidChange();
    EXPECT_EQ(system.currentCalendar().timeZoneIdentifier(), expected == "Etc/Unknown" ? "UTC" : expected);
}

} // namespace
} // namespace velmora
