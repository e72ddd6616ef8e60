#pragma once

#include "VelmoraCore/Point.h"

namespace velmora {

// What the pointer did in the pond since the renderer last asked: a plain
// record, copied and overwritten whole. `down` and `up` are edges the button
// reader consumes; `held` is a level; `scroll` accumulates until read.
struct PondPointerState {
    Point scroll;
    bool down = false;
    bool held = false;
    bool up = false;

    friend bool operator==(const PondPointerState&, const PondPointerState&) = default;
};

} // namespace velmora
