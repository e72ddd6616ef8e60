#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <dlfcn.h>
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
    const DriverProcess::Result symbols = DriverProcess::runProgram(
        {"nm", "-D", "--defined-only", "--without-symbol-versions", "--format=posix", library});
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

// A renderer that closes its handle must not pull the library out from
// under its own threads, windows and tray item: it is linked to stay.
TEST(NativeLibrary, SharedObject_StaysLoadedWhenClosed)
{
    const std::string library = DriverProcess::builtLibrary().string();
    const DriverProcess::Result dynamic = DriverProcess::runProgram({"readelf", "--dynamic", library});
    ASSERT_EQ(dynamic.status, 0) << dynamic.errors;
    const std::vector<std::string> flags = dynamic.linesStartingWith(" 0x000000006ffffffb (FLAGS_1)");
    ASSERT_EQ(flags.size(), 1U) << dynamic.output;
    EXPECT_NE(flags[0].find("NODELETE"), std::string::npos) << flags[0];

    void* handle = ::dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(handle, nullptr) << ::dlerror(); // NOLINT(concurrency-mt-unsafe): one thread here
    EXPECT_EQ(::dlclose(handle), 0);
    void* again = ::dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NOLOAD);
    EXPECT_NE(again, nullptr) << "dlclose unloaded the library";
}

} // namespace
} // namespace velmora
