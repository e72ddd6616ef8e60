#include <optional>

#include <gtest/gtest.h>
#include <unistd.h>

#include "VelmoraMac/Platform/Desktop/DesktopPowerAssertionRegistry.h"
#include "VelmoraMac/Platform/Headless/HeadlessDiagnosticLog.h"
#include "VelmoraMac/Services/DisplaySleepPolicy.h"

namespace velmora {
namespace {

// Nothing a desktop process holds is visible, so the policy lowers nothing
// and says nothing, tick after tick.
TEST(DesktopPowerAssertionRegistry, Policy_FindsNothingToLowerAndLogsNothing)
{
    DesktopPowerAssertionRegistry registry;
    const std::optional<nlohmann::json> assertions = registry.assertionsByProcess();
    ASSERT_TRUE(assertions);
    EXPECT_EQ(*assertions, nlohmann::json::object());
    EXPECT_NE(registry.setAssertionLevel(1, PowerAssertionRegistry::levelOff), 0);

    HeadlessDiagnosticLog log;
    for (int tick = 0; tick < 3; ++tick)
        DisplaySleepPolicy::allowSystemTimer(registry, log, static_cast<std::int32_t>(::getpid()));
    EXPECT_TRUE(log.lines().empty());
}

} // namespace
} // namespace velmora
