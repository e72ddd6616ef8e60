#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <gdk-pixbuf/gdk-pixbuf.h>
#include <gio/gio.h>
#include <gtest/gtest.h>
#include <gtk/gtk.h>
#include <unistd.h>

#include "DesktopSession.h"
#include "VelmoraMac/Platform/Desktop/DesktopStatusBar.h"
#include "VelmoraMac/Platform/Desktop/StatusNotifierIcon.h"
#include "VelmoraMac/Platform/Desktop/StatusNotifierItem.h"

// fontconfig, which GTK loads to lay out the pop-up menu, keeps its font
// caches for the life of the process and never frees them; that is no leak
// of ours. Read by LeakSanitizer in sanitizer builds, unused otherwise.
// NOLINTNEXTLINE(bugprone-reserved-identifier,readability-identifier-naming): the sanitizer's own hook
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libfontconfig.so\n";
}

namespace velmora {
namespace {

constexpr const char* itemInterface = "org.kde.StatusNotifierItem";
constexpr const char* menuInterface = "com.canonical.dbusmenu";
using Bus = test::DesktopSession::Bus;
using test::iterateUntil;

void drop(GVariant* reply)
{
    if (reply != nullptr)
        g_variant_unref(reply);
}

struct Reply {
    GVariant* value = nullptr;
    GError* error = nullptr;
    bool done = false;
};

void replied(GObject* connection, GAsyncResult* result, gpointer data)
{
    auto* reply = static_cast<Reply*>(data);
    reply->value = g_dbus_connection_call_finish(G_DBUS_CONNECTION(connection), result, &reply->error);
    reply->done = true;
}

// The texts of a dbusmenu layout's children: a label, or "-" for a
// separator.
std::vector<std::string> entriesOf(GVariant* layout, std::vector<gint32>& ids)
{
    GVariant* root = g_variant_get_child_value(layout, 1);
    GVariant* children = g_variant_get_child_value(root, 2);
    std::vector<std::string> entries;
    for (gsize index = 0; index < g_variant_n_children(children); ++index) {
        GVariant* child = g_variant_get_variant(g_variant_get_child_value(children, index));
        gint32 id = 0;
        GVariant* properties = nullptr;
        g_variant_get(child, "(i@a{sv}@av)", &id, &properties, nullptr);
        const gchar* type = nullptr;
        const gchar* label = nullptr;
        if (g_variant_lookup(properties, "type", "&s", &type) && std::string(type) == "separator")
            entries.emplace_back("-");
        else
            entries.emplace_back(g_variant_lookup(properties, "label", "&s", &label) ? label : "?");
        ids.push_back(id);
        g_variant_unref(properties);
        g_variant_unref(child);
    }
    g_variant_unref(children);
    g_variant_unref(root);
    return entries;
}

// A private session bus whose own connection plays the tray host, and a
// tray watcher served by python3-dbusmock in a process of its own.
class DesktopStatusBarTest : public testing::Test {
protected:
    void TearDown() override
    {
        m_item.reset();
        // GDBus finishes giving the name back on the loop.
        (void)iterateUntil([this] { return !m_session.hasOwner(Bus::session, m_itemName); });
        // The next test's item must get a connection to its own bus, not
        // this one: the shared connection has to be gone first.
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): GLib's weak pointer
        auto* weak = reinterpret_cast<gpointer*>(&m_shared);
        g_object_add_weak_pointer(G_OBJECT(m_shared), weak);
        g_object_unref(m_shared);
        EXPECT_TRUE(iterateUntil([this] { return m_shared == nullptr; }));
    }

    std::shared_ptr<StatusItem> makeItem()
    {
        DesktopStatusBar bar(m_shared);
        m_item = bar.statusItem(28);
        m_itemName = static_cast<StatusNotifierItem&>(*m_item).busName();
        EXPECT_TRUE(iterateUntil([this] { return m_session.hasOwner(Bus::session, m_itemName); }));
        return m_item;
    }

    // The services the running watcher was asked to register.
    [[nodiscard]] std::vector<std::string> registrations() const
    {
        std::vector<std::string> services;
        for (const auto& call : m_session.mockCalls(Bus::session, StatusNotifierItem::watcherName,
                 StatusNotifierItem::watcherPath, "RegisterStatusNotifierItem"))
            services.emplace_back(g_variant_get_string(call.arguments.at(0).get(), nullptr));
        return services;
    }

    enum class Failure { reported, expected };

    // Calls the item (or its menu) as the tray host, iterating the loop
    // that serves it until the answer comes; null after a failure.
    GVariant* callItem(const char* path, const char* interface, const char* method, GVariant* parameters,
        Failure failure = Failure::reported)
    {
        Reply reply;
        g_dbus_connection_call(m_host, m_itemName.c_str(), path, interface, method, parameters, nullptr,
            G_DBUS_CALL_FLAGS_NONE, -1, nullptr, &replied, &reply);
        EXPECT_TRUE(iterateUntil([&] { return reply.done; })) << method;
        if (reply.error != nullptr) {
            if (failure == Failure::reported)
                ADD_FAILURE() << method << ": " << reply.error->message;
            g_error_free(reply.error);
        }
        return reply.value;
    }

    void call(const char* path, const char* interface, const char* method, GVariant* parameters)
    {
        drop(callItem(path, interface, method, parameters));
    }

    void click(const char* method)
    {
        call(StatusNotifierItem::objectPath, itemInterface, method, g_variant_new("(ii)", 10, 10));
    }

    std::vector<std::string> menuLayout(std::vector<gint32>& ids)
    {
        // The menu library exports its object once its own bus connection
        // comes, from the loop; until then the call fails.
        GVariant* layout = nullptr;
        EXPECT_TRUE(iterateUntil([&] {
            layout = callItem(StatusNotifierItem::menuPath, menuInterface, "GetLayout",
                g_variant_new("(ii@as)", 0, -1, g_variant_new_strv(nullptr, 0)), Failure::expected);
            return layout != nullptr;
        }));
        if (layout == nullptr)
            return {};
        std::vector<std::string> entries = entriesOf(layout, ids);
        g_variant_unref(layout);
        return entries;
    }

    // Before the private bus, which takes DISPLAY away.
    bool m_hasDisplay = gtk_init_check(nullptr, nullptr) != FALSE;
    test::DesktopSession m_session;
    GDBusConnection* m_host = m_session.connection(Bus::session);
    // GTestDBus points the session bus at itself: this is the shared
    // connection the menu library serves on.
    GDBusConnection* m_shared = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
    std::shared_ptr<StatusItem> m_item;
    std::string m_itemName;
};

TEST_F(DesktopStatusBarTest, Registration_WaitsForAWatcherAndFollowsItsRestarts)
{
    // Before any watcher: on the bus, waiting for one.
    makeItem();
    EXPECT_TRUE(m_itemName.starts_with("org.kde.StatusNotifierItem-" + std::to_string(getpid()) + "-")) << m_itemName;

    m_session.startTrayWatcher();
    EXPECT_TRUE(iterateUntil([this] { return registrations() == std::vector<std::string>{m_itemName}; }));
    m_session.stopMocks();
    // The bus drops a dead process's names on its own time.
    ASSERT_TRUE(iterateUntil([this] { return !m_session.hasOwner(Bus::session, StatusNotifierItem::watcherName); }));
    m_session.startTrayWatcher();
    EXPECT_TRUE(iterateUntil([this] { return registrations() == std::vector<std::string>{m_itemName}; }))
        << "registers with the new watcher";

    m_item.reset();
    EXPECT_TRUE(iterateUntil([this] { return !m_session.hasOwner(Bus::session, m_itemName); }))
        << "gives its name back";
}

// Hosts that find the installed application's icon in the icon theme draw
// it at their own scale; the others draw the pixmaps, which are always sent.
TEST_F(DesktopStatusBarTest, Icon_IsTheThemedApplicationIconAndThePixmaps)
{
    makeItem();
    GVariant* name = callItem(StatusNotifierItem::objectPath, "org.freedesktop.DBus.Properties", "Get",
        g_variant_new("(ss)", itemInterface, "IconName"));
    ASSERT_NE(name, nullptr);
    GVariant* value = nullptr;
    g_variant_get(name, "(v)", &value);
    EXPECT_STREQ(g_variant_get_string(value, nullptr), "app.velmora.mac") << "the desktop entry's Icon";
    g_variant_unref(value);
    g_variant_unref(name);

    GVariant* pixmaps = callItem(StatusNotifierItem::objectPath, "org.freedesktop.DBus.Properties", "Get",
        g_variant_new("(ss)", itemInterface, "IconPixmap"));
    ASSERT_NE(pixmaps, nullptr);
    g_variant_get(pixmaps, "(v)", &value);
    EXPECT_GE(g_variant_n_children(value), 1U) << "a pixmap keeps the item's place";
    g_variant_unref(value);
    g_variant_unref(pixmaps);
}

// A shell that answers the right click as the host does: it attaches its
// menu, clicks, and detaches it.
struct MenuShell {
    StatusItem* item = nullptr;
    std::vector<std::string> titles{"Settings", "Quit"};
    std::vector<std::string> log;

    void act(InputEventType trigger)
    {
        if (trigger != InputEventType::rightMouseUp) {
            log.emplace_back("toggle");
            return;
        }
        Menu menu;
        menu.items.push_back(MenuItem::item(titles[0], ",", [this] { log.push_back(titles[0]); }));
        menu.items.push_back(MenuItem::separatorItem());
        menu.items.push_back(MenuItem::item(titles[1], "q", [this] { log.push_back(titles[1]); }));
        item->setMenu(std::move(menu));
        item->button()->performClick();
        log.emplace_back("clicked");
        item->setMenu(std::nullopt);
    }
};

// The popped-up menu's entry at `index`, once one is on screen.
GtkWidget* poppedUpEntry(guint index)
{
    GList* windows = gtk_window_list_toplevels();
    GtkWidget* entry = nullptr;
    for (GList* window = windows; window != nullptr && entry == nullptr; window = window->next) {
        GtkWidget* child = gtk_bin_get_child(GTK_BIN(window->data));
        if (child == nullptr || !GTK_IS_MENU(child) || !gtk_widget_get_mapped(child))
            continue;
        GList* entries = gtk_container_get_children(GTK_CONTAINER(child));
        entry = GTK_WIDGET(g_list_nth_data(entries, index));
        g_list_free(entries);
    }
    g_list_free(windows);
    return entry;
}

TEST_F(DesktopStatusBarTest, Menu_OffersTheToggleAndTheShellsLatestEntriesAndPopsUpWithADisplay)
{
    // The host shows this menu, even with a display.
    MenuShell shell;
    shell.item = makeItem().get();
    StatusButton& button = *shell.item->button();
    button.setToolTip("Velmora");
    button.sendActionOn(eventMaskBit(InputEventType::leftMouseUp) | eventMaskBit(InputEventType::rightMouseUp));
    button.setAction([&](InputEventType trigger) { shell.act(trigger); });
    ASSERT_TRUE(iterateUntil([&] { return shell.log.size() == 1; }));

    std::vector<gint32> ids;
    EXPECT_EQ(menuLayout(ids), (std::vector<std::string>{"Velmora", "-", "Settings", "-", "Quit"}))
        << "offered before any host asks";

    shell.titles = {"Einstellungen", "Beenden"};
    call(StatusNotifierItem::menuPath, menuInterface, "AboutToShow", g_variant_new("(i)", 0));
    EXPECT_EQ(shell.log, (std::vector<std::string>{"clicked", "clicked"}));
    ids.clear();
    ASSERT_EQ(menuLayout(ids), (std::vector<std::string>{"Velmora", "-", "Einstellungen", "-", "Beenden"}));

    // A middle click and the wheel mean nothing; the menu's entries and a
    // left click (Activate) act, in the order they came.
    click("SecondaryActivate");
    call(StatusNotifierItem::objectPath, itemInterface, "Scroll", g_variant_new("(is)", 3, "vertical"));
    for (const gint32 chosen : {ids[4], ids[0]})
        call(StatusNotifierItem::menuPath, menuInterface, "Event",
            g_variant_new("(isvu)", chosen, "clicked", g_variant_new_int32(0), 0U));
    click("Activate");
    ASSERT_TRUE(iterateUntil([&] { return shell.log.size() == 5; }));
    EXPECT_EQ(shell.log, (std::vector<std::string>{"clicked", "clicked", "Beenden", "toggle", "toggle"}));

    // With a display, a right click of a host that shows no menu of its
    // own pops up GTK's; the choice runs once it is gone.
    if (!m_hasDisplay)
        GTEST_SKIP() << "no display";
    // Chooses "Beenden" as soon as the menu is up.
    const guint chooser = g_timeout_add(
        20,
        [](gpointer) -> gboolean {
            GtkWidget* entry = poppedUpEntry(2);
            if (entry == nullptr)
                return G_SOURCE_CONTINUE;
            gtk_menu_shell_activate_item(GTK_MENU_SHELL(gtk_widget_get_parent(entry)), entry, TRUE);
            return G_SOURCE_REMOVE;
        },
        nullptr);
    click("ContextMenu");
    const bool chosen = iterateUntil([&] { return shell.log.size() == 7; });
    if (!chosen)
        g_source_remove(chooser);
    ASSERT_TRUE(chosen) << "the menu never came up";
    EXPECT_EQ(std::vector<std::string>(shell.log.begin() + 5, shell.log.end()),
        (std::vector<std::string>{"clicked", "Beenden"}));
}

TEST(StatusNotifierIcon, Template_IsALightShapeWithADarkOutlineAtEachSize)
{
    // A 20 × 10 opaque block in the middle of a transparent 40 × 40 PNG:
    // non-square, so that fitting it to each size shows.
    GdkPixbuf* image = gdk_pixbuf_new(GDK_COLORSPACE_RGB, TRUE, 8, 40, 40);
    gdk_pixbuf_fill(image, 0);
    GdkPixbuf* block = gdk_pixbuf_new_subpixbuf(image, 10, 15, 20, 10);
    gdk_pixbuf_fill(block, 0x000000ff);
    g_object_unref(block);
    gchar* png = nullptr;
    gsize length = 0;
    ASSERT_TRUE(gdk_pixbuf_save_to_buffer(image, &png, &length, "png", nullptr, nullptr));
    g_object_unref(image);
    const StatusNotifierIcon icon = StatusNotifierIcon::fromTemplate(std::string_view(png, length), Size{22, 22});
    g_free(png);

    ASSERT_EQ(icon.pixmaps().size(), StatusNotifierIcon::heights.size());
    for (std::size_t index = 0; index < icon.pixmaps().size(); ++index) {
        const StatusNotifierIcon::Pixmap& pixmap = icon.pixmaps()[index];
        const int side = StatusNotifierIcon::heights[index];
        SCOPED_TRACE(side);
        ASSERT_EQ(pixmap.width, side);
        ASSERT_EQ(pixmap.argb.size(), static_cast<std::size_t>(side * side * 4));
        // Alpha first, then red, green, blue: the centre is opaque and
        // light, the corner clear, and going up from the centre a dark
        // outline comes before the clear edge.
        const auto pixel = [&](int x, int y) { return &pixmap.argb[static_cast<std::size_t>(y * side + x) * 4]; };
        EXPECT_EQ(pixel(side / 2, side / 2)[0], 255);
        EXPECT_GT(pixel(side / 2, side / 2)[1], 200);
        EXPECT_EQ(pixel(0, 0)[0], 0);
        int row = side / 2;
        while (row > 0 && pixel(side / 2, row)[1] >= 100 && pixel(side / 2, row)[0] > 0)
            --row;
        EXPECT_GT(pixel(side / 2, row)[0], 0) << "an outline";
        EXPECT_GT(row, 0);
    }

    // No picture: one clear pixmap of the size asked for.
    const StatusNotifierIcon empty = StatusNotifierIcon::fromTemplate("not a picture", Size{28, 22});
    ASSERT_EQ(empty.pixmaps().size(), 1U);
    EXPECT_EQ(empty.pixmaps()[0].width, 28);
    EXPECT_EQ(empty.pixmaps()[0].argb, std::vector<std::uint8_t>(std::size_t{28} * 22 * 4, 0));
}

} // namespace
} // namespace velmora
