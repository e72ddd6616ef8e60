#include "DesktopEventMonitors.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

#include <gtk/gtk.h>

#include "GdkEventTranslator.h"
#include "VelmoraMac/Platform/PlatformToken.h"

namespace velmora {

namespace {

// GDK keeps one handler per process; this is the instance installed there.
DesktopEventMonitors* installedInstance = nullptr;

// GTK's own dispatch, as GDK's handler expects it (gtk_main_do_event takes
// no data argument, and GCC rightly refuses to cast one function type to
// the other).
void passToGtk(GdkEvent* event, gpointer /*data*/)
{
    gtk_main_do_event(event);
}

// The raw filters. Shared with their tokens, which may outlive the
// monitors.
struct FilterList {
    struct Entry {
        std::uint64_t id = 0;
        DesktopEventMonitors::EventFilter filter;
        bool removed = false;
    };

    // Removed entries are only marked while a walk runs (a filter may remove
    // itself), and added ones wait in `added` so that `entries` is never
    // reallocated under the walk.
    std::vector<Entry> entries;
    std::vector<Entry> added;
    int walkDepth = 0;
    std::uint64_t nextID = 1;

    void settle()
    {
        std::erase_if(entries, [](const Entry& entry) { return entry.removed; });
        std::ranges::move(added, std::back_inserter(entries));
        added.clear();
    }
};

// Ends a walk of the filters however it ends, a throwing filter included.
class FilterWalk {
public:
    explicit FilterWalk(std::shared_ptr<FilterList> list)
        : m_list(std::move(list))
    {
        ++m_list->walkDepth;
    }
    FilterWalk(const FilterWalk&) = delete;
    FilterWalk& operator=(const FilterWalk&) = delete;
    FilterWalk(FilterWalk&&) = delete;
    FilterWalk& operator=(FilterWalk&&) = delete;
    ~FilterWalk()
    {
        if (--m_list->walkDepth == 0)
            m_list->settle();
    }

    [[nodiscard]] const std::vector<FilterList::Entry>& entries() const { return m_list->entries; }

private:
    // Keeps the list alive even when a filter destroys the monitors.
    std::shared_ptr<FilterList> m_list;
};

} // namespace

struct DesktopEventMonitors::State {
    State()
        : translator([this](GdkWindow* window) { return target(window); })
    {
    }

    // The event's toplevel, and where its top left lies on the root window.
    // The origin comes from the event's own coordinates (relative to its
    // window, and on the root window) rather than from
    // gdk_window_get_origin, which asks the X server on every motion event.
    [[nodiscard]] GdkEventTranslator::Target target(GdkWindow* window) const
    {
        GdkEventTranslator::Target found;
        if (window == nullptr)
            return found;
        GdkWindow* toplevel = gdk_window_get_effective_toplevel(window);
        if (windowLookup)
            found.window = windowLookup(toplevel);
        found.contentHeight = gdk_window_get_height(toplevel);
        double x = 0;
        double y = 0;
        double rootX = 0;
        double rootY = 0;
        if (translating == nullptr || gdk_event_get_coords(translating, &x, &y) == FALSE
            || gdk_event_get_root_coords(translating, &rootX, &rootY) == FALSE)
            return found;
        for (GdkWindow* inner = window; inner != nullptr && inner != toplevel;
             inner = gdk_window_get_effective_parent(inner))
            gdk_window_coords_to_parent(inner, x, y, &x, &y);
        found.contentOrigin = {rootX - x, rootY - y};
        return found;
    }

    std::shared_ptr<FilterList> filters = std::make_shared<FilterList>();
    EventMonitorChain chain;
    WindowLookup windowLookup;
    // The event being translated, for target(); null between events.
    const GdkEvent* translating = nullptr;
    // Last: its lookup reads the members above.
    GdkEventTranslator translator;
};

DesktopEventMonitors::DesktopEventMonitors()
    : m_state(std::make_unique<State>())
{
    if (installedInstance != nullptr)
        throw std::logic_error("GDK has one event handler, and another DesktopEventMonitors holds it");
    installedInstance = this;
    gdk_event_handler_set(&DesktopEventMonitors::dispatchEvent, this, nullptr);
}

DesktopEventMonitors::~DesktopEventMonitors()
{
    gdk_event_handler_set(&passToGtk, nullptr, nullptr);
    installedInstance = nullptr;
}

std::unique_ptr<PlatformToken> DesktopEventMonitors::addLocalMonitor(std::uint64_t eventMask, Handler handler)
{
    return m_state->chain.addLocalMonitor(eventMask, std::move(handler));
}

std::unique_ptr<PlatformToken> DesktopEventMonitors::addEventFilter(EventFilter filter)
{
    if (!filter)
        return nullptr;
    FilterList& list = *m_state->filters;
    const std::uint64_t id = list.nextID++;
    FilterList::Entry entry{id, std::move(filter), false};
    if (list.walkDepth > 0) {
        list.added.push_back(std::move(entry));
    } else {
        list.settle();
        list.entries.push_back(std::move(entry));
    }
    return std::make_unique<RemovalToken>([weak = std::weak_ptr<FilterList>(m_state->filters), id] {
        const auto filters = weak.lock();
        if (!filters)
            return;
        std::erase_if(filters->added, [id](const FilterList::Entry& added) { return added.id == id; });
        for (FilterList::Entry& installed : filters->entries) {
            if (installed.id == id)
                installed.removed = true;
        }
        if (filters->walkDepth == 0)
            filters->settle();
    });
}

void DesktopEventMonitors::setWindowLookup(WindowLookup lookup)
{
    m_state->windowLookup = std::move(lookup);
}

bool DesktopEventMonitors::handle(GdkEvent* event)
{
    {
        const FilterWalk walk(m_state->filters);
        for (const FilterList::Entry& entry : walk.entries()) {
            if (!entry.removed && entry.filter(event))
                return true;
        }
    }
    State& state = *m_state;
    state.translating = event;
    std::optional<InputEvent> translated;
    try {
        translated = state.translator.translate(*event);
    } catch (...) {
        state.translating = nullptr;
        throw;
    }
    state.translating = nullptr;
    return translated && state.chain.dispatch(*translated) == EventDisposition::consume;
}

void DesktopEventMonitors::dispatchEvent(GdkEvent* event, gpointer self)
{
    bool consumed = false;
    try {
        consumed = static_cast<DesktopEventMonitors*>(self)->handle(event);
    } catch (const std::exception& failure) {
        g_warning("An event monitor failed, and the event goes on to the window: %s", failure.what());
    } catch (...) {
        g_warning("An event monitor failed, and the event goes on to the window");
    }
    if (!consumed)
        gtk_main_do_event(event);
}

} // namespace velmora
