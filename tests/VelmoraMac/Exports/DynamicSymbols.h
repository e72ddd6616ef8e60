#pragma once

#include <filesystem>
#include <optional>
#include <set>
#include <string>

namespace velmora::test {

// What a 64-bit ELF shared object offers the dynamic linker, read from the
// file itself rather than from a tool's output format.
struct DynamicSymbols {
    // DT_SONAME, when the file has one.
    std::optional<std::string> soname;
    // Symbols of .dynsym that the file defines for others: global, weak or
    // unique bindings, in a section of the file. Version names (absolute
    // symbols) are left out.
    std::set<std::string> defined;

    // Throws std::runtime_error for a file that is not a well-formed 64-bit
    // ELF object of this machine's byte order.
    static DynamicSymbols read(const std::filesystem::path& file);
};

} // namespace velmora::test
