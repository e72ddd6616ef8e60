#include <string>

#include <gtest/gtest.h>

#include "ExportsFixture.h"

namespace velmora {
namespace {

using test::DriverProcess;

class NativeExportsConcurrencyTest : public test::ExportsFixture { };

// Six threads call every function, start included, for two seconds. Every
// noticing must reach the file: each one hops to the main thread and is
// saved before the call returns, so none may be lost or counted twice.
TEST_F(NativeExportsConcurrencyTest, AllExports_FromManyThreads_LoseNoNoticing)
{
    seed(onboardedState());

    const DriverProcess::Result result = drive("stress", {"6", "2000", "smoking", "phone"});

    ASSERT_EQ(result.status, 0) << result.errors;
    const long noticings = std::stol(result.value("noticings").value_or("-1"));
    EXPECT_GT(noticings, 0);
    EXPECT_EQ(momentsInFile("smoking") - seededSmokingMoments + momentsInFile("phone"), noticings);
}

// The program ends while a thread still polls and the library's timer has
// fired: the library's thread must stop before anything it uses is
// destroyed, and the poller must get answers, not crashes.
TEST_F(NativeExportsConcurrencyTest, Exit_WhileAThreadPolls_EndsCleanly)
{
    seed(onboardedState());

    const DriverProcess::Result result = drive("exit-while-polling", {"phone"});

    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.value("exiting"), "yes");
    EXPECT_GT(momentsInFile("phone"), 0);
}

} // namespace
} // namespace velmora
