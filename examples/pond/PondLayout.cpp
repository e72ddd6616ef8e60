#include "PondLayout.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace pond {
namespace {

// Tuned for the default window of 780 by 640 points, at scale 1.
constexpr double designHeight = 640;
constexpr double step = 84; // between zigzag neighbours; twice that in a row
constexpr double margin = 104; // from the pond's edge to the outer lotuses
constexpr double topRow = 0.42; // of the height
constexpr double bottomRow = 0.69;
constexpr double smallestRadius = 16;
constexpr double radiusPerMoment = 3.4;

} // namespace

PondLayout::PondLayout(std::size_t count, Size view)
    : m_view(view)
    , m_scale(std::clamp(view.height / designHeight, 0.6, 1.3))
{
    const double extent = count == 0 ? 0 : 2 * margin * m_scale + static_cast<double>(count - 1) * step * m_scale;
    m_width = std::max(extent, view.width);
    const double left = (m_width - extent) / 2 + margin * m_scale;
    // A single lotus sits between the rows rather than high on the water.
    const double middle = (topRow + bottomRow) / 2;
    m_slots.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const int row = static_cast<int>(i % 2);
        const double height = count == 1 ? middle : row == 0 ? topRow : bottomRow;
        m_slots.push_back({left + static_cast<double>(i) * step * m_scale, view.height * height, row});
    }
}

double PondLayout::radiusFor(double growth)
{
    return smallestRadius + std::clamp(growth, 0.0, 14.0) * radiusPerMoment;
}

int PondLayout::petalsFor(int growth)
{
    return 3 + std::clamp(growth, 0, 14);
}

double PondLayout::clampedPan(double pan) const
{
    return std::clamp(pan, 0.0, maximumPan());
}

double PondLayout::halfWidth() const
{
    return 80 * m_scale;
}

double PondLayout::reachAbove() const
{
    return 1.1 * radiusFor(14) * m_scale;
}

double PondLayout::reachBelow() const
{
    return 92 * m_scale;
}

std::optional<std::size_t> PondLayout::hit(double x, double y) const
{
    std::optional<std::size_t> nearest;
    double best = std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < m_slots.size(); ++i) {
        const Slot& slot = m_slots[i];
        if (std::abs(x - slot.x) > halfWidth() || y < slot.y - reachAbove() || y > slot.y + reachBelow())
            continue;
        // The middle of a lotus's area, not its base, decides between two.
        const double distance = std::hypot(x - slot.x, y - (slot.y + (reachBelow() - reachAbove()) / 2));
        if (distance < best) {
            best = distance;
            nearest = i;
        }
    }
    return nearest;
}

double PondLayout::panShowing(std::size_t index, double pan) const
{
    const Slot& shown = slot(index);
    const double left = shown.x - halfWidth();
    const double right = shown.x + halfWidth();
    if (left < pan)
        pan = left;
    else if (right > pan + m_view.width)
        pan = right - m_view.width;
    return clampedPan(pan);
}

std::optional<std::size_t> PondLayout::neighbour(std::size_t index, int direction) const
{
    if (direction < 0)
        return index > 0 ? std::optional(index - 1) : std::nullopt;
    return index + 1 < m_slots.size() ? std::optional(index + 1) : std::nullopt;
}

std::optional<std::size_t> PondLayout::inRow(std::size_t index, int row) const
{
    if (m_slots.size() < 2 || slot(index).row == row)
        return std::nullopt;
    // Both zigzag neighbours are in the other row and equally far; the one
    // ahead, unless this is the last.
    return index + 1 < m_slots.size() ? index + 1 : index - 1;
}

} // namespace pond
