#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "PondController.h"
#include "PondLayout.h"

namespace pond {
namespace {

constexpr PondLayout::Size window{780, 640};

// Drives a controller frame by frame at 60 frames a second, with input as
// the library's readers give it.
class Pond {
public:
    explicit Pond(std::size_t count)
        : m_layout(count, window)
    {
        std::vector<std::string> ids;
        for (std::size_t i = 0; i < count; ++i)
            ids.push_back("topic" + std::to_string(i));
        m_controller.setTopics(ids);
    }

    // The input of a pointer over a point of the window (y downwards), as
    // the library normalizes it: to its content, y upwards.
    static PondInput over(double x, double y)
    {
        PondInput input;
        input.pointerX = static_cast<float>(x / window.width);
        input.pointerY = static_cast<float>(1 - y / window.height);
        input.contentWidth = static_cast<float>(window.width);
        input.visible = 1;
        input.interactive = 1;
        return input;
    }
    // Over a lotus, as it is on the screen now.
    [[nodiscard]] PondInput overLotus(std::size_t index) const
    {
        const PondLayout::Slot& slot = m_layout.slot(index);
        return over(slot.x - m_controller.pan(), slot.y - 20);
    }

    std::optional<std::size_t> frame(PondInput input)
    {
        m_seconds += 1.0 / 60;
        return m_controller.update(input, m_layout, m_seconds);
    }
    // Frames with the same input until `seconds` have passed; the noticed
    // lotuses in order.
    std::vector<std::size_t> frames(PondInput input, double seconds)
    {
        std::vector<std::size_t> noticed;
        for (int i = 0; i < static_cast<int>(seconds * 60); ++i) {
            if (const auto index = frame(input))
                noticed.push_back(*index);
        }
        return noticed;
    }

    PondController& controller() { return m_controller; }
    [[nodiscard]] const PondLayout& layout() const { return m_layout; }

private:
    PondLayout m_layout;
    PondController m_controller;
    double m_seconds = 10;
};

PondInput pressed(PondInput input, int down, int held, int up)
{
    input.down = down;
    input.held = held;
    input.up = up;
    return input;
}

TEST(PondController, NoticesALotusPressedAndReleasedOverIt_AndNothingElse)
{
    Pond pond(5);
    // Press, hold, release over lotus 2: one noticing, on the release.
    EXPECT_EQ(pond.frame(pressed(pond.overLotus(2), 1, 1, 0)), std::nullopt);
    EXPECT_EQ(pond.controller().pressed(), 2U);
    EXPECT_EQ(pond.frame(pressed(pond.overLotus(2), 0, 1, 0)), std::nullopt);
    EXPECT_EQ(pond.frame(pressed(pond.overLotus(2), 0, 0, 1)), 2U);
    EXPECT_EQ(pond.frame(pond.overLotus(2)), std::nullopt);

    // A click too quick for one frame: both edges at once.
    EXPECT_EQ(pond.frame(pressed(pond.overLotus(3), 1, 0, 1)), 3U);

    // Wandering off and back before the release still counts.
    pond.frame(pressed(pond.overLotus(1), 1, 1, 0));
    pond.frame(pressed(Pond::over(5, 5), 0, 1, 0));
    EXPECT_EQ(pond.frame(pressed(pond.overLotus(1), 0, 0, 1)), 1U);

    // Released over another lotus, or pressed on water and released on a
    // lotus: nothing.
    pond.frame(pressed(pond.overLotus(1), 1, 1, 0));
    EXPECT_EQ(pond.frame(pressed(pond.overLotus(3), 0, 0, 1)), std::nullopt);
    pond.frame(pressed(Pond::over(5, 5), 1, 1, 0));
    EXPECT_EQ(pond.frame(pressed(pond.overLotus(0), 0, 0, 1)), std::nullopt);

    // The library cleared its input (focus lost) between press and release.
    pond.frame(pressed(pond.overLotus(4), 1, 1, 0));
    pond.frame(pond.overLotus(4));
    EXPECT_EQ(pond.controller().pressed(), std::nullopt);
    EXPECT_EQ(pond.frame(pressed(pond.overLotus(4), 0, 0, 1)), std::nullopt);
}

TEST(PondController, ReadsThePointerAgainstTheLibrarysContentWidth_OnlyWhileInteractive)
{
    Pond pond(3);
    const PondLayout::Slot& slot = pond.layout().slot(2);
    // The library measures its content at twice the width: the same lotus
    // is at half the normalized x.
    PondInput input = Pond::over(slot.x / 2, slot.y - 20);
    input.contentWidth = static_cast<float>(2 * window.width);
    pond.frame(input);
    EXPECT_EQ(pond.controller().hovered(), 2U);
    // Without a shown pond the library's width is its default, not ours.
    input.visible = 0;
    pond.frame(input);
    EXPECT_EQ(pond.controller().hovered(), pond.layout().hit(slot.x / 2, slot.y - 20));
    EXPECT_NE(pond.controller().hovered(), 2U);

    input = pressed(pond.overLotus(1), 1, 0, 1);
    input.interactive = 0;
    EXPECT_EQ(pond.frame(input), std::nullopt);
    EXPECT_EQ(pond.controller().hovered(), std::nullopt);
}

TEST(PondController, ScrollsAndDragsWithinThePond)
{
    Pond pond(17);
    const double end = pond.layout().maximumPan();
    PondInput input = Pond::over(390, 40);
    input.scrollY = -120; // wheel turned towards the user: onwards
    pond.frame(input);
    EXPECT_DOUBLE_EQ(pond.controller().pan(), 120);
    input.scrollY = 0;
    input.scrollX = -1e5F; // a swipe to the left: onwards
    pond.frame(input);
    EXPECT_DOUBLE_EQ(pond.controller().pan(), end);
    input.scrollX = 1e5F; // to the right: back
    pond.frame(input);
    EXPECT_DOUBLE_EQ(pond.controller().pan(), 0);

    // Dragging open water moves the pond with the pointer; nothing is
    // noticed when the drag ends on a lotus.
    pond.frame(pressed(Pond::over(600, 40), 1, 1, 0));
    pond.frame(pressed(Pond::over(500, 40), 0, 1, 0));
    EXPECT_NEAR(pond.controller().pan(), 100, 1e-3); // the reader's floats
    EXPECT_EQ(pond.frame(pressed(pond.overLotus(2), 0, 0, 1)), std::nullopt);
}

TEST(PondController, StepsWithHeldNavigationKeys_AndTheCameraFollows)
{
    Pond pond(17);
    PondInput right = Pond::over(-1, -1);
    right.navigationX = 1;
    // The first step only shows where the keyboard is: the lotus nearest
    // the middle of the view.
    pond.frame(right);
    const std::size_t first = *pond.controller().selected();
    EXPECT_NEAR(pond.layout().slot(first).x, window.width / 2, pond.layout().slot(1).x - pond.layout().slot(0).x);
    // Held: no step before the pause, then a steady pace.
    pond.frames(right, 0.3);
    EXPECT_EQ(pond.controller().selected(), first);
    pond.frames(right, 0.6);
    const std::size_t later = *pond.controller().selected();
    EXPECT_GE(later, first + 2);
    EXPECT_LE(later, first + 4);
    // Released and pressed again: one step at once.
    pond.frame(Pond::over(-1, -1));
    pond.frame(right);
    EXPECT_EQ(pond.controller().selected(), later + 1);

    // Diagonals move along both axes; down moves to the bottom row only.
    PondInput down = Pond::over(-1, -1);
    down.navigationY = -1;
    pond.frame(Pond::over(-1, -1));
    const std::size_t before = *pond.controller().selected();
    pond.frame(down);
    const std::size_t after = *pond.controller().selected();
    EXPECT_EQ(pond.layout().slot(after).row, 1);
    EXPECT_LE(after > before ? after - before : before - after, 1U);

    // Holding right to the end brings the last lotus into view.
    pond.frames(right, 4);
    EXPECT_EQ(pond.controller().selected(), 16U);
    const PondLayout::Slot& last = pond.layout().slot(16);
    EXPECT_LE(last.x + pond.layout().halfWidth(), pond.controller().pan() + window.width + 0.5);

    // The key that notices acts on the selection.
    EXPECT_EQ(pond.controller().activate(pond.layout()), 16U);
}

TEST(PondController, KeepsSelectionAndFeedbackWithTheirTopics_WhenTheListChanges)
{
    Pond pond(4);
    pond.controller().select(2, pond.layout());
    pond.controller().noticed(2, 3.5);
    pond.controller().noticed(3, 4.5);
    pond.controller().setTopics({"topic2", "new", "topic0"});
    EXPECT_EQ(pond.controller().selected(), 0U);
    EXPECT_EQ(pond.controller().noticedAt(0), 3.5);
    EXPECT_EQ(pond.controller().noticedAt(1), std::nullopt);
    EXPECT_EQ(pond.controller().noticedAt(2), std::nullopt);
    pond.controller().setTopics({"other"});
    EXPECT_EQ(pond.controller().selected(), std::nullopt);
}

} // namespace
} // namespace pond
