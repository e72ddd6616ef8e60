#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ExportsFixture.h"

namespace velmora {
namespace {

using test::DriverProcess;

class NativeExportsTest : public test::ExportsFixture { };

// What every reader gives when nothing is shown, in the driver's order:
// pointer, buttons, scroll and navigation at zero, the default width, and
// neither shown nor interactive.
constexpr const char* nothingShown = "0 0 0 0 0 0 0 0 0 780 0 0";

TEST_F(NativeExportsTest, Start_CalledTwice_BuildsOneHost)
{
    seed(onboardedState());

    const DriverProcess::Result result = drive("start-twice");

    ASSERT_EQ(result.status, 0) << result.errors;
    // The host's load publishes the state once; a second host would load
    // and publish again, and bring threads of its own.
    EXPECT_EQ(momentsInEvent(result.value("first").value_or("{}"), "smoking"), seededSmokingMoments);
    EXPECT_EQ(result.value("second"), "null");
    EXPECT_EQ(result.value("threadsAfterSecond"), result.value("threadsAfterFirst"));
}

// Before the start every function answers its default and a noticing
// counts nothing; after it, any thread gets the same answers.
TEST_F(NativeExportsTest, Calls_BeforeStartOrFromAnotherThread_AnswerAsOnTheFirstThread)
{
    seed(onboardedState());

    const DriverProcess::Result result = drive("threads", {"phone"});

    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.value("before"), "null");
    EXPECT_EQ(result.value("before.reading"), nothingShown);
    EXPECT_EQ(result.value("main.reading"), nothingShown);
    EXPECT_EQ(result.value("background.reading"), nothingShown);
    EXPECT_EQ(momentsInEvent(result.value("copiedOnMain").value_or("{}"), "phone"), 1);
    EXPECT_EQ(momentsInEvent(result.value("copiedInBackground").value_or("{}"), "phone"), 2);
}

// Whatever a renderer passes as a topic ID, the library carries on; IDs that
// name no selected topic change nothing, and the good ones that follow count.
// Two noticings before one read leave only the later envelope.
TEST_F(NativeExportsTest, Notice_WithBadTopicIDs_ChangesNothingAndKeepsWorking)
{
    seed(onboardedState());
    const std::vector<std::string> badIDs = {
        "(null)", // the driver passes a null pointer for this
        "",
        "\xff\xfe\xfd",
        "smok\xc3",
        "smoking\xed\xa0\x80",
        "not-a-topic",
        "alcohol", // a topic, but not a selected one
        "Smoking",
        std::string(100000, 'x'),
    };
    std::vector<std::string> arguments = badIDs;
    arguments.emplace_back("smoking");
    arguments.emplace_back("smoking");

    const DriverProcess::Result result = drive("notice", arguments);

    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(momentsInEvent(result.value("initial").value_or("{}"), "smoking"), seededSmokingMoments);
    EXPECT_EQ(momentsInEvent(result.value("event").value_or("{}"), "smoking"), seededSmokingMoments + 2);
    EXPECT_EQ(result.value("next"), "null");
    const PracticeState saved = PracticeState::fromJSON(test::fileBytes(stateFile()));
    EXPECT_EQ(saved.lotuses.size(), 1U);
    EXPECT_EQ(saved.selected, onboardedState().selected);
    EXPECT_EQ(momentsInFile("smoking"), seededSmokingMoments + 2);
}

} // namespace
} // namespace velmora
