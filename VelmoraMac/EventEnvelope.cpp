#include "EventEnvelope.h"

#include <nlohmann/json.hpp>

namespace velmora {

std::optional<std::string> EventEnvelope::wrap(std::string_view snapshot)
{
    const nlohmann::ordered_json envelope = {
        {"version", 1},
        {"kind", "practice"},
        {"payload", std::string(snapshot)},
    };
    try {
        return envelope.dump();
    } catch (const nlohmann::json::type_error&) {
        // Invalid UTF-8: the renderer keeps its previous message.
        return std::nullopt;
    }
}

std::string EventEnvelope::wrap(const PondSnapshot& snapshot)
{
    // The members before the payload's text and after it, as the JSON
    // library writes them.
    constexpr std::string_view head = R"({"version":1,"kind":"practice","payload":")";
    constexpr std::string_view tail = R"("})";
    std::string envelope;
    envelope.reserve(head.size() + snapshot.escaped.size() + tail.size());
    envelope.append(head).append(snapshot.escaped).append(tail);
    return envelope;
}

} // namespace velmora
