#include <gtest/gtest.h>

#include "VelmoraMac/Platform/Desktop/SingleInstance.h"

namespace velmora {
namespace {

// A second start reopening the first runs through DesktopApplication's
// test and the end-to-end one.
TEST(SingleInstance, NoBus_RunsAlone)
{
    SingleInstance::Claim claimed = SingleInstance::Claim::first;
    EXPECT_FALSE(SingleInstance::claim(
        nullptr, [] {}, claimed));
    EXPECT_EQ(claimed, SingleInstance::Claim::unknown);
}

} // namespace
} // namespace velmora
