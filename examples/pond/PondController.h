#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "PondInput.h"
#include "PondLayout.h"

namespace pond {

// Turns each frame's input into what the pond does: which lotus the pointer
// is over, which one the keyboard has selected, where the camera looks, and
// when a lotus is noticed. It knows nothing of drawing or of the library:
// the frame feeds it what the library reported and acts on its answers.
//
// A lotus is noticed like a button is pressed: the press and the release
// both over it (a press that wanders off and comes back still counts, one
// released elsewhere does not), or, with the keyboard, the navigation keys
// select it and a key press noticing the selection. A press on open water
// drags the pond sideways; wheel and trackpad scroll it.
class PondController {
public:
    enum class Vertical : int { up = 0, down = 1 };

    // The topics shown, by ID, in the order of the layout. Selection and the
    // moments of feedback follow the IDs when the list changes.
    void setTopics(std::vector<std::string> ids);

    // One frame at `seconds` (a monotonic clock) with the layout of this
    // frame. Returns the lotus to notice now, if any.
    std::optional<std::size_t> update(const PondInput& input, const PondLayout& layout, double seconds);

    // The key that notices the selected lotus (the library passes such keys
    // on to the window). Without a selection it selects the lotus nearest
    // the middle of the view instead, so that the first press shows where
    // the keyboard is. Returns the lotus to notice.
    std::optional<std::size_t> activate(const PondLayout& layout);

    // Selects a lotus as the keyboard would and brings it into view.
    void select(std::size_t index, const PondLayout& layout);

    // Call when a noticing was sent, to show it was saved.
    void noticed(std::size_t index, double seconds);

    [[nodiscard]] std::optional<std::size_t> hovered() const { return m_hovered; }
    [[nodiscard]] std::optional<std::size_t> selected() const { return m_selected; }
    [[nodiscard]] std::optional<std::size_t> pressed() const { return m_pressed; }
    [[nodiscard]] double pan() const { return m_pan; }
    // Whether the camera rests and no press or drag is under way.
    [[nodiscard]] bool settled() const { return m_pan == m_panTarget && !m_pressed && !m_dragX; }
    // When the lotus was last noticed, for its feedback; nullopt if never.
    [[nodiscard]] std::optional<double> noticedAt(std::size_t index) const;

private:
    struct Repeat {
        int direction = 0;
        double next = 0;
    };

    std::optional<std::size_t> pointerFrame(
        const PondInput& input, const PondLayout& layout, double viewX, double viewY);
    void navigationFrame(const PondInput& input, const PondLayout& layout, double seconds);
    // The direction of an axis when it is due to step: at once when pressed,
    // then after a pause at a steady pace while held.
    static int due(Repeat& repeat, float value, double seconds);
    [[nodiscard]] std::optional<std::size_t> indexOf(const std::string& id) const;

    std::vector<std::string> m_ids;
    std::optional<std::size_t> m_hovered;
    std::optional<std::size_t> m_selected;
    std::optional<std::size_t> m_pressed;
    // A press on open water, with the pointer's last x, drags the pond.
    std::optional<double> m_dragX;
    double m_pan = 0;
    double m_panTarget = 0;
    std::optional<double> m_lastSeconds;
    Repeat m_horizontal;
    Repeat m_vertical;
    std::vector<std::optional<double>> m_noticedAt;
};

} // namespace pond
