#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "PondTopic.h"

namespace pond {

// An event that is not a snapshot the pond can read. The pond keeps drawing
// the previous snapshot; the message says what was wrong, for the log.
class PondSnapshotError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Everything the pond draws, read from one event of the library: an
// envelope whose "payload" is the snapshot's JSON text. Member order is not
// relied on and unknown members are ignored, so a newer library that adds
// members still draws.
struct PondSnapshot {
    static constexpr int maximumGrowth = 14;

    std::vector<PondTopic> topics;
    std::string language;
    std::string daysLabel;
    std::string noticeLabel;
    std::string savedLabel;
    // The user's sound switches; a snapshot without them plays nothing.
    bool waterSoundEnabled = false;
    bool bellSoundEnabled = false;

    // Throws PondSnapshotError when the text is not an envelope of kind
    // "practice", version 1, carrying a snapshot with a list of topics each
    // with an "id", a "title" and a numeric "growthMoments". Growth outside
    // 0...14 is clamped; a missing label reads as empty and is simply not
    // drawn.
    static PondSnapshot fromEvent(std::string_view event);

    bool operator==(const PondSnapshot&) const = default;
};

} // namespace pond
