#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <gtk/gtk.h>

#include "DesktopSession.h"
#include "VelmoraMac/Platform/Desktop/DesktopEventMonitors.h"
#include "VelmoraMac/Platform/Desktop/GdkEventTranslator.h"

namespace velmora {
namespace {

using test::iterateUntil;

struct EventDeleter {
    void operator()(GdkEvent* event) const { gdk_event_free(event); }
};
using Event = std::unique_ptr<GdkEvent, EventDeleter>;

// A key of the keyboard GDK knows, as X delivers it for `window`.
Event keyPress(GdkWindow* window, std::uint16_t hardwareKeycode)
{
    Event event(gdk_event_new(GDK_KEY_PRESS));
    event->key.window = GDK_WINDOW(g_object_ref(window));
    event->key.hardware_keycode = hardwareKeycode;
    // What a US layout prints on the key; Escape is known by it.
    event->key.keyval = hardwareKeycode == 9 ? GDK_KEY_Escape : GDK_KEY_a;
    gdk_event_set_device(event.get(), gdk_seat_get_keyboard(gdk_display_get_default_seat(gdk_display_get_default())));
    return event;
}

Window* const pond = reinterpret_cast<Window*>(0x1000); // NOLINT(performance-no-int-to-ptr): compared, never used

class DesktopEventMonitorsTest : public testing::Test {
protected:
    void SetUp() override
    {
        if (gtk_init_check(nullptr, nullptr) == FALSE)
            GTEST_SKIP() << "no display";
        m_window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
        gtk_window_set_default_size(GTK_WINDOW(m_window), 300, 200);
        gtk_widget_show_all(m_window);
        g_signal_connect(m_window, "key-press-event", G_CALLBACK(&DesktopEventMonitorsTest::keyPressed), &m_keysAtGtk);
    }
    void TearDown() override
    {
        if (m_window != nullptr)
            gtk_widget_destroy(m_window);
    }

    static gboolean keyPressed(GtkWidget* /*widget*/, GdkEventKey* event, gpointer keys)
    {
        static_cast<std::vector<int>*>(keys)->push_back(event->hardware_keycode);
        return TRUE;
    }

    [[nodiscard]] GdkWindow* surface() const { return gtk_widget_get_window(m_window); }

    GtkWidget* m_window = nullptr;
    std::vector<int> m_keysAtGtk;
};

TEST_F(DesktopEventMonitorsTest, Keys_ReachTheMonitorsTranslatedAndGtkOnlyWhenPassedOn)
{
    auto monitors = std::make_unique<DesktopEventMonitors>();
    monitors->setWindowLookup([this](GdkWindow* toplevel) { return toplevel == surface() ? pond : nullptr; });
    std::vector<std::string> order;
    std::vector<InputEvent> seen;
    // Escape is consumed: the window must never see it.
    auto monitor = monitors->addLocalMonitor(eventMaskBit(InputEventType::keyDown), [&](const InputEvent& event) {
        order.emplace_back("monitor");
        seen.push_back(event);
        return event.keyCode == KeyCode::escape ? EventDisposition::consume : EventDisposition::passOn;
    });
    // F (41) is consumed by a filter, before any monitor sees it.
    auto filter = monitors->addEventFilter([&](GdkEvent* event) {
        if (event->type != GDK_KEY_PRESS)
            return false;
        order.emplace_back("filter");
        return event->key.hardware_keycode == 41;
    });

    for (const int hardware : {25, 9, 41})
        gdk_event_put(keyPress(surface(), static_cast<std::uint16_t>(hardware)).get());
    ASSERT_TRUE(iterateUntil([&] { return order.size() == 5; }));
    EXPECT_EQ(order, (std::vector<std::string>{"filter", "monitor", "filter", "monitor", "filter"}));
    ASSERT_EQ(seen.size(), 2U);
    EXPECT_EQ(seen[0].type, InputEventType::keyDown);
    EXPECT_EQ(seen[0].keyCode, KeyCode::w);
    EXPECT_EQ(seen[0].window, pond);
    EXPECT_EQ(seen[1].keyCode, KeyCode::escape);
    EXPECT_EQ(m_keysAtGtk, std::vector<int>{25}) << "only the key passed on reaches the window";

    // Removed monitors and filters see nothing more; the key goes on.
    monitor.reset();
    filter.reset();
    gdk_event_put(keyPress(surface(), 9).get());
    ASSERT_TRUE(iterateUntil([&] { return m_keysAtGtk.size() == 2; }));
    EXPECT_EQ(order.size(), 5U);

    // Gone, they leave GTK's own dispatch in place.
    monitors.reset();
    gdk_event_put(keyPress(surface(), 25).get());
    EXPECT_TRUE(iterateUntil([&] { return m_keysAtGtk.size() == 3; }));
}

TEST_F(DesktopEventMonitorsTest, Pointer_IsPlacedFromTheLowerLeftOfItsToplevel)
{
    // The event comes from a child window 40 points right and 30 down in
    // the toplevel, 10 and 20 points into it.
    GtkWidget* fixed = gtk_fixed_new();
    GtkWidget* box = gtk_event_box_new();
    gtk_event_box_set_visible_window(GTK_EVENT_BOX(box), TRUE);
    gtk_widget_set_size_request(box, 100, 100);
    gtk_fixed_put(GTK_FIXED(fixed), box, 40, 30);
    gtk_container_add(GTK_CONTAINER(m_window), fixed);
    gtk_widget_show_all(m_window);
    ASSERT_TRUE(iterateUntil([&] {
        GdkWindow* child = gtk_widget_get_window(box);
        int x = 0;
        int y = 0;
        if (child != nullptr)
            gdk_window_get_position(child, &x, &y);
        return child != nullptr && x == 40 && y == 30;
    }));

    DesktopEventMonitors monitors;
    monitors.setWindowLookup([this](GdkWindow* toplevel) { return toplevel == surface() ? pond : nullptr; });
    std::vector<InputEvent> seen;
    auto monitor = monitors.addLocalMonitor(eventMaskBit(InputEventType::leftMouseDown), [&](const InputEvent& event) {
        seen.push_back(event);
        return EventDisposition::consume;
    });

    Event press(gdk_event_new(GDK_BUTTON_PRESS));
    press->button.window = GDK_WINDOW(g_object_ref(gtk_widget_get_window(box)));
    press->button.button = GDK_BUTTON_PRIMARY;
    press->button.x = 10;
    press->button.y = 20;
    press->button.x_root = 510;
    press->button.y_root = 320;
    EXPECT_TRUE(monitors.handle(press.get()));

    const double height = gdk_window_get_height(surface());
    ASSERT_EQ(seen.size(), 1U);
    EXPECT_EQ(seen[0].type, InputEventType::leftMouseDown);
    EXPECT_EQ(seen[0].window, pond);
    EXPECT_DOUBLE_EQ(seen[0].locationInWindow.x, 50);
    EXPECT_DOUBLE_EQ(seen[0].locationInWindow.y, height - 50);
}

TEST_F(DesktopEventMonitorsTest, Filters_MayRemoveThemselvesAndAddOthersWhileFiltering)
{
    DesktopEventMonitors monitors;
    std::vector<std::string> calls;
    std::unique_ptr<PlatformToken> late;
    std::unique_ptr<PlatformToken> once;
    once = monitors.addEventFilter([&](GdkEvent* /*event*/) {
        calls.emplace_back("once");
        once.reset();
        late = monitors.addEventFilter([&](GdkEvent* /*event*/) {
            calls.emplace_back("late");
            return false;
        });
        return false;
    });
    const Event first = keyPress(surface(), 25);
    const Event second = keyPress(surface(), 25);
    EXPECT_FALSE(monitors.handle(first.get()));
    EXPECT_FALSE(monitors.handle(second.get()));
    EXPECT_EQ(calls, (std::vector<std::string>{"once", "late"})) << "the added filter sees the next event";

    EXPECT_THROW(DesktopEventMonitors(), std::logic_error) << "GDK has one handler";
}

} // namespace
} // namespace velmora
