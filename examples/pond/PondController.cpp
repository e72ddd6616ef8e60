#include "PondController.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace pond {
namespace {

// A navigation axis counts as pressed from here on: a diagonal gives
// 0.707 on each axis and must step both.
constexpr float pressedAxis = 0.5F;
constexpr double firstRepeat = 0.42; // seconds before a held key repeats
constexpr double nextRepeat = 0.16; // and then between steps
// How quickly the camera glides to a newly selected lotus, per second.
constexpr double glide = 9;
// A frame longer than this is a stall, not motion to catch up on.
constexpr double longestFrame = 0.25;

} // namespace

void PondController::setTopics(std::vector<std::string> ids)
{
    auto carried = [&](std::optional<std::size_t> index) -> std::optional<std::size_t> {
        if (!index || *index >= m_ids.size())
            return std::nullopt;
        const auto found = std::find(ids.begin(), ids.end(), m_ids[*index]);
        return found == ids.end() ? std::nullopt
                                  : std::optional<std::size_t>(static_cast<std::size_t>(found - ids.begin()));
    };
    m_selected = carried(m_selected);
    m_pressed = carried(m_pressed);
    m_hovered = carried(m_hovered);
    std::vector<std::optional<double>> noticedAt(ids.size());
    for (std::size_t i = 0; i < m_ids.size() && i < m_noticedAt.size(); ++i) {
        if (const auto found = carried(i))
            noticedAt[*found] = m_noticedAt[i];
    }
    m_noticedAt = std::move(noticedAt);
    m_ids = std::move(ids);
}

std::optional<std::size_t> PondController::update(const PondInput& input, const PondLayout& layout, double seconds)
{
    const double elapsed = m_lastSeconds ? std::clamp(seconds - *m_lastSeconds, 0.0, longestFrame) : 0.0;
    m_lastSeconds = seconds;

    // The reader's coordinates are normalized to the library's content
    // view, which is the window this pond fills once the library has
    // adopted it; y grows upwards there and downwards here.
    const PondLayout::Size view = layout.view();
    const double width
        = input.visible != 0 && input.contentWidth > 0 ? static_cast<double>(input.contentWidth) : view.width;
    const double viewX = static_cast<double>(input.pointerX) * width;
    const double viewY = (1.0 - static_cast<double>(input.pointerY)) * view.height;

    std::optional<std::size_t> notice;
    if (input.interactive != 0) {
        notice = pointerFrame(input, layout, viewX, viewY);
        navigationFrame(input, layout, seconds);
    } else {
        // The library keeps no edges for a pond that takes no input; what
        // was under way is over.
        m_hovered.reset();
        m_pressed.reset();
        m_dragX.reset();
    }

    // Scroll as the platform delivers it, natural scrolling applied: a
    // swipe or a wheel turned towards the start of the pond shows its start.
    const double scrolled = static_cast<double>(input.scrollX) + static_cast<double>(input.scrollY);
    if (scrolled != 0) {
        m_pan = layout.clampedPan(m_pan - scrolled);
        m_panTarget = m_pan;
    }
    m_panTarget = layout.clampedPan(m_panTarget);
    m_pan += (m_panTarget - m_pan) * (1 - std::exp(-glide * elapsed));
    if (std::abs(m_panTarget - m_pan) < 0.25)
        m_pan = m_panTarget;
    m_pan = layout.clampedPan(m_pan);
    return notice;
}

std::optional<std::size_t> PondController::pointerFrame(
    const PondInput& input, const PondLayout& layout, double viewX, double viewY)
{
    const std::optional<std::size_t> under = layout.hit(viewX + m_pan, viewY);
    m_hovered = under;

    if (m_dragX && input.held != 0) {
        m_pan = layout.clampedPan(m_pan - (viewX - *m_dragX));
        m_panTarget = m_pan;
        m_dragX = viewX;
    }

    // A press and its release may both fall between two frames; the press
    // is taken first so that such a quick click still notices.
    if (input.down != 0) {
        m_pressed = under;
        m_dragX.reset();
        if (!under) {
            m_dragX = viewX;
            // The pointer took over from the keyboard.
            m_selected.reset();
        }
    }
    std::optional<std::size_t> notice;
    if (input.up != 0) {
        if (m_pressed && m_pressed == under)
            notice = m_pressed;
        m_pressed.reset();
        m_dragX.reset();
    } else if (input.held == 0 && input.down == 0) {
        // The press ended without a release we saw: the library cleared its
        // input when the window lost focus.
        m_pressed.reset();
        m_dragX.reset();
    }
    return notice;
}

void PondController::navigationFrame(const PondInput& input, const PondLayout& layout, double seconds)
{
    if (layout.count() == 0)
        return;
    if (const int step = due(m_horizontal, input.navigationX, seconds); step != 0) {
        if (!m_selected)
            (void)activate(layout);
        else if (const auto next = layout.neighbour(*m_selected, step))
            select(*next, layout);
    }
    // Navigation's y grows upwards, as the pointer's does.
    if (const int step = due(m_vertical, input.navigationY, seconds); step != 0) {
        const Vertical row = step > 0 ? Vertical::up : Vertical::down;
        if (!m_selected)
            (void)activate(layout);
        else if (const auto next = layout.inRow(*m_selected, static_cast<int>(row)))
            select(*next, layout);
    }
}

int PondController::due(Repeat& repeat, float value, double seconds)
{
    const int direction = value > pressedAxis ? 1 : value < -pressedAxis ? -1 : 0;
    if (direction == 0 || direction != repeat.direction) {
        repeat.direction = direction;
        repeat.next = seconds + firstRepeat;
        return direction;
    }
    if (seconds < repeat.next)
        return 0;
    repeat.next = seconds + nextRepeat;
    return direction;
}

std::optional<std::size_t> PondController::activate(const PondLayout& layout)
{
    if (m_selected && *m_selected < layout.count())
        return m_selected;
    const double middle = m_pan + layout.view().width / 2;
    std::optional<std::size_t> nearest;
    double best = std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < layout.count(); ++i) {
        const double distance = std::abs(layout.slot(i).x - middle);
        if (distance < best) {
            best = distance;
            nearest = i;
        }
    }
    if (nearest)
        select(*nearest, layout);
    return std::nullopt;
}

void PondController::select(std::size_t index, const PondLayout& layout)
{
    if (index >= layout.count())
        return;
    m_selected = index;
    m_panTarget = layout.panShowing(index, m_panTarget);
}

void PondController::noticed(std::size_t index, double seconds)
{
    if (index < m_noticedAt.size())
        m_noticedAt[index] = seconds;
}

std::optional<double> PondController::noticedAt(std::size_t index) const
{
    return index < m_noticedAt.size() ? m_noticedAt[index] : std::nullopt;
}

} // namespace pond
