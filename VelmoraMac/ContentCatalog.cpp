#include "ContentCatalog.h"

#include <array>
#include <charconv>
#include <set>
#include <utility>

#include "MacStrings.h"
#include "VelmoraCore/DurableFile.h"
#include "VelmoraCore/PracticeError.h"
#include "VelmoraCore/PracticeState.h"
#include "VelmoraCore/StrictJSON.h"

namespace velmora {

namespace {

namespace strict = StrictJSON;
using nlohmann::json;

constexpr std::string_view countPlaceholder = "{count}";

// Like StrictJSON::member, but the error names the whole path, such as
// "topics[3].icon", so that a broken content file can be fixed.
const json& member(const json& object, std::string_view key, const std::string& where)
{
    const auto found = object.find(key);
    if (found == object.end())
        throw json::out_of_range::create(403, "key '" + where + "' not found", nullptr);
    return *found;
}

std::vector<std::string> decodeStrings(const json& object, std::string_view key, const std::string& where)
{
    const std::string path = where + "." + std::string(key);
    const json& array = strict::array(member(object, key, path), path);
    std::vector<std::string> strings;
    strings.reserve(array.size());
    for (std::size_t index = 0; index < array.size(); ++index)
        strings.push_back(strict::string(array[index], path + "[" + std::to_string(index) + "]"));
    return strings;
}

Topic decodeTopic(const json& value, const std::string& where)
{
    strict::object(value, where);
    Topic topic;
    topic.id = strict::string(member(value, "id", where + ".id"), where + ".id");
    topic.group = strict::integer(member(value, "group", where + ".group"), where + ".group");
    topic.color = strict::string(member(value, "color", where + ".color"), where + ".color");
    topic.names = decodeStrings(value, "names", where);
    topic.descriptions = decodeStrings(value, "descriptions", where);
    topic.icon = strict::string(member(value, "icon", where + ".icon"), where + ".icon");
    return topic;
}

ContentCatalog::StringMap decodeStringMap(const json& root, std::string_view key)
{
    const std::string where(key);
    const json& object = strict::object(member(root, key, where), where);
    ContentCatalog::StringMap strings;
    for (const auto& [name, value] : object.items()) {
        std::string path = where + ".";
        path += name;
        strings.emplace(name, strict::string(value, path));
    }
    return strings;
}

[[noreturn]] void incomplete()
{
    throw PracticeError(PracticeError::invalidData);
}

// The "strings" member when it is an object of objects.
json takeTextTables(json& document)
{
    const auto found = document.find("strings");
    if (found == document.end() || !found->is_object())
        incomplete();
    for (const json& table : *found) {
        if (!table.is_object())
            incomplete();
    }
    return std::move(*found);
}

void requireFixedTopics(const std::vector<Topic>& topics)
{
    PracticeState::StringSet ids;
    for (const Topic& topic : topics)
        ids.insert(topic.id);
    // Comparing sizes as well refuses a topic listed twice, which would be
    // shown twice in every list of topics.
    if (ids != PracticeState::topicIDs() || topics.size() != ids.size())
        incomplete();
    const std::size_t languageCount = PracticeState::languages().size();
    for (const Topic& topic : topics) {
        if (topic.names.size() != languageCount || topic.descriptions.size() != languageCount)
            incomplete();
    }
}

std::vector<std::string> splitAtCount(std::string_view text)
{
    std::vector<std::string> pieces;
    for (std::size_t placeholder = text.find(countPlaceholder); placeholder != std::string_view::npos;
         placeholder = text.find(countPlaceholder)) {
        pieces.emplace_back(text.substr(0, placeholder));
        text.remove_prefix(placeholder + countPlaceholder.size());
    }
    if (!pieces.empty())
        pieces.emplace_back(text);
    return pieces;
}

std::string joinedWithCount(const std::vector<std::string>& pieces, std::int64_t count)
{
    // Room for the longest int64, "-9223372036854775808".
    std::array<char, 24> digits{};
    const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), count);
    (void)error; // The buffer fits every int64, so to_chars cannot fail.
    const std::string_view decimal(digits.data(), static_cast<std::size_t>(end - digits.data()));

    std::size_t size = decimal.size() * (pieces.size() - 1);
    for (const std::string& piece : pieces)
        size += piece.size();
    std::string joined;
    joined.reserve(size);
    joined += pieces.front();
    for (std::size_t index = 1; index < pieces.size(); ++index) {
        joined += decimal;
        joined += pieces[index];
    }
    return joined;
}

} // namespace

ContentCatalog::Header ContentCatalog::Header::fromJSON(const json& document)
{
    const json& root = strict::object(document, "the content catalog");
    Header header;
    const json& topics = strict::array(member(root, "topics", "topics"), "topics");
    header.topics.reserve(topics.size());
    for (std::size_t index = 0; index < topics.size(); ++index)
        header.topics.push_back(decodeTopic(topics[index], "topics[" + std::to_string(index) + "]"));
    header.languages = decodeStringMap(root, "languages");
    header.uiIcons = decodeStringMap(root, "uiIcons");
    header.palette = decodeStringMap(root, "palette");
    return header;
}

ContentCatalog::ContentCatalog(const std::filesystem::path& url)
    : ContentCatalog(fromJSON(DurableFile::read(url)))
{
}

ContentCatalog ContentCatalog::fromJSON(std::string_view text)
{
    json document = strict::parse(text);
    Header header = Header::fromJSON(document);
    // The typed decoding has already insisted on an object, so the untyped
    // view of the same document needs no check of its own.
    json tables = takeTextTables(document);
    requireFixedTopics(header.topics);
    for (const std::string& language : PracticeState::languages()) {
        if (!tables.contains(language))
            incomplete();
    }
    return {std::move(header), std::move(tables)};
}

ContentCatalog::ContentCatalog(Header header, json strings)
    : m_header(std::move(header))
    , m_strings(std::move(strings))
{
    for (const auto& [language, table] : MacStrings::values())
        m_texts.emplace(language, resolvedTexts(language));
    for (const auto& [language, table] : m_strings.items()) {
        if (!m_texts.contains(language))
            m_texts.emplace(language, resolvedTexts(language));
        const auto groups = table.find("groups");
        if (groups == table.end() || !groups->is_array())
            continue;
        std::vector<std::string> names;
        for (const json& name : *groups) {
            if (!name.is_string())
                break;
            names.push_back(name.get<std::string>());
        }
        if (names.size() == groups->size())
            m_groups.emplace(language, std::move(names));
    }
}

ContentCatalog::TextTable ContentCatalog::resolvedTexts(std::string_view language) const
{
    // Layered from the last resort up, so each layer overrides the ones
    // before it: the English table, the language's own table, the English
    // built-in texts and the language's built-in texts.
    TextTable texts;
    const auto english = m_strings.find("en");
    if (english != m_strings.end()) {
        for (const auto& [key, value] : english->items()) {
            if (value.is_string())
                texts[key] = ResolvedText{value.get<std::string>(), splitAtCount(value.get_ref<const std::string&>())};
        }
    }
    const auto own = m_strings.find(language);
    if (own != m_strings.end()) {
        for (const auto& [key, value] : own->items()) {
            // An entry of the language's own table is taken whatever its
            // type, so a value that is no text shows the key rather than
            // falling back to English.
            if (value.is_string())
                texts[key] = ResolvedText{value.get<std::string>(), splitAtCount(value.get_ref<const std::string&>())};
            else
                texts.erase(key);
        }
    }
    const MacStrings::Tables& builtIn = MacStrings::values();
    for (const std::string_view code : {std::string_view("en"), language}) {
        const auto table = builtIn.find(code);
        if (table == builtIn.end())
            continue;
        for (const auto& [key, value] : table->second)
            texts[key] = ResolvedText{value, {}};
    }
    return texts;
}

std::string ContentCatalog::text(
    std::string_view key, std::string_view language, std::optional<std::int64_t> count) const
{
    auto table = m_texts.find(language);
    if (table == m_texts.end())
        table = m_texts.find("en"); // Without a table of its own, a language reads English throughout.
    const TextTable& texts = table->second;
    const auto found = texts.find(key);
    if (found == texts.end()) {
        if (count && key.find(countPlaceholder) != std::string_view::npos)
            return joinedWithCount(splitAtCount(key), *count);
        return std::string(key);
    }
    if (!count || found->second.countPieces.empty())
        return found->second.text;
    return joinedWithCount(found->second.countPieces, *count);
}

std::string ContentCatalog::group(std::int64_t index, std::string_view language) const
{
    const auto groups = m_groups.find(language);
    if (groups == m_groups.end() || index < 0 || static_cast<std::uint64_t>(index) >= groups->second.size())
        return {};
    return groups->second[static_cast<std::size_t>(index)];
}

} // namespace velmora
