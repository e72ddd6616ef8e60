#pragma once

#include <string>

#include <nlohmann/json.hpp>

#include "VelmoraCore/PracticeState.h"

namespace velmora::test {

// The smallest content document that passes validation: every fixed topic
// with one name and description per practice language, a text table for
// every practice language and one entry in each typed map. Tests change a
// copy to break one rule at a time.
inline nlohmann::json minimalCatalogDocument()
{
    using nlohmann::json;
    json topics = json::array();
    for (const std::string& id : PracticeState::topicIDs()) {
        json names = json::array();
        json descriptions = json::array();
        for (const std::string& language : PracticeState::languages()) {
            const std::string name = std::string(id).append(" (").append(language).append(")");
            names.push_back(name);
            descriptions.push_back("About " + name);
        }
        json topic = json::object();
        topic["id"] = id;
        topic["group"] = 0;
        topic["color"] = "#112233";
        topic["names"] = names;
        topic["descriptions"] = descriptions;
        topic["icon"] = "aWNvbg==";
        topics.push_back(topic);
    }
    json strings = json::object();
    for (const std::string& language : PracticeState::languages())
        strings[language] = json::object();

    json document = json::object();
    document["topics"] = topics;
    document["languages"] = {{"en", "English"}};
    document["uiIcons"] = {{"lotus", "bG90dXM="}};
    document["palette"] = {{"ink", "#F3EBD9"}};
    document["strings"] = strings;
    return document;
}

} // namespace velmora::test
