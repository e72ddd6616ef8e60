#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "Topic.h"

namespace velmora {

// All user-visible content that is not built into the library: the topics,
// the language names, the icons, the palette and the text tables of the
// seven practice languages, read from the content file once at start-up.
//
// Immutable once built, and built only from content that is complete for the
// fixed topics and languages. Lookups never fail and parse no JSON: every
// answer is resolved while loading, because the snapshot asks for texts on
// every change and the panel on every redraw. Safe to read from any thread.
class ContentCatalog {
public:
    using StringMap = std::map<std::string, std::string, std::less<>>;

    // The typed part of the content file. The text tables are not part of
    // it: their values are of mixed types.
    struct Header {
        std::vector<Topic> topics;
        StringMap languages;
        StringMap uiIcons;
        StringMap palette;

        // Strict decoding: a missing member or a member of the wrong type
        // (a fractional "group" included) throws the JSON library's error.
        // Members not listed are ignored.
        static Header fromJSON(const nlohmann::json& document);

        bool operator==(const Header&) const = default;
    };

    // Reads and validates the content file at `url`. Throws the file
    // system's error when it cannot be read, the JSON library's error when
    // it is malformed or a typed member is missing or of the wrong type, and
    // PracticeError::invalidData when the content is incomplete.
    explicit ContentCatalog(const std::filesystem::path& url);

    // The same from the file's bytes.
    static ContentCatalog fromJSON(std::string_view text);

    // In file order, which is the display and snapshot order.
    [[nodiscard]] const std::vector<Topic>& topics() const { return m_header.topics; }
    // Display name per language code.
    [[nodiscard]] const StringMap& languages() const { return m_header.languages; }
    // Icon name → base64 of the image.
    [[nodiscard]] const StringMap& uiIcons() const { return m_header.uiIcons; }
    // Palette key → "#" and six hexadecimal digits.
    [[nodiscard]] const StringMap& palette() const { return m_header.palette; }
    // Language code → text table, as written in the file.
    [[nodiscard]] const nlohmann::json& strings() const { return m_strings; }

    // The text for `key` in `language`. A built-in text (MacStrings) wins,
    // in the language or else in English, and is returned as it stands.
    // Otherwise the catalog's table for the language gives it, or failing
    // that the English table; an entry that is not a string, or none at all,
    // gives `key` itself. With a count, every "{count}" in that result
    // becomes the count in decimal. Never fails.
    [[nodiscard]] std::string text(
        std::string_view key, std::string_view language, std::optional<std::int64_t> count = std::nullopt) const;

    // The display name of topic group `index` from the "groups" list of the
    // language's own table, without an English fallback. Empty when the
    // table has no list of strings there or the index lies outside it.
    [[nodiscard]] std::string group(std::int64_t index, std::string_view language) const;

private:
    // A resolved answer of text().
    struct ResolvedText {
        std::string text;
        // The text cut at every "{count}"; empty when a count changes
        // nothing, as for built-in texts, which are never substituted.
        std::vector<std::string> countPieces;
    };
    using TextTable = std::map<std::string, ResolvedText, std::less<>>;

    ContentCatalog(Header header, nlohmann::json strings);

    [[nodiscard]] TextTable resolvedTexts(std::string_view language) const;

    Header m_header;
    nlohmann::json m_strings;
    // Per language code of the catalog or of the built-in texts; "en" is
    // always there.
    std::map<std::string, TextTable, std::less<>> m_texts;
    // Per language code whose table holds a list of strings as "groups".
    std::map<std::string, std::vector<std::string>, std::less<>> m_groups;
};

} // namespace velmora
