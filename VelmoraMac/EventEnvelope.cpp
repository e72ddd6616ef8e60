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

} // namespace velmora
