#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "PondSnapshot.h"

namespace velmora {

// The one message the renderer pulls: {"version":1,"kind":"practice",
// "payload":<the snapshot's JSON text as a string>}. The payload is embedded
// as a string, not an object, so the renderer parses twice.
class EventEnvelope {
public:
    EventEnvelope() = delete;

    // Compact JSON, or none when `snapshot` cannot be serialised (text that
    // is not UTF-8).
    static std::optional<std::string> wrap(std::string_view snapshot);
    // The same from the snapshot's escaped form, which is spliced in as it
    // is: byte for byte what wrap(snapshot.text) gives, at the cost of a
    // copy.
    static std::string wrap(const PondSnapshot& snapshot);
};

} // namespace velmora
