#include "PanelColumn.h"

#include <algorithm>

namespace velmora {

namespace {

// The instance and class records of the column's GType. GTK's type macros
// cast between function-pointer types, which C++ rejects here, so the type
// is registered by hand with functions of the exact signatures.
struct ColumnInstance {
    GtkBin parent;
    int maximumWidth;
};

struct ColumnClass {
    GtkBinClass parent;
};

int maximumWidthOf(GtkWidget* widget)
{
    return reinterpret_cast<ColumnInstance*>(widget)->maximumWidth;
}

GtkWidget* visibleChild(GtkWidget* widget)
{
    GtkWidget* child = gtk_bin_get_child(GTK_BIN(widget));
    return child != nullptr && gtk_widget_get_visible(child) ? child : nullptr;
}

GtkSizeRequestMode requestMode(GtkWidget* /*widget*/)
{
    return GTK_SIZE_REQUEST_HEIGHT_FOR_WIDTH;
}

void preferredWidth(GtkWidget* widget, gint* minimum, gint* natural)
{
    *minimum = 0;
    *natural = 0;
    if (GtkWidget* child = visibleChild(widget)) {
        gtk_widget_get_preferred_width(child, minimum, natural);
        // Asking for the full column lets a window sized to its content
        // open at a readable width.
        *natural = std::max(*minimum, maximumWidthOf(widget));
    }
}

void preferredHeightForWidth(GtkWidget* widget, gint width, gint* minimum, gint* natural)
{
    *minimum = 0;
    *natural = 0;
    if (GtkWidget* child = visibleChild(widget))
        gtk_widget_get_preferred_height_for_width(child, std::min(width, maximumWidthOf(widget)), minimum, natural);
}

void preferredHeight(GtkWidget* widget, gint* minimum, gint* natural)
{
    gint width = 0;
    gint naturalWidth = 0;
    preferredWidth(widget, &width, &naturalWidth);
    preferredHeightForWidth(widget, naturalWidth, minimum, natural);
}

void preferredWidthForHeight(GtkWidget* widget, gint /*height*/, gint* minimum, gint* natural)
{
    preferredWidth(widget, minimum, natural);
}

void allocate(GtkWidget* widget, GtkAllocation* allocation)
{
    gtk_widget_set_allocation(widget, allocation);
    GtkWidget* child = visibleChild(widget);
    if (child == nullptr)
        return;
    gint childMinimum = 0;
    gint childNatural = 0;
    gtk_widget_get_preferred_width(child, &childMinimum, &childNatural);
    const int width = std::max(childMinimum, std::min(allocation->width, maximumWidthOf(widget)));
    GtkAllocation placed = *allocation;
    placed.x += std::max(0, (allocation->width - width) / 2);
    placed.width = width;
    gtk_widget_size_allocate(child, &placed);
}

void classInit(gpointer klass, gpointer /*data*/)
{
    auto* widgetClass = GTK_WIDGET_CLASS(klass);
    widgetClass->get_request_mode = requestMode;
    widgetClass->get_preferred_width = preferredWidth;
    widgetClass->get_preferred_height = preferredHeight;
    widgetClass->get_preferred_height_for_width = preferredHeightForWidth;
    widgetClass->get_preferred_width_for_height = preferredWidthForHeight;
    widgetClass->size_allocate = allocate;
}

void instanceInit(GTypeInstance* instance, gpointer /*klass*/)
{
    gtk_widget_set_has_window(GTK_WIDGET(instance), FALSE);
}

GType columnType()
{
    static const GType type = [] {
        GTypeInfo info{};
        info.class_size = sizeof(ColumnClass);
        info.class_init = classInit;
        info.instance_size = sizeof(ColumnInstance);
        info.instance_init = instanceInit;
        return g_type_register_static(GTK_TYPE_BIN, "VelmoraPanelColumn", &info, static_cast<GTypeFlags>(0));
    }();
    return type;
}

} // namespace

GtkWidget* PanelColumn::create(int maximumWidth)
{
    auto* widget = GTK_WIDGET(g_object_new(columnType(), nullptr));
    reinterpret_cast<ColumnInstance*>(widget)->maximumWidth = std::max(1, maximumWidth);
    return widget;
}

} // namespace velmora
