#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "VelmoraMac/Platform/Headless/HeadlessDiagnosticLog.h"
#include "VelmoraMac/Platform/Headless/HeadlessPowerAssertionRegistry.h"
#include "VelmoraMac/Services/DisplaySleepPolicy.h"

namespace velmora {
namespace {

using nlohmann::json;
using LevelChange = HeadlessPowerAssertionRegistry::LevelChange;

constexpr std::int32_t ownProcess = 4242;
constexpr std::int32_t otherProcess = 977;

// A record as the rendering program's display assertion looks while on.
json displayAssertion(std::uint32_t identifier)
{
    return {
        {"AssertType", "PreventUserIdleDisplaySleep"},
        {"AssertName", "disable screen saver"},
        {"AssertLevel", 255},
        {"AssertionId", identifier},
        // Keys the policy does not read, as the service adds them.
        {"AssertPID", ownProcess},
        {"AssertTimeoutSeconds", 0},
    };
}

json with(json record, const char* key, json value)
{
    record[key] = std::move(value);
    return record;
}

json without(json record, const char* key)
{
    record.erase(key);
    return record;
}

class DisplaySleepPolicyTest : public testing::Test {
protected:
    void tick() { DisplaySleepPolicy::allowSystemTimer(registry, log, ownProcess); }

    HeadlessPowerAssertionRegistry registry;
    HeadlessDiagnosticLog log;
};

struct RecordCase {
    const char* name = "";
    json record;
    bool turnedOff = false;
};

TEST_F(DisplaySleepPolicyTest, OwnRecord_IsTurnedOffOnlyWhenEveryKeyHasTheRightTypeAndValue)
{
    const json on = displayAssertion(7);
    const RecordCase cases[] = {
        {"the display assertion at full level", on, true},
        {"largest 32-bit identifier", with(on, "AssertionId", 4294967295U), true},
        {"identifier written as a whole fraction", with(on, "AssertionId", 7.0), true},
        {"another name", with(on, "AssertName", "com.example.video"), false},
        {"another type with that name", with(on, "AssertType", "PreventUserIdleSystemSleep"), false},
        {"a level between off and on", with(on, "AssertLevel", 254), false},
        {"level as text", with(on, "AssertLevel", "255"), false},
        {"no identifier", without(on, "AssertionId"), false},
        {"identifier beyond 32 bits", with(on, "AssertionId", 4294967296U), false},
        {"fractional identifier", with(on, "AssertionId", 7.5), false},
    };
    for (const auto& c : cases) {
        HeadlessPowerAssertionRegistry fresh;
        fresh.setAssertions(ownProcess, json::array({c.record}));
        DisplaySleepPolicy::allowSystemTimer(fresh, log, ownProcess);
        const auto changes = fresh.levelChanges();
        if (c.turnedOff) {
            ASSERT_EQ(changes.size(), 1U) << c.name;
            EXPECT_EQ(changes[0].level, 0) << c.name;
        } else {
            EXPECT_TRUE(changes.empty()) << c.name;
        }
    }
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(DisplaySleepPolicyTest, OtherProcesses_AreNeverTouched)
{
    registry.setAssertions(otherProcess, json::array({displayAssertion(11)}));
    tick();
    EXPECT_TRUE(registry.levelChanges().empty()) << "no assertion of its own, yet one was changed";

    registry.setAssertions(ownProcess, json::array({displayAssertion(12)}));
    registry.setAssertions(ownProcess + 1, json::array({displayAssertion(13)}));
    tick();
    EXPECT_EQ(registry.levelChanges(), (std::vector<LevelChange>{{12, 0, 0}}));
    EXPECT_EQ(registry.assertions(otherProcess)[0]["AssertLevel"], 255);
    EXPECT_EQ(registry.assertions(ownProcess + 1)[0]["AssertLevel"], 255);
}

TEST_F(DisplaySleepPolicyTest, FailedChange_LogsTheResultOncePerRecordAndTickAndGoesOn)
{
    registry.setAssertions(
        ownProcess, json::array({displayAssertion(1), displayAssertion(2), displayAssertion(3), displayAssertion(4)}));
    // A typical service error: its code has the sign bit set.
    registry.setResult(2, static_cast<std::int32_t>(0xE00002C2U));
    registry.setResult(4, 5);
    tick();
    EXPECT_EQ(log.lines().size(), 2U);
    EXPECT_EQ(log.lines().front(), "Velmora: could not allow display sleep (-536870206)") << "the code read as signed";
    const json records = registry.assertions(ownProcess);
    EXPECT_EQ(records[0]["AssertLevel"], 0);
    EXPECT_EQ(records[1]["AssertLevel"], 255);
    EXPECT_EQ(records[2]["AssertLevel"], 0) << "a failure stopped the records after it";
    EXPECT_EQ(records[3]["AssertLevel"], 255);

    // The failing ones stay on, so each tick tries them, and logs, again.
    registry.setResult(4, 0);
    tick();
    EXPECT_EQ(log.lines().size(), 3U);
    EXPECT_EQ(registry.assertions(ownProcess)[3]["AssertLevel"], 0);
}

struct AnswerCase {
    const char* name = "";
    json answer;
    std::size_t changes = 0;
};

TEST_F(DisplaySleepPolicyTest, MalformedAnswer_ChangesNothingAndLogsNothing)
{
    const json own = json::array({displayAssertion(7)});
    const json other = json::array({displayAssertion(8)});
    const AnswerCase cases[] = {
        {"well formed (the control)", {{"4242", own}, {"977", other}}, 1},
        {"a list of records", json::array({displayAssertion(7)}), 0},
        {"own entry a single record, not a list", {{"4242", displayAssertion(7)}}, 0},
        {"own list holding a number besides the record", {{"4242", json::array({displayAssertion(7), 1})}}, 0},
        {"a key that is not a number", {{"4242", own}, {"renderer", other}}, 0},
        {"a key with a leading zero", {{"4242", own}, {"0977", other}}, 0},
        {"a key beyond 32 bits", {{"4242", own}, {"4294967296", other}}, 0},
    };
    for (const auto& c : cases) {
        HeadlessPowerAssertionRegistry fresh;
        fresh.setResult(7, 0);
        fresh.answerVerbatim(c.answer);
        DisplaySleepPolicy::allowSystemTimer(fresh, log, ownProcess);
        EXPECT_EQ(fresh.levelChanges().size(), c.changes) << c.name;
    }
    EXPECT_TRUE(log.lines().empty());
}

} // namespace
} // namespace velmora
