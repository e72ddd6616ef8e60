#include "DesktopApplication.h"

#include <cstdio>
#include <cstdlib>
#include <deque>
#include <exception>
#include <functional>
#include <utility>

#include <gtk/gtk.h>
#include <unistd.h>

#include "DesktopEventMonitors.h"
#include "SingleInstance.h"
#include "VelmoraMac/Platform/GLibPointer.h"
#include "VelmoraMac/Platform/PlatformToken.h"
#include "VelmoraMac/Platform/SystemNotificationHub.h"

namespace velmora {

namespace {

// Work for the main loop, run once each time it is scheduled, at a
// priority below GDK's events: by then GTK has handled the events that
// asked for it. The source goes with its owner, so it never calls into a
// destroyed object. An exception from the work is reported with g_warning
// and does not unwind through GLib.
class ScheduledAction {
public:
    ScheduledAction(const char* name, std::function<void()> action)
        : m_action(std::move(action))
    {
        static GSourceFuncs functions = {nullptr, nullptr, &ScheduledAction::dispatch, nullptr, nullptr, nullptr};
        m_source = SourcePointer::adopt(g_source_new(&functions, sizeof(ActionSource)));
        reinterpret_cast<ActionSource*>(m_source.get())->owner = this;
        g_source_set_name(m_source.get(), name);
        g_source_set_priority(m_source.get(), G_PRIORITY_DEFAULT_IDLE);
        g_source_attach(m_source.get(), g_main_context_default());
    }
    ScheduledAction(const ScheduledAction&) = delete;
    ScheduledAction& operator=(const ScheduledAction&) = delete;
    ScheduledAction(ScheduledAction&&) = delete;
    ScheduledAction& operator=(ScheduledAction&&) = delete;
    ~ScheduledAction() { g_source_destroy(m_source.get()); }

    // Runs on the next iteration that has nothing more urgent to do.
    void schedule() { g_source_set_ready_time(m_source.get(), 0); }
    // Runs once the monotonic clock (g_get_monotonic_time) reaches `when`.
    void scheduleAt(gint64 when) { g_source_set_ready_time(m_source.get(), when); }

private:
    using SourcePointer = GLibPointer<GSource, g_source_ref, g_source_unref>;
    struct ActionSource {
        GSource source;
        ScheduledAction* owner;
    };

    static gboolean dispatch(GSource* source, GSourceFunc /*callback*/, gpointer /*userData*/)
    {
        reinterpret_cast<ActionSource*>(source)->owner->run();
        return G_SOURCE_CONTINUE;
    }

    void run()
    {
        // Cleared first, so that the work may schedule itself again.
        g_source_set_ready_time(m_source.get(), -1);
        try {
            m_action();
        } catch (const std::exception& failure) {
            g_warning("%s failed: %s", g_source_get_name(m_source.get()), failure.what());
        } catch (...) {
            g_warning("%s failed", g_source_get_name(m_source.get()));
        }
    }

    std::function<void()> m_action;
    SourcePointer m_source;
};

// The single instance of this process, and where its reopen requests go.
struct InstanceRegistry {
    std::unique_ptr<SingleInstance> instance;
    DesktopApplication* application = nullptr;
    // Requests that came before the application was built.
    int pendingReopens = 0;
};

InstanceRegistry& registry()
{
    // Never destroyed: giving the name back is a D-Bus call, which must not
    // run at exit among the rendering program's destroyed objects. The bus
    // releases the name when the process ends.
    static auto* const instances = new InstanceRegistry;
    return *instances;
}

// The process's toplevel windows, in GTK's order.
class Toplevels {
public:
    Toplevels()
        : m_list(gtk_window_list_toplevels())
    {
    }
    Toplevels(const Toplevels&) = delete;
    Toplevels& operator=(const Toplevels&) = delete;
    Toplevels(Toplevels&&) = delete;
    Toplevels& operator=(Toplevels&&) = delete;
    ~Toplevels() { g_list_free(m_list); }

    template <typename Visit> void forEach(const Visit& visit) const
    {
        for (GList* item = m_list; item != nullptr; item = item->next)
            visit(GTK_WINDOW(item->data));
    }

private:
    GList* m_list;
};

// A window the user can be brought back to: shown, not in the Dock (on
// Linux: iconified, which presenting would undo) and not a popup.
bool presentable(GtkWindow* window)
{
    if (window == nullptr || !gtk_widget_get_visible(GTK_WIDGET(window))
        || gtk_window_get_window_type(window) != GTK_WINDOW_TOPLEVEL)
        return false;
    GdkWindow* surface = gtk_widget_get_window(GTK_WIDGET(window));
    return surface == nullptr || (gdk_window_get_state(surface) & GDK_WINDOW_STATE_ICONIFIED) == 0;
}

void writeToStandardError(const std::string& text)
{
    // Nothing is left to do when even standard error fails.
    (void)!::write(STDERR_FILENO, text.data(), text.size());
}

} // namespace

struct DesktopApplication::State {
    explicit State(DesktopApplication& application)
        : launch("velmora launch requests", [&application] { application.deliverLaunches(); })
        , activity("velmora activity check", [&application] { application.checkActivity(); })
        , exit("velmora exit", [] {
            // On the main thread, from the loop: the rendering program's own
            // threads go on until the exit handlers are done, as they would
            // at its own exit.
            std::exit(EXIT_SUCCESS); // NOLINT(concurrency-mt-unsafe)
        })
    {
        g_weak_ref_init(&lastFocused, nullptr);
    }
    State(const State&) = delete;
    State& operator=(const State&) = delete;
    State(State&&) = delete;
    State& operator=(State&&) = delete;
    ~State() { g_weak_ref_clear(&lastFocused); }

    // The window of ours that had the focus last, if it can be presented;
    // else the newest one that can.
    [[nodiscard]] GtkWindow* mostRecentWindow()
    {
        if (gpointer focused = g_weak_ref_get(&lastFocused)) {
            // Our toplevels are held by GTK's list, so the window outlives
            // this reference.
            g_object_unref(focused);
            if (presentable(GTK_WINDOW(focused)))
                return GTK_WINDOW(focused);
        }
        GtkWindow* newest = nullptr;
        // GTK lists its toplevels oldest first.
        Toplevels().forEach([&newest](GtkWindow* window) {
            if (presentable(window))
                newest = window;
        });
        return newest;
    }

    std::deque<LaunchEvent> launches;
    ScheduledAction launch;
    ScheduledAction activity;
    ScheduledAction exit;
    std::unique_ptr<PlatformToken> focusFilter;
    // As last posted.
    bool active = false;
    // When focus that seems lost counts as lost; none while it does not.
    std::optional<gint64> resignDeadline;
    // A GtkWindow, held weakly.
    GWeakRef lastFocused{};
};

DesktopApplication::DesktopApplication(std::shared_ptr<SystemNotificationHub> notifications,
    DesktopEventMonitors& monitors, const std::optional<std::string>& loginMarker)
    : m_notifications(std::move(notifications))
    , m_state(std::make_unique<State>(*this))
{
    m_state->launches.push_back(LoginLaunchMarker::launchEvent(loginMarker));
    InstanceRegistry& instances = registry();
    for (; instances.pendingReopens > 0; --instances.pendingReopens)
        m_state->launches.push_back(LaunchEvent{LaunchEvent::reopenApplication, std::nullopt});
    instances.application = this;
    m_state->active = isActive();
    m_state->focusFilter = monitors.addEventFilter([this](GdkEvent* event) {
        if (event->type == GDK_FOCUS_CHANGE)
            focusChanged(event->focus_change);
        return false;
    });
}

DesktopApplication::~DesktopApplication()
{
    InstanceRegistry& instances = registry();
    if (instances.application == this)
        instances.application = nullptr;
}

bool DesktopApplication::claimSingleInstance()
{
    GError* error = nullptr;
    GDBusConnection* bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, &error);
    if (bus == nullptr) {
        // No session bus: no other instance could be reached either, so
        // this one runs rather than leave the user with nothing.
        g_error_free(error);
        return claimSingleInstance(nullptr);
    }
    const bool first = claimSingleInstance(bus);
    g_object_unref(bus);
    return first;
}

bool DesktopApplication::claimSingleInstance(GDBusConnection* connection)
{
    InstanceRegistry& instances = registry();
    if (instances.instance)
        return true;
    SingleInstance::Claim claimed = SingleInstance::Claim::unknown;
    instances.instance = SingleInstance::claim(connection, &DesktopApplication::reopenRequested, claimed);
    return claimed != SingleInstance::Claim::reopenedOther;
}

void DesktopApplication::releaseSingleInstance()
{
    registry().instance.reset();
}

void DesktopApplication::reopenRequested()
{
    InstanceRegistry& instances = registry();
    if (instances.application != nullptr)
        instances.application->enqueueLaunch(LaunchEvent{LaunchEvent::reopenApplication, std::nullopt});
    else
        ++instances.pendingReopens;
}

std::int32_t DesktopApplication::processID() const
{
    return static_cast<std::int32_t>(::getpid());
}

bool DesktopApplication::isActive() const
{
    bool active = false;
    Toplevels().forEach([&active](GtkWindow* window) { active = active || gtk_window_is_active(window); });
    return active;
}

void DesktopApplication::activate()
{
    if (GtkWindow* window = m_state->mostRecentWindow())
        gtk_window_present_with_time(window, gtk_get_current_event_time());
}

void DesktopApplication::setLaunchHandler(LaunchHandler handler)
{
    m_launchHandler = std::move(handler);
    if (m_launchHandler && !m_state->launches.empty())
        m_state->launch.schedule();
}

void DesktopApplication::enqueueLaunch(LaunchEvent event)
{
    m_state->launches.push_back(std::move(event));
    if (m_launchHandler)
        m_state->launch.schedule();
}

void DesktopApplication::deliverLaunches()
{
    std::deque<LaunchEvent>& launches = m_state->launches;
    while (m_launchHandler && !launches.empty()) {
        const LaunchEvent event = std::move(launches.front());
        launches.pop_front();
        std::optional<LaunchEvent> outer = std::exchange(m_currentLaunchEvent, event);
        // A copy: the handler may replace itself.
        const LaunchHandler handler = m_launchHandler;
        try {
            handler(event);
        } catch (...) {
            m_currentLaunchEvent = std::move(outer);
            // The failed request is reported by the caller; the others
            // still get their turn.
            if (!launches.empty())
                m_state->launch.schedule();
            throw;
        }
        m_currentLaunchEvent = std::move(outer);
    }
}

void DesktopApplication::focusChanged(const GdkEventFocus& focus)
{
    if (focus.in != 0) {
        gpointer widget = nullptr;
        gdk_window_get_user_data(focus.window, &widget);
        if (widget != nullptr && GTK_IS_WINDOW(widget))
            g_weak_ref_set(&m_state->lastFocused, widget);
    }
    // Looked at once GTK has handled this event and any that came with it:
    // only then does gtk_window_is_active tell.
    m_state->activity.schedule();
}

void DesktopApplication::checkActivity()
{
    State& state = *m_state;
    if (isActive()) {
        state.resignDeadline.reset();
        if (!std::exchange(state.active, true))
            m_notifications->post(SystemNotification::applicationDidBecomeActive);
        return;
    }
    if (!state.active) {
        state.resignDeadline.reset();
        return;
    }
    const gint64 now = g_get_monotonic_time();
    if (!state.resignDeadline)
        state.resignDeadline = now + resignGraceMicroseconds;
    if (now < *state.resignDeadline) {
        state.activity.scheduleAt(*state.resignDeadline);
        return;
    }
    state.resignDeadline.reset();
    state.active = false;
    m_notifications->post(SystemNotification::applicationDidResignActive);
}

void DesktopApplication::runModalAlert(
    const std::string& message, const std::string& informativeText, const std::string& buttonTitle)
{
    if (gdk_display_get_default() == nullptr) {
        writeToStandardError(message + "\n" + informativeText + "\n" + buttonTitle + "\n");
        return;
    }
    GtkWindow* parent = m_state->mostRecentWindow();
    const auto flags = static_cast<GtkDialogFlags>(GTK_DIALOG_MODAL | GTK_DIALOG_DESTROY_WITH_PARENT);
    GtkWidget* dialog
        = gtk_message_dialog_new(parent, flags, GTK_MESSAGE_WARNING, GTK_BUTTONS_NONE, "%s", message.c_str());
    if (!informativeText.empty())
        gtk_message_dialog_format_secondary_text(GTK_MESSAGE_DIALOG(dialog), "%s", informativeText.c_str());
    // A plain label: gtk_dialog_add_button would read an underscore in the
    // title as a mnemonic and drop it.
    GtkWidget* button = gtk_button_new_with_label(buttonTitle.c_str());
    gtk_widget_set_can_default(button, TRUE);
    gtk_widget_show(button);
    gtk_dialog_add_action_widget(GTK_DIALOG(dialog), button, GTK_RESPONSE_ACCEPT);
    gtk_dialog_set_default_response(GTK_DIALOG(dialog), GTK_RESPONSE_ACCEPT);
    if (parent == nullptr)
        gtk_window_set_position(GTK_WINDOW(dialog), GTK_WIN_POS_CENTER);
    // Any answer, closing the dialog included, dismisses it.
    (void)gtk_dialog_run(GTK_DIALOG(dialog));
    gtk_widget_destroy(dialog);
}

void DesktopApplication::terminate()
{
    // Hidden, not destroyed: the rendering program still holds its window
    // while its exit handlers run.
    Toplevels().forEach([](GtkWindow* window) {
        if (gtk_widget_get_visible(GTK_WIDGET(window)))
            gtk_widget_hide(GTK_WIDGET(window));
    });
    m_state->exit.schedule();
}

} // namespace velmora
