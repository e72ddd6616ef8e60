#include <set>
#include <string>

#include <gtest/gtest.h>

#include "DriverProcess.h"
#include "DynamicSymbols.h"

namespace velmora {
namespace {

// A renderer that links copies of ICU, GLib wrappers or JSON code of its own
// must never bind to ours, so nothing but the C interface may be visible.
TEST(NativeLibrary, SharedObject_ExportsExactlyTheCInterfaceUnderItsSoname)
{
    const test::DynamicSymbols symbols = test::DynamicSymbols::read(test::DriverProcess::builtLibrary());

    const std::set<std::string> interface = {
        "VelmoraStart",
        "VelmoraNotice",
        "VelmoraCopyEvent",
        "VelmoraFree",
        "VelmoraContentWidth",
        "VelmoraIsPondVisible",
        "VelmoraIsPondInteractive",
        "VelmoraReadPointer",
        "VelmoraReadPointerButtons",
        "VelmoraReadScroll",
        "VelmoraReadNavigation",
    };
    EXPECT_EQ(symbols.defined, interface);
    EXPECT_EQ(symbols.soname, "libVelmoraNative.so.0");
}

} // namespace
} // namespace velmora
