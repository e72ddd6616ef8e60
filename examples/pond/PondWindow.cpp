#include "PondWindow.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <exception>

#include "Owned.h"

namespace pond {
namespace {

using Clock = std::chrono::steady_clock;

// The size of the library's default pond frame.
constexpr int defaultWidth = 780;
constexpr int defaultHeight = 640;
// What a frame lasts when the display does not say, in microseconds.
constexpr gint64 assumedRefresh = 16'667;
// Drawing the drifting water this often is smooth to the eye; the pointer,
// the keys and every other motion bring back the display's full pace.
constexpr guint calmInterval = 50; // milliseconds
// Frames of stillness before the pace drops: a pause between two clicks
// is not rest.
constexpr std::size_t stillFramesBeforeCalm = 45;
// How often a hidden pond asks whether it is shown again, besides waking
// when its window appears.
constexpr guint restingInterval = 1000; // milliseconds
// The window may appear a moment before the library says it shows it (on
// a restore from the dock, the window manager's word comes second): a few
// frames of grace before resting again.
constexpr std::size_t hiddenFramesBeforeRest = 8;

void report(const char* where, const std::exception& error)
{
    std::fprintf(stderr, "pond: %s: %s\n", where, error.what());
}

} // namespace

PondWindow::PondWindow(Options options)
    : m_options(std::move(options))
    , m_work(m_options.frames.value_or(0))
    , m_polls(m_options.frames.value_or(0))
{
    m_window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    gtk_window_set_title(GTK_WINDOW(m_window), "Pond");
    gtk_window_set_default_size(GTK_WINDOW(m_window), defaultWidth, defaultHeight);
    m_area = gtk_drawing_area_new();
    gtk_container_add(GTK_CONTAINER(m_window), m_area);
    m_destroyHandler = g_signal_connect(m_window, "destroy", G_CALLBACK(onDestroy), this);
    m_keyHandler = g_signal_connect(m_window, "key-press-event", G_CALLBACK(onKeyPress), this);
    gtk_widget_show_all(m_window);
}

PondWindow::~PondWindow()
{
    if (m_timer != 0)
        g_source_remove(m_timer);
    if (m_area != nullptr) {
        if (m_tick != 0)
            gtk_widget_remove_tick_callback(m_area, m_tick);
        if (m_drawHandler != 0)
            g_signal_handler_disconnect(m_area, m_drawHandler);
    }
    if (m_window != nullptr) {
        g_signal_handler_disconnect(m_window, m_keyHandler);
        if (m_mapHandler != 0)
            g_signal_handler_disconnect(m_window, m_mapHandler);
        g_signal_handler_disconnect(m_window, m_destroyHandler);
        gtk_widget_destroy(m_window);
    }
}

void PondWindow::attach(const VelmoraLibrary& library)
{
    if (m_area == nullptr)
        return;
    m_frame = std::make_unique<PondFrame>(library, gtk_widget_get_scale_factor(m_area));
    m_frame->setSound(&m_sound);
    m_library = &library;
    prime();
    m_drawHandler = g_signal_connect(m_area, "draw", G_CALLBACK(onDraw), this);
    m_mapHandler = g_signal_connect(m_window, "map-event", G_CALLBACK(onMap), this);
    m_tick = gtk_widget_add_tick_callback(m_area, onTick, this, nullptr);
}

void PondWindow::setPace(Pace pace)
{
    if (pace == m_pace || m_area == nullptr)
        return;
    m_pace = pace;
    m_stillFrames = 0;
    if (m_tick != 0) {
        gtk_widget_remove_tick_callback(m_area, m_tick);
        m_tick = 0;
    }
    if (m_timer != 0) {
        // Also when it is the timer running now: GLib drops it once its
        // callback returns.
        g_source_remove(m_timer);
        m_timer = 0;
    }
    switch (pace) {
    case Pace::frames:
        // The pause was no dropped frame.
        m_lastFrameTime = 0;
        m_tick = gtk_widget_add_tick_callback(m_area, onTick, this, nullptr);
        break;
    case Pace::calm:
        m_timer = g_timeout_add(calmInterval, onTimer, this);
        break;
    case Pace::resting:
        m_timer = g_timeout_add(restingInterval, onTimer, this);
        break;
    }
}

gboolean PondWindow::onTimer(gpointer self) noexcept
{
    auto* window = static_cast<PondWindow*>(self);
    try {
        if (window->m_pace == Pace::resting) {
            if (window->m_library->isPondVisible())
                window->setPace(Pace::frames);
        } else {
            window->step(g_get_monotonic_time());
        }
    } catch (const std::exception& error) {
        report("a frame failed", error);
    }
    return G_SOURCE_CONTINUE;
}

gboolean PondWindow::onMap(GtkWidget* /*widget*/, GdkEvent* /*event*/, gpointer self) noexcept
{
    auto* window = static_cast<PondWindow*>(self);
    if (window->m_pace == Pace::resting)
        window->setPace(Pace::frames);
    return FALSE;
}

// Draws the pond once off screen before the display's first frame: the
// first snapshot's texts, flowers and water take longer than a frame to
// cache, and the display would otherwise wait a frame for them.
void PondWindow::prime()
{
    const int scale = gtk_widget_get_scale_factor(m_area);
    // Before the first layout the area has no size yet; the window's is
    // the one it will get.
    int width = gtk_widget_get_allocated_width(m_area);
    int height = gtk_widget_get_allocated_height(m_area);
    if (width <= 1 || height <= 1)
        gtk_window_get_size(GTK_WINDOW(m_window), &width, &height);
    const Owned<cairo_surface_t, cairo_surface_destroy> surface(
        cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width * scale, height * scale));
    cairo_surface_set_device_scale(surface.get(), scale, scale);
    const Owned<cairo_t, cairo_destroy> cr(cairo_create(surface.get()));
    m_frame->advance(
        static_cast<double>(g_get_monotonic_time()) / 1e6, {static_cast<double>(width), static_cast<double>(height)});
    if (m_frame->snapshot())
        m_frame->paint(cr.get());
}

gboolean PondWindow::onTick(GtkWidget* /*widget*/, GdkFrameClock* clock, gpointer self) noexcept
{
    auto* window = static_cast<PondWindow*>(self);
    try {
        window->tick(clock);
    } catch (const std::exception& error) {
        // This frame is lost; the next one tries again.
        report("a frame failed", error);
    }
    return G_SOURCE_CONTINUE;
}

gboolean PondWindow::onDraw(GtkWidget* /*widget*/, cairo_t* cr, gpointer self) noexcept
{
    auto* window = static_cast<PondWindow*>(self);
    try {
        const auto start = Clock::now();
        window->m_frame->paint(cr);
        window->m_work.add(window->m_tickWork + (Clock::now() - start));
        window->m_polls.add(window->m_tickPoll);
    } catch (const std::exception& error) {
        // What was painted stays; the next frame paints it all again.
        report("painting failed", error);
    }
    return TRUE;
}

gboolean PondWindow::onKeyPress(GtkWidget* /*widget*/, GdkEventKey* event, gpointer self) noexcept
{
    auto* window = static_cast<PondWindow*>(self);
    switch (event->keyval) {
    case GDK_KEY_Return:
    case GDK_KEY_KP_Enter:
    case GDK_KEY_ISO_Enter:
    case GDK_KEY_space:
    case GDK_KEY_KP_Space:
        try {
            if (window->m_frame)
                window->m_frame->activate();
        } catch (const std::exception& error) {
            // Nothing was noticed; the user can press again.
            report("noticing failed", error);
        }
        return TRUE;
    default:
        return FALSE;
    }
}

void PondWindow::onDestroy(GtkWidget* /*widget*/, gpointer self) noexcept
{
    auto* window = static_cast<PondWindow*>(self);
    // GTK has let go of both; nothing is left to disconnect.
    window->m_window = nullptr;
    window->m_area = nullptr;
    window->finish(window->m_status);
}

void PondWindow::tick(GdkFrameClock* clock)
{
    if (m_finished)
        return;
    const gint64 frameTime = gdk_frame_clock_get_frame_time(clock);
    if (m_lastFrameTime != 0) {
        gint64 refresh = 0;
        gdk_frame_clock_get_refresh_info(clock, frameTime, &refresh, nullptr);
        m_refreshInterval = refresh > 0 ? refresh : assumedRefresh;
        const double frames = static_cast<double>(frameTime - m_lastFrameTime) / static_cast<double>(m_refreshInterval);
        if (frames > 1.5)
            m_dropped += static_cast<std::size_t>(std::lround(frames)) - 1;
    }
    m_lastFrameTime = frameTime;

    // A screenshot ends the run only when no run length was asked for: with
    // both on the same frame, the figures are printed too.
    const bool screenshotNow = m_options.screenshot && m_frames == m_options.screenshotFrame;
    if (screenshotNow)
        takeScreenshot();
    const bool runDone = m_options.frames && m_frames == *m_options.frames;
    if (runDone)
        printStatistics();
    if (runDone || (screenshotNow && !m_options.frames)) {
        finish(m_status);
        return;
    }

    step(frameTime);
    ++m_frames;
}

void PondWindow::step(gint64 frameTime)
{
    m_frame->setDeviceScale(gtk_widget_get_scale_factor(m_area));
    const auto start = Clock::now();
    m_frame->advance(static_cast<double>(frameTime) / 1e6,
        {static_cast<double>(gtk_widget_get_allocated_width(m_area)),
            static_cast<double>(gtk_widget_get_allocated_height(m_area))});
    m_tickWork = Clock::now() - start;
    m_tickPoll = m_frame->lastPoll();
    // A run that counts frames or waits for one to screenshot keeps the
    // display's pace throughout.
    const bool measured = m_options.frames || m_options.screenshot;
    m_hiddenFrames = m_frame->visible() ? 0 : m_hiddenFrames + 1;
    if (m_hiddenFrames >= hiddenFramesBeforeRest && !measured) {
        m_hiddenFrames = 0;
        setPace(Pace::resting);
        return;
    }
    gtk_widget_queue_draw(m_area);
    m_stillFrames = m_frame->moving() ? 0 : m_stillFrames + 1;
    if (m_frame->moving())
        setPace(Pace::frames);
    else if (m_pace == Pace::frames && m_stillFrames >= stillFramesBeforeCalm && !measured)
        setPace(Pace::calm);
}

void PondWindow::finish(int status)
{
    m_status = status;
    if (m_finished)
        return;
    m_finished = true;
    gtk_main_quit();
}

void PondWindow::takeScreenshot()
{
    GdkWindow* window = gtk_widget_get_window(m_window);
    GdkPixbuf* pixbuf = window == nullptr
        ? nullptr
        : gdk_pixbuf_get_from_window(window, 0, 0, gdk_window_get_width(window), gdk_window_get_height(window));
    if (pixbuf == nullptr) {
        std::fprintf(stderr, "pond: the window could not be read for a screenshot\n");
        m_status = 1;
        return;
    }
    GError* error = nullptr;
    if (!gdk_pixbuf_save(pixbuf, m_options.screenshot->c_str(), "png", &error, nullptr)) {
        std::fprintf(stderr, "pond: cannot write %s: %s\n", m_options.screenshot->c_str(), error->message);
        g_error_free(error);
        m_status = 1;
    }
    g_object_unref(pixbuf);
}

void PondWindow::printStatistics() const
{
    const double refresh = static_cast<double>(m_refreshInterval > 0 ? m_refreshInterval : assumedRefresh) / 1000;
    std::printf(
        "pond: %zu frames at the display's pace (a frame every %.3f ms): %zu dropped\n", m_frames, refresh, m_dropped);
    std::printf("  work per frame (poll + paint): median %.3f ms, 99th percentile %.3f ms, max %.3f ms\n",
        m_work.percentile(0.5), m_work.percentile(0.99), m_work.maximum());
    std::printf("  polling the library: %.1f %% of that work\n",
        m_work.total() > 0 ? 100 * m_polls.total() / m_work.total() : 0.0);
    std::fflush(stdout);
}

} // namespace pond
