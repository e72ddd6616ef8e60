#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include <gtk/gtk.h>

#include "FrameStatistics.h"
#include "PondFrame.h"
#include "PondSound.h"
#include "VelmoraLibrary.h"

namespace pond {

// The pond's window: a GtkWindow whose one child is the drawing area the
// pond is painted in. It is made, with its child, before the library
// starts, because the library adopts the first top-level window that has a
// child as the pond window and lays its chrome over it.
//
// While the pond moves, a frame runs on each tick of the display's frame
// clock: the tick polls the library and moves the pond on, the draw that
// follows paints it. When only the water drifts, a slower timer does the
// same: the drift is too slow for the eye to miss frames. While the
// library does not show the pond nothing is drawn and it is only asked,
// now and then, whether it shows it again; the window appearing wakes it
// at once.
// Input comes from the library, which captures the pond's pointer, wheel
// and navigation keys; only the keys it passes on (Return, Enter, Space)
// are read from the window, to notice the selected lotus.
//
// GTK's main thread only. Every signal and the tick are disconnected
// before the window and the frame go, so no callback outlives them.
class PondWindow {
public:
    struct Options {
        // Write a PNG of the window after this many frames, then quit.
        std::optional<std::string> screenshot;
        std::size_t screenshotFrame = 90;
        // Quit after this many frames and print their timing.
        std::optional<std::size_t> frames;
    };

    // Needs GTK initialized. Shows the window.
    explicit PondWindow(Options options);
    PondWindow(const PondWindow&) = delete;
    PondWindow& operator=(const PondWindow&) = delete;
    PondWindow(PondWindow&&) = delete;
    PondWindow& operator=(PondWindow&&) = delete;
    ~PondWindow();

    // Starts drawing from `library`, which must have been started and must
    // outlive the window.
    void attach(const VelmoraLibrary& library);
    // What the window ends the process with.
    [[nodiscard]] int status() const { return m_status; }

private:
    // How often the pond is moved on and drawn.
    enum class Pace : int { frames = 0, calm = 1, resting = 2 };

    static gboolean onTick(GtkWidget* widget, GdkFrameClock* clock, gpointer self) noexcept;
    static gboolean onDraw(GtkWidget* widget, cairo_t* cr, gpointer self) noexcept;
    static gboolean onKeyPress(GtkWidget* widget, GdkEventKey* event, gpointer self) noexcept;
    static void onDestroy(GtkWidget* widget, gpointer self) noexcept;
    static gboolean onTimer(gpointer self) noexcept;
    static gboolean onMap(GtkWidget* widget, GdkEvent* event, gpointer self) noexcept;

    void prime();
    void tick(GdkFrameClock* clock);
    void setPace(Pace pace);
    // Moves the pond on to `frameTime` (microseconds of the monotonic
    // clock) and asks for a draw when it is shown; then picks the pace.
    void step(gint64 frameTime);
    void finish(int status);
    void takeScreenshot();
    void printStatistics() const;

    Options m_options;
    GtkWidget* m_window = nullptr;
    GtkWidget* m_area = nullptr;
    PondSound m_sound;
    std::unique_ptr<PondFrame> m_frame;
    gulong m_drawHandler = 0;
    gulong m_keyHandler = 0;
    gulong m_destroyHandler = 0;
    gulong m_mapHandler = 0;
    guint m_tick = 0;
    guint m_timer = 0;
    Pace m_pace = Pace::frames;
    // Frames in a row in which nothing but the water moved.
    std::size_t m_stillFrames = 0;
    // Frames in a row the library did not show the pond.
    std::size_t m_hiddenFrames = 0;
    const VelmoraLibrary* m_library = nullptr;
    std::size_t m_frames = 0;
    gint64 m_lastFrameTime = 0;
    gint64 m_refreshInterval = 0;
    std::size_t m_dropped = 0;
    FrameStatistics m_work;
    FrameStatistics m_polls;
    FrameStatistics::Duration m_tickWork{0};
    FrameStatistics::Duration m_tickPoll{0};
    bool m_finished = false;
    int m_status = 0;
};

} // namespace pond
