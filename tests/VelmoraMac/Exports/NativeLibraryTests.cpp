#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "DriverProcess.h"

namespace velmora {
namespace {

using test::DriverProcess;

// A renderer that links copies of ICU, GLib wrappers or JSON code of its own
// must never bind to ours, so nothing but the C interface may be visible.
TEST(NativeLibrary, SharedObject_ExportsExactlyTheCInterfaceUnderItsSoname)
{
    const std::string library = DriverProcess::builtLibrary().string();
    const DriverProcess::Result symbols = DriverProcess::runProgram({"nm", "-D", "--defined-only", "--without-symbol-versions", "--format=posix", library});
    ASSERT_EQ(symbols.status, 0) << symbols.errors;
    std::set<std::string> defined;
    std::istringstream lines(symbols.output);
    for (std::string name, type, rest; lines >> name >> type && std::getline(lines, rest);) {
        // Version names are absolute symbols, not code or data.
        if (type != "A")
            defined.insert(name);
    }
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
    EXPECT_EQ(defined, interface);

    const DriverProcess::Result headers = DriverProcess::runProgram({"objdump", "-p", library});
    ASSERT_EQ(headers.status, 0) << headers.errors;
    const std::vector<std::string> soname = headers.linesStartingWith("  SONAME");
    ASSERT_EQ(soname.size(), 1U) << headers.output;
    EXPECT_EQ(soname[0].substr(soname[0].find_last_of(' ') + 1), "libVelmoraNative.so.0");
}

} // namespace
} // namespace velmora
