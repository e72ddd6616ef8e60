#include "PanelWidget.h"

#include <atomic>
#include <cstdint>
#include <string>
#include <utility>

#include "PanelColumn.h"
#include "PanelImageCache.h"
#include "PanelPageBuilder.h"
#include "PanelStyleSheet.h"
#include "VelmoraMac/Panel/PanelContent.h"
#include "VelmoraMac/Platform/GLibPointer.h"

namespace velmora {

namespace {

using WidgetPointer = GLibPointer<GtkWidget, g_object_ref, g_object_unref>;
using ProviderPointer = GLibPointer<GtkCssProvider, g_object_ref, g_object_unref>;
using SourcePointer = GLibPointer<GSource, g_source_ref, g_source_unref>;

// Before GTK's layout and drawing, so that a change shows in the very frame
// that follows it.
constexpr int rebuildPriority = G_PRIORITY_HIGH_IDLE;

std::string uniqueRootName()
{
    static std::atomic<unsigned> next{0};
    return "velmora-panel-" + std::to_string(next++);
}

// Which page a body shows: a rebuild of the same page keeps the reader's
// place, another page starts at its top.
std::string pageKey(const PanelBody& body)
{
    std::string key = std::to_string(body.page.index());
    if (const auto* selection = std::get_if<SelectionPage>(&body.page))
        key += "/" + selection->title.text;
    else if (const auto* explanation = std::get_if<ExplanationPage>(&body.page))
        key += "/" + explanation->title.text;
    return key;
}

void destroyChildren(GtkWidget* container)
{
    GList* children = gtk_container_get_children(GTK_CONTAINER(container));
    for (GList* child = children; child != nullptr; child = child->next)
        gtk_widget_destroy(static_cast<GtkWidget*>(child->data));
    g_list_free(children);
}

void place(GtkWidget* slot, GtkWidget* child)
{
    destroyChildren(slot);
    if (child != nullptr) {
        gtk_container_add(GTK_CONTAINER(slot), child);
        gtk_widget_show_all(child);
    }
    gtk_widget_set_visible(slot, child != nullptr ? TRUE : FALSE);
}

} // namespace

struct PanelWidget::State {
    std::shared_ptr<PanelContent> content;
    std::string rootName = uniqueRootName();
    // The persistent frame; only the slots' children are rebuilt, so that
    // the scrolling area keeps its adjustment across rebuilds.
    WidgetPointer root;
    GtkWidget* headerSlot = nullptr;
    GtkWidget* stepsSlot = nullptr;
    GtkWidget* scroller = nullptr;
    GtkWidget* contentSlot = nullptr;
    GtkWidget* bottomSlot = nullptr;
    ProviderPointer provider = ProviderPointer::adopt(gtk_css_provider_new());
    std::string styleText;
    PanelImageCache images;
    SourcePointer pending;
    std::string shownPage;

    static gboolean onIdle(gpointer data)
    {
        auto* state = static_cast<State*>(data);
        // GLib keeps its own reference while dispatching.
        const SourcePointer finished = std::move(state->pending);
        state->rebuildSafely();
        return G_SOURCE_REMOVE;
    }

    void schedule()
    {
        if (pending)
            return;
        pending = SourcePointer::adopt(g_idle_source_new());
        g_source_set_priority(pending.get(), rebuildPriority);
        g_source_set_callback(pending.get(), &State::onIdle, this, nullptr);
        g_source_set_name(pending.get(), "velmora panel rebuild");
        g_source_attach(pending.get(), nullptr);
    }

    void cancel()
    {
        if (pending) {
            g_source_destroy(pending.get());
            pending.reset();
        }
    }

    void rebuildSafely() noexcept
    {
        try {
            rebuild();
        } catch (const std::exception& failure) {
            // The page shown stays; the next change tries again.
            g_warning("Velmora panel: the page could not be built: %s", failure.what());
        }
    }

    void rebuild()
    {
        const PanelBody body = content->view().body();
        PanelStyleSheet sheet(rootName, body);
        PanelPageBuilder builder(sheet, images);

        GtkWidget* toplevel = gtk_widget_get_toplevel(root.get());
        GtkWidget* focused = GTK_IS_WINDOW(toplevel) ? gtk_window_get_focus(GTK_WINDOW(toplevel)) : nullptr;
        const std::string focusKey = focused != nullptr && gtk_widget_is_ancestor(focused, root.get())
            ? PanelPageBuilder::keyOf(focused)
            : std::string();
        GtkAdjustment* scroll = gtk_scrolled_window_get_vadjustment(GTK_SCROLLED_WINDOW(scroller));
        const double scrolled = gtk_adjustment_get_value(scroll);

        place(headerSlot, builder.header(body.header));
        place(stepsSlot, body.steps ? builder.steps(*body.steps) : nullptr);
        place(contentSlot, builder.content(body));
        place(bottomSlot, builder.bottom(body));
        applyStyle(sheet.text());

        std::string key = pageKey(body);
        const bool samePage = key == shownPage;
        gtk_adjustment_set_value(scroll, samePage ? scrolled : 0.0);
        shownPage = std::move(key);
        GtkWidget* again = samePage && !focusKey.empty() ? PanelPageBuilder::findKey(root.get(), focusKey) : nullptr;
        if (again != nullptr && gtk_widget_get_can_focus(again))
            gtk_widget_grab_focus(again);
        else if (!samePage || !focusKey.empty())
            focusPrimary();
    }

    // The footer's button that leads on, else the page's first control:
    // what Return or Space should press on a page just shown.
    void focusPrimary() const
    {
        GtkWidget* primary = focusable(bottomSlot, Order::last);
        if (primary == nullptr)
            primary = focusable(contentSlot, Order::first);
        if (primary != nullptr)
            gtk_widget_grab_focus(primary);
    }

    enum class Order : std::uint8_t { first, last };

    static GtkWidget* focusable(GtkWidget* widget, Order order)
    {
        if (!gtk_widget_get_visible(widget) || !gtk_widget_is_sensitive(widget))
            return nullptr;
        if (gtk_widget_get_can_focus(widget) && !GTK_IS_CONTAINER(widget))
            return widget;
        if (gtk_widget_get_can_focus(widget) && GTK_IS_BUTTON(widget))
            return widget;
        if (!GTK_IS_CONTAINER(widget))
            return nullptr;
        GList* children = gtk_container_get_children(GTK_CONTAINER(widget));
        if (order == Order::last)
            children = g_list_reverse(children);
        GtkWidget* found = nullptr;
        for (GList* child = children; child != nullptr && found == nullptr; child = child->next)
            found = focusable(static_cast<GtkWidget*>(child->data), order);
        g_list_free(children);
        return found;
    }

    void applyStyle(std::string text)
    {
        if (text == styleText)
            return;
        GError* error = nullptr;
        if (gtk_css_provider_load_from_data(provider.get(), text.c_str(), static_cast<gssize>(text.size()), &error)
            == FALSE) {
            // The panel stays legible in the theme's own style.
            g_warning("Velmora panel: the style sheet was refused: %s", error != nullptr ? error->message : "");
            g_clear_error(&error);
        }
        styleText = std::move(text);
    }
};

PanelWidget::PanelWidget(std::shared_ptr<PanelContent> content)
    : m_state(std::make_unique<State>())
{
    State& state = *m_state;
    state.content = std::move(content);

    GtkWidget* root = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
    state.root = WidgetPointer::adopt(GTK_WIDGET(g_object_ref_sink(root)));
    gtk_widget_set_name(root, state.rootName.c_str());
    gtk_style_context_add_class(gtk_widget_get_style_context(root), "velmora-panel");

    state.headerSlot = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
    state.stepsSlot = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
    state.scroller = gtk_scrolled_window_new(nullptr, nullptr);
    gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(state.scroller), GTK_POLICY_NEVER, GTK_POLICY_AUTOMATIC);
    gtk_widget_set_vexpand(state.scroller, TRUE);
    // Scrolled by its page's controls, and by the wheel; never a tab stop
    // of its own, which would hold the keyboard where nothing shows it.
    gtk_widget_set_can_focus(state.scroller, FALSE);
    // The page's own margins live inside the column, so that the scroll bar
    // sits at the window's edge and the page scrolls under the header.
    state.contentSlot = PanelColumn::create(PanelPageBuilder::columnWidth);
    GtkWidget* contentFrame = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
    gtk_widget_set_margin_start(contentFrame, 24);
    gtk_widget_set_margin_end(contentFrame, 24);
    gtk_widget_set_margin_top(contentFrame, 8);
    gtk_widget_set_margin_bottom(contentFrame, 24);
    gtk_container_add(GTK_CONTAINER(contentFrame), state.contentSlot);
    GtkWidget* viewport = gtk_viewport_new(nullptr, nullptr);
    gtk_viewport_set_shadow_type(GTK_VIEWPORT(viewport), GTK_SHADOW_NONE);
    gtk_container_add(GTK_CONTAINER(viewport), contentFrame);
    gtk_container_add(GTK_CONTAINER(state.scroller), viewport);
    state.bottomSlot = PanelColumn::create(PanelPageBuilder::columnWidth + 2 * 24);

    gtk_container_add(GTK_CONTAINER(root), state.headerSlot);
    gtk_container_add(GTK_CONTAINER(root), state.stepsSlot);
    gtk_container_add(GTK_CONTAINER(root), state.scroller);
    gtk_container_add(GTK_CONTAINER(root), state.bottomSlot);

    gtk_widget_show_all(root);

    gtk_style_context_add_provider_for_screen(
        gdk_screen_get_default(), GTK_STYLE_PROVIDER(state.provider.get()), GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
    state.content->view().setOnNeedsDisplay([&state] { state.schedule(); });
    state.rebuildSafely();
}

PanelWidget::~PanelWidget()
{
    State& state = *m_state;
    state.content->view().setOnNeedsDisplay({});
    state.cancel();
    gtk_widget_destroy(state.root.get());
    gtk_style_context_remove_provider_for_screen(gdk_screen_get_default(), GTK_STYLE_PROVIDER(state.provider.get()));
}

GtkWidget* PanelWidget::widget() const
{
    return m_state->root.get();
}

void PanelWidget::focusPrimary()
{
    m_state->focusPrimary();
}

void PanelWidget::flush()
{
    if (m_state->pending) {
        m_state->cancel();
        m_state->rebuild();
    }
}

} // namespace velmora
