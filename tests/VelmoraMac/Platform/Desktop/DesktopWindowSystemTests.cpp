#include <algorithm>
#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <gtk/gtk.h>

#include "DesktopSession.h"
#include "VelmoraMac/ContentCatalog.h"
#include "VelmoraMac/Host/Gtk/GtkShellViews.h"
#include "VelmoraMac/Host/PondChromeView.h"
#include "VelmoraMac/Platform/Desktop/DesktopEventMonitors.h"
#include "VelmoraMac/Platform/Desktop/DesktopWindow.h"
#include "VelmoraMac/Platform/Desktop/DesktopWindowSystem.h"
#include "VelmoraMac/Platform/SystemNotificationHub.h"

namespace velmora {
namespace {

using test::iterateUntil;

// The shipped content, for the gear's real icon.
std::filesystem::path contentResource()
{
    return std::filesystem::path(__FILE__).parent_path() / "../../../../VelmoraMac/Resources/content.json";
}

// The X server has handled every request made so far and the loop has
// nothing left to run: whatever those requests and the loop's own work set
// going has happened, except in other clients such as the window manager.
bool quiet()
{
    gdk_display_sync(gdk_display_get_default());
    return g_main_context_pending(nullptr) == FALSE;
}

// The window manager has mapped `window`: its map notification is in.
bool mapped(GtkWindow* window)
{
    GdkWindow* gdkWindow = gtk_widget_get_window(GTK_WIDGET(window));
    return gtk_widget_get_mapped(GTK_WIDGET(window))
        && (gdk_window_get_state(gdkWindow) & GDK_WINDOW_STATE_WITHDRAWN) == 0;
}

// A channel (0...255) of a pixel of an ARGB32 surface: 24 for alpha, 8
// for green.
int channelAt(cairo_surface_t* surface, int x, int y, unsigned shift)
{
    cairo_surface_flush(surface);
    const unsigned char* data = cairo_image_surface_get_data(surface);
    const auto* pixel = reinterpret_cast<const std::uint32_t*>(
        data + static_cast<std::ptrdiff_t>(y) * cairo_image_surface_get_stride(surface));
    return static_cast<int>((pixel[x] >> shift) & 0xFFU);
}

gboolean paintGreen(GtkWidget* /*widget*/, cairo_t* cairo, gpointer /*data*/)
{
    // A plain pond: the chrome's shades show against it.
    cairo_set_source_rgb(cairo, 0.16, 0.42, 0.38);
    cairo_paint(cairo);
    return TRUE;
}

class DesktopWindowSystemTest : public testing::Test {
protected:
    void TearDown() override
    {
        m_system.reset();
        for (GtkWidget* window : m_rendererWindows)
            gtk_widget_destroy(window);
        (void)iterateUntil(quiet);
    }

    void SetUp() override
    {
        if (gtk_init_check(nullptr, nullptr) == FALSE)
            GTEST_SKIP() << "no display";
        m_monitors = std::make_unique<DesktopEventMonitors>();
        m_system
            = std::make_unique<DesktopWindowSystem>(m_notifications, *m_monitors, NotNullShared<GtkShellViews>::make());
    }

    // A window the way a renderer makes one: a toplevel with a drawing
    // widget in it.
    GtkWindow* addRendererWindow(int width = 640, int height = 480)
    {
        GtkWidget* window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
        gtk_window_set_default_size(GTK_WINDOW(window), width, height);
        GtkWidget* area = gtk_drawing_area_new();
        g_signal_connect(area, "draw", G_CALLBACK(&paintGreen), nullptr);
        gtk_container_add(GTK_CONTAINER(window), area);
        gtk_widget_show(area);
        m_rendererWindows.push_back(window);
        return GTK_WINDOW(window);
    }

    [[nodiscard]] std::shared_ptr<Window> adopted() const
    {
        for (const auto& window : m_system->windows()) {
            if (!window->isPanel())
                return window;
        }
        return nullptr;
    }

    // Where the X server has `window`, title bar included, is `frame` in
    // bottom-left screen coordinates: the window manager has placed it.
    [[nodiscard]] bool placed(GtkWindow* window, const Rect& frame) const
    {
        GdkRectangle extents;
        gdk_window_get_frame_extents(gtk_widget_get_window(GTK_WIDGET(window)), &extents);
        const double screenHeight = m_system->screens().front().frame.height();
        return Rect(extents.x, screenHeight - extents.y - extents.height, extents.width, extents.height) == frame;
    }

    [[nodiscard]] const std::vector<SystemNotification>& posted() const { return m_notifications->posted(); }

    // A primary-button event at a point of the window's content (top-left
    // origin), as GDK delivers it to the window.
    bool sendButton(GdkEventType type, GtkWindow* window, Point point)
    {
        GdkWindow* gdkWindow = gtk_widget_get_window(GTK_WIDGET(window));
        int x = 0;
        int y = 0;
        gdk_window_get_origin(gdkWindow, &x, &y);
        GdkEvent* event = gdk_event_new(type);
        event->button.window = GDK_WINDOW(g_object_ref(gdkWindow));
        event->button.button = GDK_BUTTON_PRIMARY;
        event->button.x = point.x;
        event->button.y = point.y;
        event->button.x_root = x + point.x;
        event->button.y_root = y + point.y;
        gdk_event_set_device(event, gdk_seat_get_pointer(gdk_display_get_default_seat(gdk_display_get_default())));
        const bool consumed = m_monitors->handle(event);
        gdk_event_free(event);
        return consumed;
    }

    std::shared_ptr<SystemNotificationHub> m_notifications = std::make_shared<SystemNotificationHub>();
    std::unique_ptr<DesktopEventMonitors> m_monitors;
    std::unique_ptr<DesktopWindowSystem> m_system;
    std::vector<GtkWidget*> m_rendererWindows;
    ContentCatalog m_catalog{contentResource()};
};

TEST_F(DesktopWindowSystemTest, Adoption_TakesTheFirstNormalWindowWithContentAndLetsItGoWhenDestroyed)
{
    GtkWidget* empty = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    m_rendererWindows.push_back(empty);
    GtkWidget* popup = gtk_window_new(GTK_WINDOW_POPUP);
    gtk_container_add(GTK_CONTAINER(popup), gtk_label_new("tip"));
    m_rendererWindows.push_back(popup);
    EXPECT_EQ(adopted(), nullptr);

    const std::shared_ptr<Window> panel = m_system->createPanel(Rect(100, 100, 300, 200), WindowAttributes{});
    GtkWindow* renderer = addRendererWindow();
    const std::shared_ptr<Window> pond = adopted();
    ASSERT_NE(pond, nullptr);
    EXPECT_EQ(dynamic_cast<DesktopWindow&>(*pond).gtkWindow(), renderer);
    EXPECT_NE(pond->contentView(), nullptr);
    EXPECT_TRUE(panel->isPanel());
    EXPECT_EQ(m_system->windows().size(), 2U);
    EXPECT_EQ(adopted(), pond) << "adopted once, not again on every look";

    GtkWidget* widget = GTK_WIDGET(renderer);
    std::erase(m_rendererWindows, widget);
    gtk_widget_destroy(widget);
    EXPECT_EQ(adopted(), nullptr);
    EXPECT_EQ(m_system->windows().size(), 1U);
    EXPECT_FALSE(pond->isVisible());
    pond->orderFront(); // Nothing left to act on.
}

TEST_F(DesktopWindowSystemTest, Frames_AreInBottomLeftScreenCoordinatesBothWays)
{
    const std::vector<Screen> screens = m_system->screens();
    ASSERT_FALSE(screens.empty());
    const Rect screen = screens.front().frame;
    EXPECT_EQ(screen.origin, Point(0, 0));

    GtkWindow* renderer = addRendererWindow();
    const std::shared_ptr<Window> pond = adopted();
    ASSERT_NE(pond, nullptr);
    const Rect wanted(100, 200, 400, 300);
    pond->setFrame(wanted, FrameDisplay::immediate);
    EXPECT_EQ(pond->frame(), wanted);
    pond->orderFront();
    ASSERT_TRUE(iterateUntil([&] { return mapped(renderer) && placed(renderer, wanted) && quiet(); }));
    EXPECT_EQ(pond->frame(), wanted) << pond->frame().minX() << ", " << pond->frame().minY() << " "
                                     << pond->frame().width() << " x " << pond->frame().height();

    // The frame's top edge lies 200 + 300 points below the screen's top.
    GdkRectangle extents;
    gdk_window_get_frame_extents(gtk_widget_get_window(GTK_WIDGET(renderer)), &extents);
    EXPECT_EQ(extents.x, 100);
    EXPECT_EQ(extents.y, static_cast<int>(screen.height()) - 500);
    EXPECT_EQ(extents.height, 300) << "the title bar is part of the frame";
}

TEST_F(DesktopWindowSystemTest, ChildWindows_FollowTheirParentUntilRemoved)
{
    GtkWindow* renderer = addRendererWindow();
    const std::shared_ptr<Window> pond = adopted();
    ASSERT_NE(pond, nullptr);
    const Rect frame(120, 140, 500, 360);
    pond->setFrame(frame, FrameDisplay::immediate);
    const std::shared_ptr<Window> panel = m_system->createPanel(frame, WindowAttributes{});
    auto& desktopPanel = dynamic_cast<DesktopWindow&>(*panel);
    pond->addChildWindow(*panel, WindowOrdering::above);
    EXPECT_EQ(panel->parentWindow(), pond.get());
    EXPECT_EQ(gtk_window_get_transient_for(desktopPanel.gtkWindow()), renderer);
    EXPECT_TRUE(gtk_window_get_skip_taskbar_hint(desktopPanel.gtkWindow()))
        << "joined, the pond's taskbar entry stands for both";
    pond->orderFront();
    EXPECT_TRUE(panel->isVisible()) << "shown with its parent";
    ASSERT_TRUE(iterateUntil(
        [&] { return gtk_widget_get_mapped(GTK_WIDGET(desktopPanel.gtkWindow())) && pond->frame() == frame; }));

    // The user drags and resizes the parent through the window manager.
    gtk_window_move(renderer, 300, 100);
    gtk_window_resize(renderer, 420, 280);
    ASSERT_TRUE(iterateUntil([&] { return pond->frame() != frame && panel->frame() == pond->frame(); }));
    ASSERT_TRUE(iterateUntil([&] {
        GdkRectangle extents;
        gdk_window_get_frame_extents(gtk_widget_get_window(GTK_WIDGET(desktopPanel.gtkWindow())), &extents);
        GdkRectangle parent;
        gdk_window_get_frame_extents(gtk_widget_get_window(GTK_WIDGET(renderer)), &parent);
        return extents.x == parent.x && extents.y == parent.y && extents.width == parent.width
            && extents.height == parent.height;
    })) << "the panel window itself is moved, not only its record";
    EXPECT_TRUE(iterateUntil([&] { return std::ranges::count(posted(), SystemNotification::windowDidResize) >= 2; }))
        << "both windows report their new size";

    pond->removeChildWindow(*panel);
    EXPECT_EQ(panel->parentWindow(), nullptr);
    EXPECT_FALSE(gtk_window_get_skip_taskbar_hint(desktopPanel.gtkWindow())) << "alone, the panel has its own entry";
    EXPECT_EQ(gtk_window_get_transient_for(desktopPanel.gtkWindow()), nullptr);
    // A child follows as its parent moves, so a removed one stays where it
    // is, as the window manager may still be working through the moves the
    // drag caused; nor does it follow once the parent has been moved.
    const Rect left = panel->frame();
    const Rect moved(40, 60, 300, 200);
    pond->setFrame(moved, FrameDisplay::immediate);
    EXPECT_EQ(panel->frame(), left);
    ASSERT_TRUE(iterateUntil([&] { return placed(renderer, moved) && quiet(); }));
    EXPECT_NE(panel->frame(), pond->frame());

    // A child ordered below keeps its parent above it instead.
    panel->addChildWindow(*pond, WindowOrdering::below);
    EXPECT_EQ(gtk_window_get_transient_for(desktopPanel.gtkWindow()), renderer);
    EXPECT_EQ(gtk_window_get_transient_for(renderer), nullptr);
    EXPECT_TRUE(gtk_window_get_skip_taskbar_hint(desktopPanel.gtkWindow()));
    panel->orderOut();
    EXPECT_FALSE(pond->isVisible()) << "ordered out with its parent";
    panel->removeChildWindow(*pond);
    EXPECT_EQ(gtk_window_get_transient_for(desktopPanel.gtkWindow()), nullptr);
}

TEST_F(DesktopWindowSystemTest, FullScreen_PostsWillDuringTheCallAndDidOnceTheWindowHasChanged)
{
    GtkWindow* renderer = addRendererWindow();
    const std::shared_ptr<Window> pond = adopted();
    ASSERT_NE(pond, nullptr);
    pond->makeKeyAndOrderFront();
    ASSERT_TRUE(iterateUntil([&] { return mapped(renderer) && quiet(); }));
    const auto stateIsFullScreen = [&] {
        return (gdk_window_get_state(gtk_widget_get_window(GTK_WIDGET(renderer))) & GDK_WINDOW_STATE_FULLSCREEN) != 0;
    };

    // In and out again with a window manager; without one the window
    // never changes, so the second toggle tries to enter again.
    for (int toggle = 0; toggle < 2; ++toggle) {
        const bool entering = !pond->isFullScreen();
        SCOPED_TRACE(entering ? "entering" : "leaving");
        const SystemNotification will
            = entering ? SystemNotification::windowWillEnterFullScreen : SystemNotification::windowWillExitFullScreen;
        const SystemNotification did
            = entering ? SystemNotification::windowDidEnterFullScreen : SystemNotification::windowDidExitFullScreen;
        const std::size_t before = posted().size();
        pond->toggleFullScreen();
        ASSERT_EQ(posted().size(), before + 1);
        EXPECT_EQ(posted().back(), will);
        pond->toggleFullScreen(); // Ignored while the transition runs.
        EXPECT_EQ(posted().size(), before + 1);

        // With a window manager the state answers; without one the
        // transition still ends, after the window system's patience.
        ASSERT_TRUE(iterateUntil([&] {
            return std::ranges::find(posted().begin() + static_cast<std::ptrdiff_t>(before), posted().end(), did)
                != posted().end();
        }));
        EXPECT_EQ(pond->isFullScreen(), stateIsFullScreen());
        ASSERT_TRUE(iterateUntil(quiet));
        EXPECT_EQ(std::ranges::count(posted().begin() + static_cast<std::ptrdiff_t>(before), posted().end(), did), 1);
    }
}

class ChromeTest : public DesktopWindowSystemTest {
protected:
    std::shared_ptr<PondChromeView> makeChrome()
    {
        auto chrome = std::make_shared<PondChromeView>(m_catalog, "Settings", [this] { ++m_settings; });
        chrome->setDaysText("12 days of practice");
        return chrome;
    }

    int m_settings = 0;
};

TEST_F(ChromeTest, OverPond_TakesGearClicksAndLetsEveryOtherClickThrough)
{
    GtkWindow* renderer = addRendererWindow(780, 560);
    const std::shared_ptr<Window> pond = adopted();
    ASSERT_NE(pond, nullptr);
    const auto chrome = makeChrome();
    pond->contentView()->addOverlay(chrome);
    // Placed by us, so that the window manager has nothing left to move
    // while the clicks are aimed.
    const Rect frame(200, 100, 780, 560);
    pond->setFrame(frame, FrameDisplay::immediate);
    pond->makeKeyAndOrderFront();
    ASSERT_TRUE(
        iterateUntil([&] { return mapped(renderer) && placed(renderer, frame) && pond->frame() == frame && quiet(); }));
    const Size content = pond->contentView()->bounds().size;
    ASSERT_TRUE(iterateUntil([&] { return chrome->size() == content; }));
    EXPECT_LE(content.height, frame.height()) << "the content lies below the title bar";
    EXPECT_TRUE(pond->contentView()->isFlipped());
    EXPECT_EQ(pond->contentView()->convertFromWindow({10, 500}), Point(10, content.height - 500));

    // What a person sees: the chrome over a plain pond, shaded along the
    // top edge, and the wordmark, the day line and the gear drawn over the
    // shade of their rows.
    ASSERT_TRUE(GTK_IS_OVERLAY(gtk_bin_get_child(GTK_BIN(renderer))))
        << "the renderer's widget now lies under the overlay";
    const auto drawn = [&] {
        cairo_surface_t* surface = cairo_image_surface_create(
            CAIRO_FORMAT_ARGB32, static_cast<int>(content.width), static_cast<int>(content.height));
        cairo_t* cairo = cairo_create(surface);
        gtk_widget_draw(gtk_bin_get_child(GTK_BIN(renderer)), cairo);
        cairo_destroy(cairo);
        return surface;
    };
    cairo_surface_t* surface = drawn();
    const auto green = [&](int x, int y) { return channelAt(surface, x, y, 8); };
    EXPECT_EQ(channelAt(surface, 390, 280, 24), 255);
    EXPECT_LT(green(2, 0), green(390, 280) - 10) << "the shade";
    const auto drawnOver = [&](const Rect& area) {
        int most = 0;
        for (auto y = static_cast<int>(area.minY()); y < static_cast<int>(area.maxY()); ++y) {
            for (auto x = static_cast<int>(area.minX()); x < static_cast<int>(area.maxX()); ++x)
                most = std::max(most, green(x, y) - green(2, y));
        }
        return most;
    };
    const PondChromeView::Layout layout = chrome->layout();
    EXPECT_GT(drawnOver(layout.gear), 25) << "the gear's icon in its tint";
    EXPECT_GT(drawnOver(layout.wordmark), 60) << "the wordmark";
    EXPECT_GT(drawnOver(layout.days), 25) << "the day line";
    if (const char* folder = g_getenv("VELMORA_SCREENSHOT_DIR")) {
        EXPECT_EQ(cairo_surface_write_to_png(surface, (std::filesystem::path(folder) / "chrome.png").c_str()),
            CAIRO_STATUS_SUCCESS);
    }
    cairo_surface_destroy(surface);

    const Rect gear = chrome->layout().gear;
    const Point onGear(gear.midX(), gear.midY());
    const Point elsewhere(390, 280);
    EXPECT_TRUE(sendButton(GDK_BUTTON_PRESS, renderer, onGear));
    EXPECT_EQ(m_settings, 0) << "on release, as a button";
    EXPECT_TRUE(sendButton(GDK_BUTTON_RELEASE, renderer, onGear));
    EXPECT_EQ(m_settings, 1);

    EXPECT_FALSE(sendButton(GDK_BUTTON_PRESS, renderer, elsewhere));
    EXPECT_FALSE(sendButton(GDK_BUTTON_RELEASE, renderer, onGear)) << "the release follows its press to the pond";
    EXPECT_TRUE(sendButton(GDK_BUTTON_PRESS, renderer, onGear));
    EXPECT_TRUE(sendButton(GDK_BUTTON_RELEASE, renderer, elsewhere))
        << "let go off the gear: cancelled, and kept from the pond";
    EXPECT_EQ(m_settings, 1);

    chrome->hide();
    surface = drawn();
    EXPECT_EQ(green(2, 0), green(390, 280)) << "hidden, nothing is drawn";
    cairo_surface_destroy(surface);
    EXPECT_FALSE(sendButton(GDK_BUTTON_PRESS, renderer, onGear)) << "a hidden chrome takes nothing";
    EXPECT_FALSE(sendButton(GDK_BUTTON_RELEASE, renderer, onGear));
    EXPECT_EQ(m_settings, 1);
}

} // namespace
} // namespace velmora
