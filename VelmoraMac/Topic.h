#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace velmora {

// One of the seventeen practice topics as the content catalog describes it.
// A plain value, identified by `id`.
struct Topic {
    // One of PracticeState::topicIDs().
    std::string id;
    // Index into the "groups" list of the text tables.
    std::int64_t group = 0;
    // As written in the content file; the pond receives it unchanged.
    std::string color;
    // One entry per practice language, at the language's position in
    // PracticeState::languages().
    std::vector<std::string> names;
    std::vector<std::string> descriptions;
    // Base64 of the icon image, drawn as a template image.
    std::string icon;

    bool operator==(const Topic&) const = default;
};

} // namespace velmora
