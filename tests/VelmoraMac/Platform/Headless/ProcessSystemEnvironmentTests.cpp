#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include "VelmoraMac/Platform/Headless/ProcessSystemEnvironment.h"

namespace velmora {
namespace {

using Variables = ProcessSystemEnvironment::Variables;
using Languages = std::vector<std::string>;

struct LanguageCase {
    const char* name;
    Variables variables;
    Languages expected;
};

class ProcessSystemEnvironmentLanguages : public testing::TestWithParam<LanguageCase> { };

TEST_P(ProcessSystemEnvironmentLanguages, FollowGettextsRules)
{
    EXPECT_EQ(ProcessSystemEnvironment::languagesFrom(GetParam().variables), GetParam().expected);
}

std::vector<LanguageCase> languageCases()
{
    return {
        {"NothingSet", {}, {}},
        {"LangAlone", {{"LANG", "fr_CA.UTF-8"}}, {"fr_CA"}},
        {"LangC", {{"LANG", "C"}}, {}},
        {"LangCWithEncoding", {{"LANG", "C.UTF-8"}}, {}},
        {"LcMessagesBeforeLang", {{"LC_MESSAGES", "es_MX.UTF-8"}, {"LANG", "de_DE.UTF-8"}}, {"es_MX"}},
        {"LcAllBeforeLcMessages", {{"LC_ALL", "hi_IN"}, {"LC_MESSAGES", "es_MX"}, {"LANG", "de_DE"}}, {"hi_IN"}},
        {"EmptyLcAllCountsAsUnset", {{"LC_ALL", ""}, {"LANG", "ru_RU.UTF-8"}}, {"ru_RU"}},
        {"CInLcAllHidesLang", {{"LC_ALL", "C"}, {"LANG", "ru_RU.UTF-8"}}, {}},
        {"LanguageListInOrder", {{"LANGUAGE", "pt_BR:fr:de"}, {"LANG", "en_US.UTF-8"}}, {"pt_BR", "fr", "de"}},
        {"LanguageEntriesStripped", {{"LANGUAGE", "ru_RU.KOI8-R:fr_FR@euro"}, {"LANG", "en_US"}}, {"ru_RU", "fr_FR"}},
        {"LanguageEmptyEntriesSkipped", {{"LANGUAGE", ":fr::de:"}, {"LANG", "en_US"}}, {"fr", "de"}},
        {"LanguageCEntriesSkipped", {{"LANGUAGE", "C:fr:POSIX"}, {"LANG", "en_US"}}, {"fr"}},
        {"LanguageWithNothingUsableFallsBackToTheLocale", {{"LANGUAGE", "::C"}, {"LANG", "es_ES.UTF-8"}}, {"es_ES"}},
        {"LanguageIgnoredInTheCLocale", {{"LANGUAGE", "fr:de"}, {"LANG", "C.UTF-8"}}, {}},
        {"OtherVariablesIgnored", {{"LC_CTYPE", "fr_FR.UTF-8"}, {"LC_TIME", "de_DE"}}, {}},
    };
}

INSTANTIATE_TEST_SUITE_P(Table, ProcessSystemEnvironmentLanguages, testing::ValuesIn(languageCases()),
    [](const testing::TestParamInfo<LanguageCase>& param) { return std::string(param.param.name); });

struct ZoneCase {
    const char* name;
    std::optional<std::string> tz;
    std::optional<std::string> expected;
};

class ProcessSystemEnvironmentZone : public testing::TestWithParam<ZoneCase> { };

TEST_P(ProcessSystemEnvironmentZone, IsTheDatabaseZoneThatTzNames)
{
    Variables variables;
    if (GetParam().tz)
        variables.emplace("TZ", *GetParam().tz);
    EXPECT_EQ(ProcessSystemEnvironment::timeZoneFrom(variables), GetParam().expected);
}

std::vector<ZoneCase> zoneCases()
{
    return {
        {"Unset", std::nullopt, std::nullopt},
        {"Empty", "", std::nullopt},
        {"AreaAndCity", "Europe/Berlin", "Europe/Berlin"},
        {"GlibcColon", ":America/Sao_Paulo", "America/Sao_Paulo"},
        {"ZoneinfoPath", "/usr/share/zoneinfo/Asia/Kolkata", "Asia/Kolkata"},
        {"PosixVariantPath", "/usr/share/zoneinfo/posix/Australia/Lord_Howe", "Australia/Lord_Howe"},
        {"PathOutsideZoneinfo", "/etc/localtime", std::nullopt},
        {"PosixRule", "CET-1CEST,M3.5.0,M10.5.0/3", std::nullopt},
        {"CustomOffsetOfOppositeSign", "GMT+2", std::nullopt},
        {"Unknown", "Mars/Olympus_Mons", std::nullopt},
    };
}

INSTANTIATE_TEST_SUITE_P(Table, ProcessSystemEnvironmentZone, testing::ValuesIn(zoneCases()),
    [](const testing::TestParamInfo<ZoneCase>& param) { return std::string(param.param.name); });

// An environment a test can change under a live ProcessSystemEnvironment.
class ProcessSystemEnvironmentTest : public testing::Test {
protected:
    ProcessSystemEnvironment environment()
    {
        return ProcessSystemEnvironment([this] { return m_variables; });
    }

    Variables m_variables;
};

TEST_F(ProcessSystemEnvironmentTest, Calendar_FollowsTzButOnlyOnceToldOfAChange)
{
    m_variables = {{"TZ", "Asia/Tokyo"}};
    ProcessSystemEnvironment system = environment();
    EXPECT_EQ(system.currentCalendar().timeZoneIdentifier(), "Asia/Tokyo");

    m_variables = {{"TZ", ":Europe/Berlin"}};
    EXPECT_EQ(system.currentCalendar().timeZoneIdentifier(), "Asia/Tokyo");
    system.timeZoneDidChange();
    EXPECT_EQ(system.currentCalendar().timeZoneIdentifier(), "Europe/Berlin");
}

TEST_F(ProcessSystemEnvironmentTest, Calendar_FallsBackToTheHostsZoneWhenTzIsNotUnderstood)
{
    std::unique_ptr<icu::TimeZone> host(icu::TimeZone::detectHostTimeZone());
    icu::UnicodeString hostIdentifier;
    host->getID(hostIdentifier);
    std::string expected;
    hostIdentifier.toUTF8String(expected);
    if (expected == "Etc/Unknown")
        expected = "UTC";

    m_variables = {{"TZ", "CET-1CEST,M3.5.0,M10.5.0/3"}};
    EXPECT_EQ(environment().currentCalendar().timeZoneIdentifier(), expected);
}

TEST_F(ProcessSystemEnvironmentTest, PreferredLanguages_AreReadAnewOnEveryCall)
{
    m_variables = {{"LANG", "fr_FR.UTF-8"}};
    const ProcessSystemEnvironment system = environment();
    EXPECT_EQ(system.preferredLanguages(), Languages{"fr_FR"});
    m_variables = {{"LANG", "hi_IN.UTF-8"}, {"LANGUAGE", "pi:hi"}};
    EXPECT_EQ(system.preferredLanguages(), (Languages{"pi", "hi"}));
}

} // namespace
} // namespace velmora
