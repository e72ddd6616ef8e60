#include "DbusMenuPublisher.h"

#include <algorithm>
#include <string>
#include <utility>

#include <libdbusmenu-glib/menuitem.h>

namespace velmora {

namespace {

constexpr const char* separatorType = "separator";

// Hosts read an underscore as the mark of a mnemonic; a doubled one is an
// underscore of the title.
std::string labelOf(const std::string& title)
{
    std::string label;
    label.reserve(title.size());
    for (const char character : title) {
        label += character;
        if (character == '_')
            label += '_';
    }
    return label;
}

} // namespace

// One published entry, its action and its handler, which goes with it: a
// host's pending event on an entry already replaced reaches nothing.
class DbusMenuPublisher::Entry {
public:
    Entry(const MenuItem& entry, DbusMenuPublisher* owner)
        : m_item(Item::adopt(dbusmenu_menuitem_new()))
        , m_entry(entry)
    {
        if (entry.separator) {
            dbusmenu_menuitem_property_set(m_item.get(), DBUSMENU_MENUITEM_PROP_TYPE, separatorType);
            return;
        }
        dbusmenu_menuitem_property_set(m_item.get(), DBUSMENU_MENUITEM_PROP_LABEL, labelOf(entry.title).c_str());
        m_handler = g_signal_connect(m_item.get(), DBUSMENU_MENUITEM_SIGNAL_ITEM_ACTIVATED,
            G_CALLBACK(&DbusMenuPublisher::entryActivated), owner);
    }
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;
    Entry(Entry&&) = delete;
    Entry& operator=(Entry&&) = delete;
    ~Entry()
    {
        if (m_handler != 0)
            g_signal_handler_disconnect(m_item.get(), m_handler);
    }

    [[nodiscard]] DbusmenuMenuitem* item() const { return m_item.get(); }
    [[nodiscard]] const MenuItem& entry() const { return m_entry; }
    void setAction(MenuItem::Action action) { m_entry.action = std::move(action); }

private:
    Item m_item;
    MenuItem m_entry;
    gulong m_handler = 0;
};

DbusMenuPublisher::DbusMenuPublisher(const char* objectPath, AboutToShow aboutToShow, Chosen chosen)
    : m_aboutToShow(std::move(aboutToShow))
    , m_chosen(std::move(chosen))
    , m_root(Item::adopt(dbusmenu_menuitem_new()))
    , m_server(Server::adopt(dbusmenu_server_new(objectPath)))
{
    m_aboutToShowHandler = g_signal_connect(
        m_root.get(), DBUSMENU_MENUITEM_SIGNAL_ABOUT_TO_SHOW, G_CALLBACK(&DbusMenuPublisher::rootAboutToShow), this);
    dbusmenu_server_set_root(m_server.get(), m_root.get());
}

DbusMenuPublisher::~DbusMenuPublisher()
{
    g_signal_handler_disconnect(m_root.get(), m_aboutToShowHandler);
}

void DbusMenuPublisher::publish(const std::vector<MenuItem>& entries)
{
    if (sameShape(entries)) {
        for (std::size_t index = 0; index < entries.size(); ++index)
            m_entries[index]->setAction(entries[index].action);
        return;
    }
    for (const std::unique_ptr<Entry>& entry : m_entries)
        dbusmenu_menuitem_child_delete(m_root.get(), entry->item());
    m_entries.clear();
    for (const MenuItem& entry : entries) {
        m_entries.push_back(std::make_unique<Entry>(entry, this));
        dbusmenu_menuitem_child_append(m_root.get(), m_entries.back()->item());
    }
}

bool DbusMenuPublisher::sameShape(const std::vector<MenuItem>& entries) const
{
    return std::equal(entries.begin(), entries.end(), m_entries.begin(), m_entries.end(),
        [](const MenuItem& wanted, const std::unique_ptr<Entry>& published) {
            return wanted.separator == published->entry().separator && wanted.title == published->entry().title;
        });
}

gboolean DbusMenuPublisher::rootAboutToShow(DbusmenuMenuitem* /*root*/, gpointer self)
{
    // A copy: publishing may replace what the owner set.
    const AboutToShow aboutToShow = static_cast<DbusMenuPublisher*>(self)->m_aboutToShow;
    if (aboutToShow)
        aboutToShow();
    return TRUE;
}

void DbusMenuPublisher::entryActivated(DbusmenuMenuitem* item, guint /*timestamp*/, gpointer self)
{
    auto* publisher = static_cast<DbusMenuPublisher*>(self);
    const auto found = std::find_if(publisher->m_entries.begin(), publisher->m_entries.end(),
        [item](const std::unique_ptr<Entry>& entry) { return entry->item() == item; });
    if (found == publisher->m_entries.end() || !(*found)->entry().action || !publisher->m_chosen)
        return;
    publisher->m_chosen((*found)->entry().action);
}

} // namespace velmora
