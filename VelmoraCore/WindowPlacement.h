#pragma once

#include <cstdint>

#include "Point.h"
#include "Rect.h"

namespace velmora::WindowPlacement {

// The largest frame the pond and the panel open with.
constexpr double defaultWidth = 780;
constexpr double defaultHeight = 640;
// Kept free between a frame and the edges of a screen's visible area, half
// on each side, so that a window never touches the menu bar or a dock.
constexpr double screenInset = 16;
// A screen smaller than the inset still gets a frame that exists.
constexpr double minimumSize = 1;

// Whether a view's y axis grows downwards from its top edge.
enum class Flipped : std::uint8_t {
    no,
    yes,
};

// The frame a window opens with on a screen whose visible area is
// `visible`: as large as the default size allows within the inset, centred.
[[nodiscard]] Rect frame(const Rect& visible);

// `frame` moved (and, if it is too large, shrunk) so that it lies within
// `visible` less the inset; a frame is never grown. On a screen too small
// for even the frame's shrunk size plus the inset, the left and bottom
// margins win.
[[nodiscard]] Rect constrained(const Rect& frame, const Rect& visible);

// `local`, a point in a view's own coordinates, in pond coordinates: 0 at
// the left and bottom edges of `bounds`, 1 at the right and top edges,
// whichever way the view is flipped. Points outside `bounds` give values
// outside [0, 1]. A side shorter than one point counts as one point long.
[[nodiscard]] Point normalizedPointer(Point local, const Rect& bounds, Flipped flipped);

} // namespace velmora::WindowPlacement
