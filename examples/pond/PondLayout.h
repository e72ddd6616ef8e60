#pragma once

#include <cstddef>
#include <optional>
#include <vector>

namespace pond {

// Where each lotus floats, in pond coordinates: points from the left edge
// of the whole pond (which may be wider than the window) and from the top
// of the window. The lotuses form a zigzag of two rows from left to right
// in the snapshot's order, so neighbours in the list stay neighbours on the
// water; a pond narrower than the window is centred in it. The window's
// top and bottom bands stay free for the library's own chrome (wordmark,
// settings button, day count).
class PondLayout {
public:
    struct Size {
        double width = 0;
        double height = 0;
    };

    struct Slot {
        // The point where the flower meets its leaf.
        double x = 0;
        double y = 0;
        // Top row (0) or bottom row (1).
        int row = 0;
    };

    PondLayout() = default;
    PondLayout(std::size_t count, Size view);

    // Radius of a flower of `growth` moments (0 to 14; fractions while it
    // grows), before the layout's scale.
    static double radiusFor(double growth);
    // Petals of a flower: a closed bud of three at 0, one more per moment.
    static int petalsFor(int growth);

    [[nodiscard]] std::size_t count() const { return m_slots.size(); }
    [[nodiscard]] const Slot& slot(std::size_t index) const { return m_slots.at(index); }
    // How much everything is enlarged or shrunk to fit the window's height.
    [[nodiscard]] double scale() const { return m_scale; }
    [[nodiscard]] Size view() const { return m_view; }
    // The width of the whole pond, never less than the window's.
    [[nodiscard]] double width() const { return m_width; }
    // The pan, in points, that shows the right edge of the pond; 0 when it
    // fits the window.
    [[nodiscard]] double maximumPan() const { return m_width - m_view.width; }
    [[nodiscard]] double clampedPan(double pan) const;

    // The lotus under a point of the pond, the nearest one where their
    // areas touch.
    [[nodiscard]] std::optional<std::size_t> hit(double x, double y) const;
    // The pan closest to `pan` that shows the whole of the lotus.
    [[nodiscard]] double panShowing(std::size_t index, double pan) const;
    // The lotus one step along the zigzag (`direction` -1 or 1), or the nearest
    // lotus of the other row (`row` 0 for up, 1 for down); nullopt at an
    // end or when already in that row.
    [[nodiscard]] std::optional<std::size_t> neighbour(std::size_t index, int direction) const;
    [[nodiscard]] std::optional<std::size_t> inRow(std::size_t index, int row) const;

    // Half the width and the reach above and below a slot's point that
    // belong to its lotus: flower, leaf, title and button.
    [[nodiscard]] double halfWidth() const;
    [[nodiscard]] double reachAbove() const;
    [[nodiscard]] double reachBelow() const;

private:
    std::vector<Slot> m_slots;
    Size m_view;
    double m_scale = 1;
    double m_width = 0;
};

} // namespace pond
