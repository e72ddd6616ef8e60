#include "PanelPageBuilder.h"

#include <cmath>
#include <exception>
#include <functional>
#include <memory>
#include <numbers>
#include <utility>

namespace velmora {

namespace {

// Space around and between the parts of a page, in pixels.
constexpr int pageMargin = 24;
constexpr int sectionSpacing = 24;
constexpr int headingSpacing = 10;
constexpr int rowPadding = 20;
// Track width of a switch against its height, a familiar capsule.
constexpr double switchAspect = 1.625;

const char* const keyData = "velmora-panel-key";

// Runs a control's action from a GTK signal. Nothing may unwind through
// GTK's C frames: a failure the view does not report itself is logged and
// the panel stays as it was.
void perform(const PanelAction& action) noexcept
{
    if (!action)
        return;
    try {
        action();
    } catch (const std::exception& failure) {
        g_warning("Velmora panel: a control failed: %s", failure.what());
    } catch (...) {
        g_warning("Velmora panel: a control failed");
    }
}

// Connects `handler` to `signal` with `data` owned by the connection: it is
// destroyed when the handler is disconnected, which GTK does when the
// widget goes.
template <typename Data> void connectOwned(GtkWidget* widget, const char* signal, GCallback handler, Data data)
{
    auto owned = std::make_unique<Data>(std::move(data));
    g_signal_connect_data(
        widget, signal, handler, owned.release(),
        [](gpointer released, GClosure* /*closure*/) { delete static_cast<Data*>(released); },
        static_cast<GConnectFlags>(0));
}

void onClicked(GtkButton* /*button*/, gpointer data)
{
    perform(*static_cast<PanelAction*>(data));
}

void setKey(GtkWidget* widget, const std::string& key)
{
    if (!key.empty())
        g_object_set_data_full(G_OBJECT(widget), keyData, g_strdup(key.c_str()), g_free);
}

// What an icon's drawing area paints: the image's alpha as a mask filled
// with the tint.
struct IconPaint {
    PanelImageCache::PixbufPointer pixbuf;
    Color tint;
};

gboolean onDrawIcon(GtkWidget* widget, cairo_t* cairo, gpointer data)
{
    const auto* paint = static_cast<const IconPaint*>(data);
    GdkPixbuf* pixbuf = paint->pixbuf.get();
    if (pixbuf == nullptr)
        return FALSE;
    const double width = gtk_widget_get_allocated_width(widget);
    const double height = gtk_widget_get_allocated_height(widget);
    cairo_save(cairo);
    cairo_scale(cairo, width / gdk_pixbuf_get_width(pixbuf), height / gdk_pixbuf_get_height(pixbuf));
    gdk_cairo_set_source_pixbuf(cairo, pixbuf, 0, 0);
    cairo_pattern_t* mask = cairo_pattern_reference(cairo_get_source(cairo));
    cairo_pattern_set_filter(mask, CAIRO_FILTER_BEST);
    cairo_set_source_rgba(cairo, paint->tint.red, paint->tint.green, paint->tint.blue, paint->tint.opacity);
    cairo_mask(cairo, mask);
    cairo_pattern_destroy(mask);
    cairo_restore(cairo);
    return FALSE;
}

void capsulePath(cairo_t* cairo, double x, double y, double width, double height)
{
    const double radius = std::min(width, height) / 2;
    cairo_new_sub_path(cairo);
    cairo_arc(cairo, x + width - radius, y + radius, radius, -std::numbers::pi / 2, std::numbers::pi / 2);
    cairo_arc(cairo, x + radius, y + height - radius, radius, std::numbers::pi / 2, 3 * std::numbers::pi / 2);
    cairo_close_path(cairo);
}

void setSource(cairo_t* cairo, Color color)
{
    cairo_set_source_rgba(cairo, color.red, color.green, color.blue, color.opacity);
}

gboolean onDrawCapsule(GtkWidget* widget, cairo_t* cairo, gpointer data)
{
    capsulePath(cairo, 0, 0, gtk_widget_get_allocated_width(widget), gtk_widget_get_allocated_height(widget));
    setSource(cairo, *static_cast<const Color*>(data));
    cairo_fill(cairo);
    return FALSE;
}

gboolean onDrawSwitch(GtkWidget* widget, cairo_t* cairo, gpointer data)
{
    const auto& control = *static_cast<const PanelSwitch*>(data);
    const double width = gtk_widget_get_allocated_width(widget);
    const double height = control.trackHeight;
    const double top = (gtk_widget_get_allocated_height(widget) - height) / 2;
    const double inset = control.border ? control.borderWidth / 2 : 0;
    capsulePath(cairo, inset, top + inset, width - 2 * inset, height - 2 * inset);
    setSource(cairo, control.track);
    if (control.border) {
        cairo_fill_preserve(cairo);
        setSource(cairo, *control.border);
        cairo_set_line_width(cairo, control.borderWidth);
        cairo_stroke(cairo);
    } else {
        cairo_fill(cairo);
    }
    const double radius = control.knobDiameter / 2;
    const double centre = control.isOn ? width - control.knobInset - radius : control.knobInset + radius;
    cairo_arc(cairo, centre, top + height / 2, radius, 0, 2 * std::numbers::pi);
    setSource(cairo, control.knob);
    cairo_fill(cairo);
    return FALSE;
}

// The reminder's time picker: the hour and minute fields change one part of
// the time each, and the time handed on keeps the other part as shown.
struct TimeEdit {
    std::function<void(TimeOfDay)> pick;
};

const char* const hourName = "reminder.hour";
const char* const minuteName = "reminder.minute";

GtkSpinButton* sibling(GtkWidget* field, const char* name)
{
    GtkWidget* parent = gtk_widget_get_parent(field);
    GList* children = gtk_container_get_children(GTK_CONTAINER(parent));
    GtkSpinButton* found = nullptr;
    for (GList* child = children; child != nullptr; child = child->next) {
        auto* widget = static_cast<GtkWidget*>(child->data);
        if (GTK_IS_SPIN_BUTTON(widget) && g_strcmp0(gtk_widget_get_name(widget), name) == 0)
            found = GTK_SPIN_BUTTON(widget);
    }
    g_list_free(children);
    return found;
}

void onTimeChanged(GtkSpinButton* field, gpointer data)
{
    const auto& edit = *static_cast<const TimeEdit*>(data);
    GtkSpinButton* hourField = sibling(GTK_WIDGET(field), hourName);
    GtkSpinButton* minuteField = sibling(GTK_WIDGET(field), minuteName);
    if (hourField == nullptr || minuteField == nullptr || !edit.pick)
        return;
    const TimeOfDay shown{gtk_spin_button_get_value_as_int(hourField), gtk_spin_button_get_value_as_int(minuteField)};
    perform([&] { edit.pick(shown); });
}

// Hours and minutes read as a clock does: "07", not "7".
gboolean onTimeOutput(GtkSpinButton* field, gpointer /*data*/)
{
    gchar* text = g_strdup_printf("%02d", gtk_spin_button_get_value_as_int(field));
    gtk_entry_set_text(GTK_ENTRY(field), text);
    g_free(text);
    return TRUE;
}

GtkWidget* vertical(int spacing)
{
    return gtk_box_new(GTK_ORIENTATION_VERTICAL, spacing);
}

GtkWidget* horizontal(int spacing)
{
    return gtk_box_new(GTK_ORIENTATION_HORIZONTAL, spacing);
}

void add(GtkWidget* box, GtkWidget* child)
{
    gtk_container_add(GTK_CONTAINER(box), child);
}

void setMargins(GtkWidget* widget, int vertical, int horizontal)
{
    gtk_widget_set_margin_top(widget, vertical);
    gtk_widget_set_margin_bottom(widget, vertical);
    gtk_widget_set_margin_start(widget, horizontal);
    gtk_widget_set_margin_end(widget, horizontal);
}

void setAccessibleName(GtkWidget* widget, const std::string& name)
{
    if (AtkObject* accessible = gtk_widget_get_accessible(widget); accessible != nullptr && !name.empty())
        atk_object_set_name(accessible, name.c_str());
}

// A centred stack, as a page with one message reads best.
void centreChildren(GtkWidget* box)
{
    GList* children = gtk_container_get_children(GTK_CONTAINER(box));
    for (GList* child = children; child != nullptr; child = child->next) {
        auto* widget = static_cast<GtkWidget*>(child->data);
        if (gtk_widget_get_halign(widget) == GTK_ALIGN_START)
            gtk_widget_set_halign(widget, GTK_ALIGN_CENTER);
    }
    g_list_free(children);
}

int pixels(double points)
{
    return static_cast<int>(std::lround(points));
}

} // namespace

PanelPageBuilder::PanelPageBuilder(PanelStyleSheet& sheet, PanelImageCache& images)
    : m_sheet(sheet)
    , m_images(images)
{
}

std::string PanelPageBuilder::keyOf(GtkWidget* widget)
{
    for (; widget != nullptr; widget = gtk_widget_get_parent(widget)) {
        if (const auto* key = static_cast<const char*>(g_object_get_data(G_OBJECT(widget), keyData)))
            return key;
    }
    return {};
}

GtkWidget* PanelPageBuilder::findKey(GtkWidget* root, const std::string& key)
{
    if (const auto* own = static_cast<const char*>(g_object_get_data(G_OBJECT(root), keyData));
        own != nullptr && key == own)
        return root;
    if (!GTK_IS_CONTAINER(root))
        return nullptr;
    GList* children = gtk_container_get_children(GTK_CONTAINER(root));
    GtkWidget* found = nullptr;
    for (GList* child = children; child != nullptr && found == nullptr; child = child->next)
        found = findKey(static_cast<GtkWidget*>(child->data), key);
    g_list_free(children);
    return found;
}

GtkWidget* PanelPageBuilder::label(const PanelText& text)
{
    GtkWidget* widget = gtk_label_new(text.text.c_str());
    auto* label = GTK_LABEL(widget);
    gtk_label_set_line_wrap(label, TRUE);
    gtk_label_set_line_wrap_mode(label, PANGO_WRAP_WORD_CHAR);
    const bool centred = text.alignment == PanelText::Alignment::center;
    gtk_label_set_justify(label, centred ? GTK_JUSTIFY_CENTER : GTK_JUSTIFY_LEFT);
    gtk_label_set_xalign(label, centred ? 0.5F : 0.0F);
    gtk_widget_set_halign(widget, centred ? GTK_ALIGN_CENTER : GTK_ALIGN_START);

    PangoFontDescription* font = pango_font_description_new();
    pango_font_description_set_family(font, text.design == PanelText::Design::serif ? serifFamilies : systemFamilies);
    pango_font_description_set_style(
        font, text.style == PanelText::Style::italic ? PANGO_STYLE_ITALIC : PANGO_STYLE_NORMAL);
    pango_font_description_set_absolute_size(font, text.size * PANGO_SCALE);
    PangoAttrList* attributes = pango_attr_list_new();
    pango_attr_list_insert(attributes, pango_attr_font_desc_new(font));
    pango_font_description_free(font);
    const auto component
        = [](double value) { return static_cast<guint16>(std::lround(std::clamp(value, 0.0, 1.0) * 65535.0)); };
    pango_attr_list_insert(attributes,
        pango_attr_foreground_new(component(text.color.red), component(text.color.green), component(text.color.blue)));
    if (text.color.opacity < 1)
        pango_attr_list_insert(attributes, pango_attr_foreground_alpha_new(component(text.color.opacity)));
    if (text.tracking != 0)
        pango_attr_list_insert(
            attributes, pango_attr_letter_spacing_new(static_cast<int>(std::lround(text.tracking * PANGO_SCALE))));
    if (text.lineSpacing > 0) {
        // Extra space between lines, over a line's natural height of about
        // 1.2 times the size.
        const double natural = text.size * 1.2;
        pango_attr_list_insert(attributes, pango_attr_line_height_new((natural + text.lineSpacing) / natural));
    }
    gtk_label_set_attributes(label, attributes);
    pango_attr_list_unref(attributes);
    if (!text.accessibilityIdentifier.empty())
        gtk_widget_set_name(widget, text.accessibilityIdentifier.c_str());
    return widget;
}

GtkWidget* PanelPageBuilder::icon(const PanelIcon& icon)
{
    GtkWidget* area = gtk_drawing_area_new();
    const int size = pixels(icon.size);
    gtk_widget_set_size_request(area, size, size);
    gtk_widget_set_halign(area, GTK_ALIGN_CENTER);
    gtk_widget_set_valign(area, GTK_ALIGN_CENTER);
    connectOwned(area, "draw", G_CALLBACK(onDrawIcon), IconPaint{m_images.pixbuf(icon.image), icon.tint});
    return area;
}

GtkWidget* PanelPageBuilder::button(const PanelButton& button)
{
    GtkWidget* widget = gtk_button_new();
    gtk_button_set_relief(GTK_BUTTON(widget), GTK_RELIEF_NONE);
    const std::string title = button.label ? button.label->text : std::string();
    switch (button.kind) {
    case PanelButton::Kind::primary: {
        GtkWidget* text = label(button.label.value_or(PanelText{}));
        gtk_widget_set_halign(text, GTK_ALIGN_CENTER);
        add(widget, text);
        gtk_widget_set_hexpand(widget, TRUE);
        m_sheet.style(widget,
            "background-color: " + PanelStyleSheet::css(button.background.value_or(Color{}))
                + "; border-radius: " + PanelStyleSheet::pixels(button.cornerRadius)
                + "; min-height: " + PanelStyleSheet::pixels(button.minimumHeight)
                + "; padding: 0 20px; outline-offset: 3px; -gtk-outline-radius: "
                + PanelStyleSheet::pixels(button.cornerRadius + 3) + ";");
        break;
    }
    case PanelButton::Kind::text: {
        add(widget, label(button.label.value_or(PanelText{})));
        gtk_widget_set_halign(widget, GTK_ALIGN_START);
        m_sheet.style(widget, "padding: 6px 0; outline-offset: 1px; -gtk-outline-radius: 6px;");
        break;
    }
    case PanelButton::Kind::icon: {
        if (button.icon)
            add(widget, icon(*button.icon));
        const int hit = pixels(button.hitSize);
        gtk_widget_set_size_request(widget, hit, hit);
        gtk_widget_set_valign(widget, GTK_ALIGN_CENTER);
        m_sheet.style(widget,
            "border-radius: " + PanelStyleSheet::pixels(button.hitSize / 2)
                + "; -gtk-outline-radius: " + PanelStyleSheet::pixels(button.hitSize / 2) + ";");
        if (!button.accessibilityLabel.empty())
            gtk_widget_set_tooltip_text(widget, button.accessibilityLabel.c_str());
        break;
    }
    }
    gtk_widget_set_sensitive(widget, button.enabled ? TRUE : FALSE);
    setAccessibleName(widget, button.accessibilityLabel.empty() ? title : button.accessibilityLabel);
    if (!button.accessibilityIdentifier.empty())
        gtk_widget_set_name(widget, button.accessibilityIdentifier.c_str());
    setKey(widget,
        !button.accessibilityIdentifier.empty()  ? button.accessibilityIdentifier
            : !button.accessibilityLabel.empty() ? button.accessibilityLabel
                                                 : title);
    connectOwned(widget, "clicked", G_CALLBACK(onClicked), button.action);
    return widget;
}

GtkWidget* PanelPageBuilder::row(const PanelRow& row)
{
    GtkWidget* widget = gtk_button_new();
    gtk_button_set_relief(GTK_BUTTON(widget), GTK_RELIEF_NONE);
    GtkWidget* line = horizontal(14);
    setMargins(line, pixels(row.padding), pixels(row.padding));
    if (row.icon)
        add(line, icon(*row.icon));
    GtkWidget* texts = vertical(4);
    gtk_widget_set_hexpand(texts, TRUE);
    gtk_widget_set_valign(texts, GTK_ALIGN_CENTER);
    add(texts, label(row.title));
    if (row.subtitle)
        add(texts, label(*row.subtitle));
    add(line, texts);
    if (row.trailing)
        add(line, icon(*row.trailing));
    add(widget, line);
    setAccessibleName(widget, row.title.text);
    setKey(widget, row.title.text);
    connectOwned(widget, "clicked", G_CALLBACK(onClicked), row.action);
    return widget;
}

GtkWidget* PanelPageBuilder::switchRow(const PanelSwitchRow& row)
{
    // A toggle button, so that a screen reader hears whether it is on; a
    // click rebuilds the page from the new state.
    GtkWidget* widget = gtk_toggle_button_new();
    gtk_toggle_button_set_active(GTK_TOGGLE_BUTTON(widget), row.control.isOn ? TRUE : FALSE);
    gtk_button_set_relief(GTK_BUTTON(widget), GTK_RELIEF_NONE);
    GtkWidget* line = horizontal(12);
    setMargins(line, rowPadding, rowPadding);
    GtkWidget* texts = vertical(4);
    gtk_widget_set_hexpand(texts, TRUE);
    gtk_widget_set_valign(texts, GTK_ALIGN_CENTER);
    add(texts, label(row.title));
    add(texts, label(row.body));
    add(line, texts);
    GtkWidget* state = label(row.stateWord);
    gtk_label_set_line_wrap(GTK_LABEL(state), FALSE);
    gtk_widget_set_valign(state, GTK_ALIGN_CENTER);
    add(line, state);
    GtkWidget* control = gtk_drawing_area_new();
    gtk_widget_set_size_request(
        control, pixels(row.control.trackHeight * switchAspect), pixels(row.control.trackHeight));
    gtk_widget_set_valign(control, GTK_ALIGN_CENTER);
    connectOwned(control, "draw", G_CALLBACK(onDrawSwitch), row.control);
    add(line, control);
    add(widget, line);

    if (AtkObject* accessible = gtk_widget_get_accessible(widget)) {
        atk_object_set_role(accessible, ATK_ROLE_TOGGLE_BUTTON);
        atk_object_set_name(accessible, row.title.text.c_str());
    }
    if (!row.accessibilityIdentifier.empty())
        gtk_widget_set_name(widget, row.accessibilityIdentifier.c_str());
    setKey(widget, row.accessibilityIdentifier.empty() ? row.title.text : row.accessibilityIdentifier);
    connectOwned(widget, "clicked", G_CALLBACK(onClicked), row.toggle);
    return widget;
}

GtkWidget* PanelPageBuilder::card(const std::vector<GtkWidget*>& sections)
{
    GtkWidget* box = vertical(0);
    m_sheet.style(box,
        "background-color: " + PanelStyleSheet::css(m_card.background) + "; border-radius: "
            + PanelStyleSheet::pixels(m_card.cornerRadius) + "; border: " + PanelStyleSheet::pixels(m_card.borderWidth)
            + " solid " + PanelStyleSheet::css(m_card.border) + ";");
    bool first = true;
    for (GtkWidget* section : sections) {
        if (!first) {
            GtkWidget* separator = horizontal(0);
            gtk_widget_set_size_request(separator, -1, std::max(1, pixels(m_card.separatorThickness)));
            gtk_widget_set_margin_start(separator, rowPadding);
            gtk_widget_set_margin_end(separator, rowPadding);
            m_sheet.style(separator, "background-color: " + PanelStyleSheet::css(m_card.separator) + ";");
            add(box, separator);
        }
        first = false;
        add(box, section);
    }
    return box;
}

std::vector<GtkWidget*> PanelPageBuilder::loginSections(const LoginBlock& block)
{
    std::vector<GtkWidget*> sections{switchRow(block.toggle)};
    if (block.approval || block.openSettings || block.error) {
        GtkWidget* notes = vertical(6);
        setMargins(notes, 16, rowPadding);
        if (block.approval)
            add(notes, label(*block.approval));
        if (block.openSettings)
            add(notes, button(*block.openSettings));
        if (block.error)
            add(notes, label(*block.error));
        sections.push_back(notes);
    }
    return sections;
}

GtkWidget* PanelPageBuilder::topicCard(const TopicCard& card)
{
    // Checked when chosen, for a screen reader, as the switches are.
    GtkWidget* widget = gtk_toggle_button_new();
    gtk_toggle_button_set_active(GTK_TOGGLE_BUTTON(widget), card.selected ? TRUE : FALSE);
    gtk_button_set_relief(GTK_BUTTON(widget), GTK_RELIEF_NONE);
    m_sheet.style(widget,
        "background-color: " + PanelStyleSheet::css(card.background)
            + "; border-radius: " + PanelStyleSheet::pixels(card.cornerRadius)
            + "; -gtk-outline-radius: " + PanelStyleSheet::pixels(card.cornerRadius) + ";");
    GtkWidget* line = horizontal(14);
    setMargins(line, pixels(card.padding), pixels(card.padding));
    if (card.icon)
        add(line, icon(*card.icon));
    GtkWidget* texts = vertical(4);
    gtk_widget_set_hexpand(texts, TRUE);
    gtk_widget_set_valign(texts, GTK_ALIGN_CENTER);
    add(texts, label(card.name));
    if (!card.description.text.empty())
        add(texts, label(card.description));
    add(line, texts);
    add(line, icon(card.check));
    add(widget, line);
    if (AtkObject* accessible = gtk_widget_get_accessible(widget)) {
        atk_object_set_role(accessible, ATK_ROLE_CHECK_BOX);
        atk_object_set_name(accessible, card.name.text.c_str());
    }
    gtk_widget_set_name(widget, ("topic." + card.topicID).c_str());
    setKey(widget, "topic." + card.topicID);
    connectOwned(widget, "clicked", G_CALLBACK(onClicked), card.toggle);
    return widget;
}

GtkWidget* PanelPageBuilder::timePicker(const ReminderTimePicker& picker)
{
    GtkWidget* line = horizontal(6);
    setMargins(line, 14, rowPadding);
    GtkWidget* caption = label(picker.label);
    gtk_widget_set_hexpand(caption, TRUE);
    gtk_widget_set_valign(caption, GTK_ALIGN_CENTER);
    add(line, caption);

    const std::string fieldStyle = "color: " + PanelStyleSheet::css(picker.tint)
        + "; background-color: " + PanelStyleSheet::css(picker.tint.withOpacity(0.1))
        + "; border-radius: 12px; font-size: 17px; font-family: " + systemFamilies + ";";
    const auto field = [&](const char* name, double upper, std::int64_t value) {
        GtkWidget* spin = gtk_spin_button_new_with_range(0, upper, 1);
        auto* button = GTK_SPIN_BUTTON(spin);
        gtk_spin_button_set_wrap(button, TRUE);
        gtk_spin_button_set_numeric(button, TRUE);
        gtk_spin_button_set_value(button, static_cast<double>(value));
        gtk_entry_set_width_chars(GTK_ENTRY(spin), 2);
        gtk_entry_set_alignment(GTK_ENTRY(spin), 0.5F);
        gtk_widget_set_name(spin, name);
        gtk_widget_set_valign(spin, GTK_ALIGN_CENTER);
        gtk_widget_set_sensitive(spin, picker.enabled ? TRUE : FALSE);
        setKey(spin, name);
        m_sheet.style(spin, fieldStyle);
        g_signal_connect(spin, "output", G_CALLBACK(onTimeOutput), nullptr);
        // After the value is set, so that building does not count as a pick.
        connectOwned(spin, "value-changed", G_CALLBACK(onTimeChanged), TimeEdit{picker.pickTime});
        return spin;
    };
    add(line, field(hourName, 23, picker.hour));
    GtkWidget* colon = label(PanelText::plain(":", 17, picker.tint));
    gtk_widget_set_valign(colon, GTK_ALIGN_CENTER);
    add(line, colon);
    add(line, field(minuteName, 59, picker.minute));
    return line;
}

GtkWidget* PanelPageBuilder::illustration(const MenuBarIllustration& illustration)
{
    GtkWidget* strip = horizontal(14);
    m_sheet.style(strip,
        "background-color: " + PanelStyleSheet::css(m_card.background)
            + "; border-radius: 14px; border: " + PanelStyleSheet::pixels(m_card.borderWidth) + " solid "
            + PanelStyleSheet::css(m_card.border) + "; padding: 8px 16px;");
    GtkWidget* items = horizontal(14);
    gtk_widget_set_hexpand(items, TRUE);
    gtk_widget_set_halign(items, GTK_ALIGN_END);
    add(items, icon(illustration.network));
    GtkWidget* lotus = horizontal(0);
    m_sheet.style(lotus,
        "background-color: " + PanelStyleSheet::css(illustration.lotusBackground)
            + "; border-radius: " + PanelStyleSheet::pixels(illustration.lotusCornerRadius) + "; padding: 3px 6px;");
    add(lotus, icon(illustration.lotus));
    add(items, lotus);
    GtkWidget* name = label(illustration.name);
    gtk_widget_set_valign(name, GTK_ALIGN_CENTER);
    add(items, name);
    GtkWidget* time = label(illustration.time);
    gtk_widget_set_valign(time, GTK_ALIGN_CENTER);
    add(items, time);
    add(strip, items);
    return strip;
}

GtkWidget* PanelPageBuilder::privacy(const SettingsPage::Privacy& privacy)
{
    GtkWidget* box = vertical(10);
    setMargins(box, rowPadding, rowPadding);
    GtkWidget* heading = horizontal(10);
    add(heading, icon(privacy.icon));
    GtkWidget* title = label(privacy.title);
    gtk_widget_set_valign(title, GTK_ALIGN_CENTER);
    add(heading, title);
    add(box, heading);
    add(box, label(privacy.body));

    GtkWidget* link = gtk_button_new();
    gtk_button_set_relief(GTK_BUTTON(link), GTK_RELIEF_NONE);
    gtk_widget_set_halign(link, GTK_ALIGN_START);
    m_sheet.style(link, "padding: 6px 0; outline-offset: 1px; -gtk-outline-radius: 6px;");
    GtkWidget* content = horizontal(8);
    add(content, icon(privacy.link.icon));
    GtkWidget* text = label(privacy.link.label);
    gtk_widget_set_valign(text, GTK_ALIGN_CENTER);
    add(content, text);
    add(link, content);
    gtk_widget_set_tooltip_text(link, privacy.link.url.c_str());
    setAccessibleName(link, privacy.link.label.text);
    setKey(link, privacy.link.url);
    connectOwned(link, "clicked", G_CALLBACK(onClicked), privacy.link.open);
    add(box, link);
    return box;
}

GtkWidget* PanelPageBuilder::header(const PanelHeader& header)
{
    GtkWidget* bar = horizontal(4);
    gtk_widget_set_margin_top(bar, 10);
    gtk_widget_set_margin_bottom(bar, 6);
    gtk_widget_set_margin_start(bar, 12);
    gtk_widget_set_margin_end(bar, 12);
    if (header.back)
        gtk_box_pack_start(GTK_BOX(bar), button(*header.back), FALSE, FALSE, 0);
    GtkWidget* title = label(header.title);
    gtk_label_set_line_wrap(GTK_LABEL(title), FALSE);
    gtk_widget_set_valign(title, GTK_ALIGN_CENTER);
    gtk_box_set_center_widget(GTK_BOX(bar), title);
    gtk_box_pack_end(GTK_BOX(bar), button(header.close), FALSE, FALSE, 0);
    if (header.cancel) {
        GtkWidget* cancel = button(*header.cancel);
        gtk_widget_set_valign(cancel, GTK_ALIGN_CENTER);
        gtk_widget_set_margin_end(cancel, 8);
        gtk_box_pack_end(GTK_BOX(bar), cancel, FALSE, FALSE, 0);
    }
    // The bar keeps the close button's height when it has no other control.
    gtk_widget_set_size_request(bar, -1, pixels(header.close.hitSize));
    return bar;
}

GtkWidget* PanelPageBuilder::steps(const StepIndicator& steps)
{
    GtkWidget* row = horizontal(pixels(steps.spacing));
    gtk_box_set_homogeneous(GTK_BOX(row), TRUE);
    gtk_widget_set_margin_start(row, pixels(steps.horizontalPadding));
    gtk_widget_set_margin_end(row, pixels(steps.horizontalPadding));
    gtk_widget_set_margin_top(row, 4);
    gtk_widget_set_margin_bottom(row, 12);
    for (const Color& step : steps.steps) {
        GtkWidget* capsule = gtk_drawing_area_new();
        gtk_widget_set_size_request(capsule, -1, std::max(1, pixels(steps.capsuleHeight)));
        gtk_widget_set_hexpand(capsule, TRUE);
        connectOwned(capsule, "draw", G_CALLBACK(onDrawCapsule), step);
        add(row, capsule);
    }
    return row;
}

GtkWidget* PanelPageBuilder::content(const PanelBody& body)
{
    m_card = body.card;
    return std::visit(
        [this](const auto& page) -> GtkWidget* {
            using Page = std::decay_t<decltype(page)>;
            if constexpr (std::is_same_v<Page, WelcomePage>)
                return welcomePage(page);
            else if constexpr (std::is_same_v<Page, SelectionPage>)
                return selectionPage(page);
            else if constexpr (std::is_same_v<Page, LoginIntroPage>)
                return loginIntroPage(page);
            else if constexpr (std::is_same_v<Page, LanguagePage>)
                return languagePage(page);
            else if constexpr (std::is_same_v<Page, ExplanationPage>)
                return explanationPage(page);
            else if constexpr (std::is_same_v<Page, LoadErrorPage>)
                return loadErrorPage(page);
            else
                return settingsPage(page);
        },
        body.page);
}

GtkWidget* PanelPageBuilder::bottom(const PanelBody& body)
{
    if (!body.errorLine && !body.footer)
        return nullptr;
    GtkWidget* box = vertical(12);
    gtk_widget_set_margin_top(box, 12);
    gtk_widget_set_margin_bottom(box, 20);
    gtk_widget_set_margin_start(box, pageMargin);
    gtk_widget_set_margin_end(box, pageMargin);
    if (body.errorLine) {
        GtkWidget* error = label(*body.errorLine);
        gtk_widget_set_halign(error, GTK_ALIGN_CENTER);
        add(box, error);
    }
    if (body.footer) {
        if (body.footer->counter) {
            GtkWidget* counter = label(*body.footer->counter);
            gtk_widget_set_halign(counter, GTK_ALIGN_CENTER);
            add(box, counter);
        }
        add(box, button(body.footer->primary));
    }
    return box;
}

GtkWidget* PanelPageBuilder::welcomePage(const WelcomePage& page)
{
    GtkWidget* box = vertical(18);
    GtkWidget* lotus = icon(page.lotus);
    gtk_widget_set_margin_top(lotus, 28);
    gtk_widget_set_margin_bottom(lotus, 4);
    add(box, lotus);
    add(box, label(page.title));
    add(box, label(page.body));
    add(box, label(page.foot));
    GtkWidget* privacyLine = horizontal(8);
    gtk_widget_set_margin_top(privacyLine, 10);
    gtk_widget_set_halign(privacyLine, GTK_ALIGN_CENTER);
    GtkWidget* lock = icon(page.privacyIcon);
    gtk_widget_set_valign(lock, GTK_ALIGN_START);
    add(privacyLine, lock);
    add(privacyLine, label(page.privacy));
    add(box, privacyLine);
    centreChildren(box);
    return box;
}

GtkWidget* PanelPageBuilder::selectionPage(const SelectionPage& page)
{
    GtkWidget* box = vertical(12);
    add(box, label(page.title));
    GtkWidget* body = label(page.body);
    gtk_widget_set_margin_bottom(body, 8);
    add(box, body);
    for (const TopicCard& card : page.topics)
        add(box, topicCard(card));
    return box;
}

GtkWidget* PanelPageBuilder::loginIntroPage(const LoginIntroPage& page)
{
    GtkWidget* box = vertical(18);
    GtkWidget* title = label(page.title);
    gtk_widget_set_margin_top(title, 12);
    add(box, title);
    add(box, label(page.body));
    GtkWidget* strip = illustration(page.illustration);
    gtk_widget_set_margin_top(strip, 6);
    gtk_widget_set_margin_bottom(strip, 6);
    add(box, strip);
    add(box, card(loginSections(page.login)));
    return box;
}

GtkWidget* PanelPageBuilder::languagePage(const LanguagePage& page)
{
    std::vector<GtkWidget*> rows;
    for (const LanguagePage::Choice& choice : page.choices) {
        GtkWidget* widget = row(choice.row);
        gtk_widget_set_name(widget, ("language." + choice.code).c_str());
        setKey(widget, "language." + choice.code);
        rows.push_back(widget);
    }
    GtkWidget* box = vertical(0);
    add(box, card(rows));
    return box;
}

GtkWidget* PanelPageBuilder::explanationPage(const ExplanationPage& page)
{
    GtkWidget* box = vertical(18);
    GtkWidget* title = label(page.title);
    gtk_widget_set_margin_top(title, 28);
    add(box, title);
    add(box, label(page.body));
    GtkWidget* understood = button(page.understood);
    gtk_widget_set_margin_top(understood, 14);
    add(box, understood);
    centreChildren(box);
    return box;
}

GtkWidget* PanelPageBuilder::loadErrorPage(const LoadErrorPage& page)
{
    GtkWidget* box = vertical(20);
    GtkWidget* message = label(page.message);
    gtk_widget_set_margin_top(message, 40);
    add(box, message);
    add(box, button(page.retry));
    centreChildren(box);
    return box;
}

GtkWidget* PanelPageBuilder::settingsPage(const SettingsPage& page)
{
    GtkWidget* box = vertical(sectionSpacing);
    const auto section = [&](const PanelText* heading, GtkWidget* content) {
        if (heading == nullptr) {
            add(box, content);
            return;
        }
        GtkWidget* group = vertical(headingSpacing);
        GtkWidget* title = label(*heading);
        gtk_widget_set_margin_start(title, 4);
        add(group, title);
        add(group, content);
        add(box, group);
    };

    section(&page.language.heading, card({row(page.language.row)}));
    section(nullptr, card(loginSections(page.login)));
    section(&page.sounds.heading, card({switchRow(page.sounds.water), switchRow(page.sounds.bell)}));
    section(nullptr, card({row(page.topics.topics), row(page.topics.guide)}));

    std::vector<GtkWidget*> reminder{switchRow(page.reminder.toggle)};
    if (page.reminder.openSettings) {
        GtkWidget* openSettings = button(*page.reminder.openSettings);
        gtk_widget_set_margin_start(openSettings, rowPadding);
        gtk_widget_set_margin_bottom(openSettings, 12);
        // Part of the switch's section, above the separator.
        GtkWidget* toggleAndButton = vertical(0);
        add(toggleAndButton, reminder.front());
        add(toggleAndButton, openSettings);
        reminder.front() = toggleAndButton;
    }
    reminder.push_back(timePicker(page.reminder.time));
    section(nullptr, card(reminder));
    section(nullptr, card({privacy(page.privacy)}));

    GtkWidget* footer = label(page.footer);
    gtk_widget_set_halign(footer, GTK_ALIGN_CENTER);
    gtk_widget_set_margin_bottom(footer, 8);
    add(box, footer);
    return box;
}

} // namespace velmora
