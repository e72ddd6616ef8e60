// Untrusted bytes through the path that loading the content file takes:
// decoding, validation and the lookup tables built from it. Every input has
// to end in one of three ways: the JSON library's error, PracticeError::
// invalidData, or a catalog that holds exactly the fixed topics and languages
// and whose lookups, resolved in advance, answer what the lookup rules say
// when followed step by step on its raw text tables. Anything else, including
// any other exception, aborts, which is what the fuzzer reports.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "VelmoraCore/PracticeError.h"
#include "VelmoraCore/PracticeState.h"
#include "VelmoraMac/ContentCatalog.h"
#include "VelmoraMac/MacStrings.h"

namespace velmora {
namespace {

using nlohmann::json;

// Enough keys and languages to cover every table of a small input without
// letting a large one take minutes per run.
constexpr std::size_t keysChecked = 48;
constexpr std::size_t languagesChecked = 12;

[[noreturn]] void finding(std::string_view what)
{
    std::cerr << "ContentCatalogFuzzer: " << what << '\n';
    std::abort();
}

std::optional<ContentCatalog> loaded(std::string_view text)
{
    try {
        return ContentCatalog::fromJSON(text);
    } catch (const json::exception&) {
        return std::nullopt;
    } catch (const PracticeError& error) {
        if (error.kind() != PracticeError::invalidData)
            finding(std::string("loading failed with another kind of PracticeError: ") + error.what());
        return std::nullopt;
    }
}

// The lookup rules, step by step, on the raw tables.
std::string expectedText(const ContentCatalog& catalog, const std::string& key, const std::string& language,
    std::optional<std::int64_t> count)
{
    for (const std::string& code : {language, std::string("en")}) {
        const auto table = MacStrings::values().find(code);
        if (table == MacStrings::values().end())
            continue;
        const auto text = table->second.find(key);
        if (text != table->second.end())
            return text->second;
    }
    const json* entry = nullptr;
    for (const std::string& code : {language, std::string("en")}) {
        const auto table = catalog.strings().find(code);
        if (table != catalog.strings().end() && table->contains(key)) {
            entry = &table->at(key);
            break;
        }
    }
    std::string result = entry != nullptr && entry->is_string() ? entry->get<std::string>() : key;
    if (count) {
        const std::string placeholder = "{count}";
        const std::string decimal = std::to_string(*count);
        for (std::size_t at = result.find(placeholder); at != std::string::npos;
             at = result.find(placeholder, at + decimal.size()))
            result.replace(at, placeholder.size(), decimal);
    }
    return result;
}

std::string expectedGroup(const ContentCatalog& catalog, std::int64_t index, const std::string& language)
{
    const auto table = catalog.strings().find(language);
    if (table == catalog.strings().end() || !table->contains("groups"))
        return {};
    const json& groups = table->at("groups");
    if (!groups.is_array() || index < 0 || static_cast<std::uint64_t>(index) >= groups.size())
        return {};
    for (const json& group : groups) {
        if (!group.is_string())
            return {};
    }
    return groups[static_cast<std::size_t>(index)].get<std::string>();
}

void checkCatalog(const ContentCatalog& catalog)
{
    std::set<std::string> ids;
    for (const Topic& topic : catalog.topics()) {
        ids.insert(topic.id);
        if (topic.names.size() != PracticeState::languages().size()
            || topic.descriptions.size() != PracticeState::languages().size())
            finding("a topic without one name and description per language was accepted: " + topic.id);
    }
    if (ids.size() != catalog.topics().size()
        || !std::equal(ids.begin(), ids.end(), PracticeState::topicIDs().begin(), PracticeState::topicIDs().end()))
        finding("topics other than the fixed ones were accepted");

    std::vector<std::string> languages = {"de", ""};
    std::vector<std::string> keys = {"missing", "{count}", "groups"};
    for (const auto& [language, table] : MacStrings::values()) {
        languages.push_back(language);
        for (const auto& [key, text] : table)
            keys.push_back(key);
    }
    for (const auto& [language, table] : catalog.strings().items()) {
        if (languages.size() < languagesChecked)
            languages.push_back(language);
        for (const auto& [key, value] : table.items()) {
            if (keys.size() < keysChecked)
                keys.push_back(key);
        }
    }
    for (const std::string& language : languages) {
        for (const std::string& key : keys) {
            for (const std::optional<std::int64_t> count :
                {std::optional<std::int64_t>(), std::optional<std::int64_t>(-7), std::optional<std::int64_t>(1234)}) {
                if (catalog.text(key, language, count) != expectedText(catalog, key, language, count))
                    finding(std::string("text(\"").append(key).append("\", \"").append(language).append(
                        "\") differs from the lookup rules"));
            }
        }
        for (const std::int64_t index : {-1, 0, 1, 4, 5})
            if (catalog.group(index, language) != expectedGroup(catalog, index, language))
                finding("group(" + std::to_string(index) + ", \"" + language + "\") differs from the lookup rules");
    }
}

} // namespace
} // namespace velmora

// NOLINTNEXTLINE(readability-identifier-naming): the name libFuzzer calls
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    try {
        if (const std::optional<velmora::ContentCatalog> catalog
            = velmora::loaded(std::string_view(reinterpret_cast<const char*>(data), size)))
            velmora::checkCatalog(*catalog);
    } catch (const std::exception& error) {
        velmora::finding(std::string("unexpected exception: ") + error.what());
    } catch (...) {
        velmora::finding("unexpected exception of an unknown type");
    }
    return 0;
}
