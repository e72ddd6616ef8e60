#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace velmora::MacStrings {

// Text key → text.
using Table = std::map<std::string, std::string, std::less<>>;
// Language code → text table.
using Tables = std::map<std::string, Table, std::less<>>;

// The texts built into the library: those that must show even when the
// content resource cannot be loaded (the start-up alert) and those that
// belong to the shell rather than to the practice content. Six tables, "en",
// "ru", "fr", "es", "pt" and "hi", each holding the same sixteen keys, so a
// lookup of one of them in an existing table never misses. There is no table
// for "pi"; Pāli readers get English here. Built once, on first use.
const Tables& values();

// The table for `language`, or the "en" table when there is none.
const Table& table(std::string_view language);

} // namespace velmora::MacStrings
