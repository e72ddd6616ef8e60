#include "StatusNotifierPopupMenu.h"

#include <memory>

#include <gdk/gdkx.h>
#include <gtk/gtk.h>

namespace velmora {

namespace {

struct Tracking {
    GMainLoop* loop = nullptr;
    std::optional<std::size_t> chosen;
    bool dismissed = false;
};

// An entry's index travels in its widget's data, next to the tracking.
constexpr const char* indexKey = "velmora-entry-index";

void entryActivated(GtkMenuItem* item, gpointer data)
{
    auto* tracking = static_cast<Tracking*>(data);
    tracking->chosen = GPOINTER_TO_SIZE(g_object_get_data(G_OBJECT(item), indexKey));
}

void menuDeactivated(GtkMenuShell* /*menu*/, gpointer data)
{
    auto* tracking = static_cast<Tracking*>(data);
    tracking->dismissed = true;
    // The chosen entry's "activate" follows within this same dispatch, so
    // the loop ends with the choice known.
    g_main_loop_quit(tracking->loop);
}

// What GTK places the menu by. A tray host's D-Bus call comes with no event
// of ours, and GTK needs one to find the pointer: a click on the screen's
// root window, where the pointer is, stands in. Only X11 has such a window;
// on Wayland a pop-up must hang from a surface of ours, which a tray item
// does not have, and the host shows the served menu itself. None there,
// and then no menu is shown.
GdkEvent* triggerEvent()
{
    if (GdkEvent* current = gtk_get_current_event()) {
        if (gdk_event_get_window(current) != nullptr && gdk_event_get_device(current) != nullptr)
            return current;
        gdk_event_free(current);
    }
    GdkDisplay* display = gdk_display_get_default();
    if (display == nullptr || !GDK_IS_X11_DISPLAY(display))
        return nullptr;
    GdkSeat* seat = gdk_display_get_default_seat(display);
    GdkDevice* pointer = seat != nullptr ? gdk_seat_get_pointer(seat) : nullptr;
    GdkScreen* screen = gdk_screen_get_default();
    GdkWindow* root = screen != nullptr ? gdk_screen_get_root_window(screen) : nullptr;
    if (pointer == nullptr || root == nullptr)
        return nullptr;
    GdkEvent* click = gdk_event_new(GDK_BUTTON_RELEASE);
    // The event owns a reference to its window.
    click->button.window = GDK_WINDOW(g_object_ref(root));
    click->button.button = GDK_BUTTON_SECONDARY;
    click->button.time = GDK_CURRENT_TIME;
    gdk_event_set_device(click, pointer);
    return click;
}

struct MenuDestroyer {
    void operator()(GtkWidget* menu) const
    {
        // Destroying it disconnects every handler, so none can reach the
        // tracking on the stack once run() returns.
        gtk_widget_destroy(menu);
        g_object_unref(menu);
    }
};

} // namespace

std::optional<std::size_t> StatusNotifierPopupMenu::run(const std::vector<MenuItem>& entries)
{
    GdkEvent* trigger = triggerEvent();
    if (trigger == nullptr)
        return std::nullopt;
    GMainLoop* loop = g_main_loop_new(g_main_context_get_thread_default(), FALSE);
    Tracking tracking;
    tracking.loop = loop;
    std::unique_ptr<GtkWidget, MenuDestroyer> menu(GTK_WIDGET(g_object_ref_sink(gtk_menu_new())));
    for (std::size_t index = 0; index < entries.size(); ++index) {
        const MenuItem& entry = entries[index];
        // Plain labels: a title is the user's text, not a mnemonic.
        GtkWidget* item
            = entry.separator ? gtk_separator_menu_item_new() : gtk_menu_item_new_with_label(entry.title.c_str());
        if (!entry.separator) {
            g_object_set_data(G_OBJECT(item), indexKey, GSIZE_TO_POINTER(index));
            g_signal_connect(item, "activate", G_CALLBACK(entryActivated), &tracking);
        }
        gtk_menu_shell_append(GTK_MENU_SHELL(menu.get()), item);
    }
    gtk_widget_show_all(menu.get());
    g_signal_connect(menu.get(), "deactivate", G_CALLBACK(menuDeactivated), &tracking);
    gtk_menu_popup_at_pointer(GTK_MENU(menu.get()), trigger);
    gdk_event_free(trigger);
    // A menu that could not grab the pointer is never shown and never
    // deactivated: waiting for it would hang the main thread.
    if (gtk_widget_get_visible(menu.get()) && !tracking.dismissed)
        g_main_loop_run(loop);
    // Gone before the loop its handlers would quit.
    menu.reset();
    g_main_loop_unref(loop);
    return tracking.chosen;
}

} // namespace velmora
