/*
 * A GTK module that plays the user inside a program under test, where the
 * test cannot reach the widgets: loaded through GTK_MODULES, it waits for
 * the library's settings panel and clicks its launch-at-login switch once,
 * as a click of the pointer would (the button's "clicked").
 *
 *   GTK_MODULES=/path/to/libVelmoraPanelAgent.so
 *   VELMORA_TEST_AGENT=click-login-switch
 *
 * The switch is the first toggle button of the panel, in the order the
 * page lays them out: the only one on the introduction to the tray, and
 * the first section's on the settings page. Without the variable the
 * module does nothing.
 */
#include <stddef.h>
#include <stdio.h>
#include <string.h>

#include <gtk/gtk.h>

/* The name and signature GTK looks up in a module. */
G_MODULE_EXPORT void gtk_module_init(gint* argc, gchar*** argv); /* NOLINT(readability-identifier-naming) */

static GtkWidget* firstSwitch(GtkWidget* widget)
{
    GtkWidget* found = NULL;
    if (!gtk_widget_get_visible(widget))
        return NULL;
    if (GTK_IS_BUTTON(widget)) {
        AtkObject* accessible = gtk_widget_get_accessible(widget);
        if (accessible != NULL && atk_object_get_role(accessible) == ATK_ROLE_TOGGLE_BUTTON)
            return widget;
    }
    if (GTK_IS_CONTAINER(widget)) {
        GList* children = gtk_container_get_children(GTK_CONTAINER(widget));
        GList* child;
        for (child = children; child != NULL && found == NULL; child = child->next)
            found = firstSwitch(GTK_WIDGET(child->data));
        g_list_free(children);
    }
    return found;
}

/* How many looks in a row the panel must have shown a switch: it may draw
   its page again as the login status comes in. */
enum { settledLooks = 3 };

static gboolean lookForTheSwitch(gpointer unused)
{
    static int looks = 0;
    GList* toplevels = gtk_window_list_toplevels();
    GList* item;
    GtkWidget* found = NULL;
    (void)unused;
    for (item = toplevels; item != NULL && found == NULL; item = item->next) {
        GtkWidget* window = GTK_WIDGET(item->data);
        if (gtk_widget_get_mapped(window))
            found = firstSwitch(window);
    }
    g_list_free(toplevels);
    looks = found != NULL ? looks + 1 : 0;
    if (looks < settledLooks)
        return G_SOURCE_CONTINUE;
    gtk_button_clicked(GTK_BUTTON(found));
    (void)fputs("panel agent: clicked the launch-at-login switch\n", stderr);
    return G_SOURCE_REMOVE;
}

/* NOLINTNEXTLINE(readability-identifier-naming,readability-non-const-parameter) */
G_MODULE_EXPORT void gtk_module_init(gint* argc, gchar*** argv)
{
    const char* task = g_getenv("VELMORA_TEST_AGENT");
    (void)argc;
    (void)argv;
    if (task == NULL || strcmp(task, "click-login-switch") != 0)
        return;
    /* A panel page is laid out at once; a moment later is soon enough. */
    g_timeout_add(200, lookForTheSwitch, NULL);
}
