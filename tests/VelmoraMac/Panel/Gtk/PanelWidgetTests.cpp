#include <algorithm>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

#include <fstream>

#include <gtest/gtest.h>
#include <gtk/gtk.h>
#include <nlohmann/json.hpp>

#include "VelmoraMac/MacStrings.h"
#include "VelmoraMac/Panel/Gtk/PanelStyleSheet.h"
#include "VelmoraMac/Panel/Gtk/PanelWidget.h"
#include "VelmoraMac/Panel/PanelContent.h"
#include "VelmoraMac/Platform/SystemNotificationHub.h"
#include "tests/VelmoraMac/Panel/PanelTestFixture.h"
#include "tests/VelmoraMac/Platform/Desktop/DesktopSession.h"

namespace velmora {
namespace {

using test::iterateUntil;
using test::onboardedState;
using test::shownPage;

void drain()
{
    while (g_main_context_iteration(nullptr, FALSE) != FALSE) { }
}

void visit(GtkWidget* widget, const std::function<void(GtkWidget*)>& each)
{
    each(widget);
    if (!GTK_IS_CONTAINER(widget))
        return;
    // Includes internal children, such as the entry of a spin button.
    gtk_container_forall(
        GTK_CONTAINER(widget),
        [](GtkWidget* child, gpointer data) {
            visit(child, *static_cast<const std::function<void(GtkWidget*)>*>(data));
        },
        const_cast<std::function<void(GtkWidget*)>*>(&each));
}

std::vector<std::string> shownTexts(GtkWidget* root)
{
    std::vector<std::string> texts;
    visit(root, [&](GtkWidget* widget) {
        if (GTK_IS_LABEL(widget) && gtk_widget_is_visible(widget))
            texts.emplace_back(gtk_label_get_text(GTK_LABEL(widget)));
    });
    return texts;
}

GtkWidget* named(GtkWidget* root, const std::string& name)
{
    GtkWidget* found = nullptr;
    visit(root, [&](GtkWidget* widget) {
        if (found == nullptr && name == gtk_widget_get_name(widget))
            found = widget;
    });
    return found;
}

// The button that shows `text`.
GtkButton* buttonShowing(GtkWidget* root, const std::string& text)
{
    GtkButton* found = nullptr;
    visit(root, [&](GtkWidget* widget) {
        if (found != nullptr || !GTK_IS_LABEL(widget) || text != gtk_label_get_text(GTK_LABEL(widget)))
            return;
        GtkWidget* button = gtk_widget_get_ancestor(widget, GTK_TYPE_BUTTON);
        if (button != nullptr)
            found = GTK_BUTTON(button);
    });
    return found;
}

// Every text a body describes, for comparison with what the widgets show.
std::vector<std::string> describedTexts(const PanelBody& body)
{
    std::vector<std::string> texts{body.header.title.text};
    const auto text = [&](const PanelText& each) { texts.push_back(each.text); };
    const auto button = [&](const PanelButton& each) {
        if (each.label)
            text(*each.label);
    };
    const auto row = [&](const PanelRow& each) {
        text(each.title);
        if (each.subtitle)
            text(*each.subtitle);
    };
    const auto switchRow = [&](const PanelSwitchRow& each) {
        text(each.title);
        text(each.body);
        text(each.stateWord);
    };
    const auto login = [&](const LoginBlock& block) {
        switchRow(block.toggle);
        if (block.approval)
            text(*block.approval);
        if (block.openSettings)
            button(*block.openSettings);
        if (block.error)
            text(*block.error);
    };
    if (body.header.cancel)
        button(*body.header.cancel);
    if (body.errorLine)
        text(*body.errorLine);
    if (body.footer) {
        if (body.footer->counter)
            text(*body.footer->counter);
        button(body.footer->primary);
    }
    std::visit(
        [&](const auto& page) {
            using Page = std::decay_t<decltype(page)>;
            if constexpr (std::is_same_v<Page, WelcomePage>) {
                for (const PanelText* each : {&page.title, &page.body, &page.foot, &page.privacy})
                    text(*each);
            } else if constexpr (std::is_same_v<Page, SelectionPage>) {
                text(page.title);
                text(page.body);
                for (const TopicCard& card : page.topics) {
                    text(card.name);
                    text(card.description);
                }
            } else if constexpr (std::is_same_v<Page, LoginIntroPage>) {
                text(page.title);
                text(page.body);
                text(page.illustration.name);
                text(page.illustration.time);
                login(page.login);
            } else if constexpr (std::is_same_v<Page, LanguagePage>) {
                for (const auto& choice : page.choices)
                    row(choice.row);
            } else if constexpr (std::is_same_v<Page, ExplanationPage>) {
                text(page.title);
                text(page.body);
                button(page.understood);
            } else if constexpr (std::is_same_v<Page, LoadErrorPage>) {
                text(page.message);
                button(page.retry);
            } else {
                text(page.language.heading);
                row(page.language.row);
                login(page.login);
                text(page.sounds.heading);
                switchRow(page.sounds.water);
                switchRow(page.sounds.bell);
                row(page.topics.topics);
                row(page.topics.guide);
                switchRow(page.reminder.toggle);
                if (page.reminder.openSettings)
                    button(*page.reminder.openSettings);
                text(page.reminder.time.label);
                text(page.privacy.title);
                text(page.privacy.body);
                text(page.privacy.link.label);
                text(page.footer);
            }
        },
        body.page);
    return texts;
}

// The panel's widget over a real coordinator and store, in an offscreen
// window of the panel's default size.
class PanelWidgetTest : public test::PanelTest {
protected:
    void TearDown() override
    {
        m_panel.reset();
        if (m_window != nullptr)
            gtk_widget_destroy(m_window);
        drain();
    }

    void SetUp() override
    {
        if (gtk_init_check(nullptr, nullptr) == FALSE)
            GTEST_SKIP() << "no display";
    }

    // Starts as the host does and shows the panel for it.
    void show(const std::optional<PracticeState>& stored = std::nullopt)
    {
        start(stored);
        m_content = std::make_shared<PanelContent>(
            m_coordinator, PanelServices{m_urlOpener, m_loginItems, m_system}, m_notifications);
        m_content->didAppear();
        m_panel = std::make_unique<PanelWidget>(m_content);
        m_window = gtk_offscreen_window_new();
        // An offscreen window takes its content's natural size, not a default.
        gtk_widget_set_size_request(m_window, PanelWidget::defaultWidth, PanelWidget::defaultHeight);
        // Clear, as the panel's window is, so that the panel's own
        // background is all that shows.
        gtk_widget_set_app_paintable(m_window, TRUE);
        gtk_container_add(GTK_CONTAINER(m_window), m_panel->widget());
        gtk_widget_show_all(m_window);
        ASSERT_TRUE(iterateUntil([&] { return gtk_widget_get_allocated_height(m_panel->widget()) > 1; }));
        drain();
    }

    [[nodiscard]] PracticeView& panelView() { return m_content->view(); }
    [[nodiscard]] GtkWidget* root() const { return m_panel->widget(); }

    // Lets the deferred rebuild run; then the widgets show the view's body.
    void settle()
    {
        drain();
        ASSERT_TRUE(iterateUntil([&] { return showsAll(describedTexts(panelView().body())); }));
    }

    [[nodiscard]] bool showsAll(const std::vector<std::string>& texts) const
    {
        const std::vector<std::string> shown = shownTexts(root());
        return std::ranges::all_of(
            texts, [&](const std::string& text) { return std::ranges::find(shown, text) != shown.end(); });
    }

    void expectShowsBody(const std::string& what)
    {
        const std::vector<std::string> shown = shownTexts(root());
        for (const std::string& text : describedTexts(panelView().body()))
            EXPECT_NE(std::ranges::find(shown, text), shown.end()) << what << " lacks \"" << text << "\"";
    }

    void click(GtkButton* button)
    {
        ASSERT_NE(button, nullptr);
        ASSERT_TRUE(gtk_widget_is_sensitive(GTK_WIDGET(button)));
        gtk_button_clicked(button);
        settle();
    }

    // Draws the panel as the window shows it, into $VELMORA_SCREENSHOT_DIR
    // when that is set; fails when the drawing shows nothing but the
    // background.
    void screenshot(const std::string& name)
    {
        drain();
        // Lays out what the last rebuild changed without waiting for the
        // frame clock.
        gtk_container_check_resize(GTK_CONTAINER(m_window));
        const int width = gtk_widget_get_allocated_width(m_window);
        const int height = gtk_widget_get_allocated_height(m_window);
        cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height);
        cairo_t* cairo = cairo_create(surface);
        // Onboarded, the panel lets the pond show through; black stands in
        // for it.
        cairo_set_source_rgb(cairo, 0, 0, 0);
        cairo_paint(cairo);
        gtk_widget_draw(m_window, cairo);
        cairo_destroy(cairo);
        cairo_surface_flush(surface);

        const unsigned char* data = cairo_image_surface_get_data(surface);
        const int stride = cairo_image_surface_get_stride(surface);
        std::size_t differing = 0;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                if (std::memcmp(data + (static_cast<std::ptrdiff_t>(y) * stride) + (static_cast<std::ptrdiff_t>(x) * 4),
                        data, 4)
                    != 0)
                    ++differing;
            }
        }
        EXPECT_GT(differing, static_cast<std::size_t>(width * height / 100)) << name << " shows hardly anything";

        if (const char* folder = g_getenv("VELMORA_SCREENSHOT_DIR"); folder != nullptr && *folder != '\0') {
            std::filesystem::create_directories(folder);
            const std::string path = (std::filesystem::path(folder) / (name + ".png")).string();
            EXPECT_EQ(cairo_surface_write_to_png(surface, path.c_str()), CAIRO_STATUS_SUCCESS) << path;
        }
        cairo_surface_destroy(surface);
    }

    SystemNotificationHub m_notifications;
    std::shared_ptr<PanelContent> m_content;
    std::unique_ptr<PanelWidget> m_panel;
    GtkWidget* m_window = nullptr;
};

TEST_F(PanelWidgetTest, Onboarding_ShowsEachPagesTexts)
{
    show();
    ASSERT_EQ(page(), "welcome");
    expectShowsBody("welcome");
    screenshot("welcome");

    click(buttonShowing(root(), text("begin")));
    ASSERT_EQ(page(), "selection");
    for (std::int64_t group = 0; group < PracticeView::groupCount; ++group) {
        ASSERT_EQ(panelView().group(), group);
        expectShowsBody("selection step " + std::to_string(group));
        if (group < PracticeView::groupCount - 1)
            click(buttonShowing(root(), text("next")));
    }
    // The last step needs a choice before it leads on.
    const SelectionPage last = shownPage<SelectionPage>(panelView().body());
    ASSERT_FALSE(last.topics.empty());
    click(GTK_BUTTON(named(root(), "topic." + last.topics.front().topicID)));
    click(buttonShowing(root(), text("next")));
    ASSERT_EQ(page(), "loginIntro");
    expectShowsBody("login introduction");
}

TEST_F(PanelWidgetTest, Settings_ShowTheirTextsSaveAtOnceAndKeepTheReadersPlace)
{
    PracticeState stored = onboardedState();
    stored.reminderEnabled = true;
    stored.reminderHour = 20;
    stored.reminderMinute = 0;
    // The day Helsinki's clocks go forward at 03:00: 03:15 does not occur
    // that day, and it is still the time the user picks for every day.
    m_system->setNow(test::utc(2025, 3, 30, 9, 0));
    show(stored);
    expectShowsBody("settings");
    screenshot("settings");
    const bool water = state().waterSoundEnabled;

    GtkScrolledWindow* scroller = nullptr;
    visit(root(), [&](GtkWidget* widget) {
        if (scroller == nullptr && GTK_IS_SCROLLED_WINDOW(widget))
            scroller = GTK_SCROLLED_WINDOW(widget);
    });
    ASSERT_NE(scroller, nullptr);
    GtkAdjustment* scroll = gtk_scrolled_window_get_vadjustment(scroller);
    ASSERT_GT(gtk_adjustment_get_upper(scroll), gtk_adjustment_get_page_size(scroll))
        << "the settings are taller than the window";
    gtk_adjustment_set_value(scroll, 200);

    click(buttonShowing(root(), text("waterSound")));
    EXPECT_EQ(savedState().waterSoundEnabled, !water);
    EXPECT_TRUE(showsAll({text(water ? "stateOff" : "stateOn")}));
    EXPECT_DOUBLE_EQ(gtk_adjustment_get_value(scroll), 200) << "a rebuild of the same page keeps its place";
    AtkStateSet* states
        = atk_object_ref_state_set(gtk_widget_get_accessible(GTK_WIDGET(buttonShowing(root(), text("waterSound")))));
    EXPECT_EQ(atk_state_set_contains_state(states, ATK_STATE_CHECKED) != FALSE, !water)
        << "a screen reader hears the switch's state";
    g_object_unref(states);

    // The picker changes one field at a time and keeps the other.
    auto* hour = GTK_SPIN_BUTTON(named(root(), "reminder.hour"));
    ASSERT_NE(hour, nullptr);
    ASSERT_TRUE(gtk_widget_is_sensitive(GTK_WIDGET(hour)));
    gtk_spin_button_set_value(hour, 3);
    settle();
    auto* minute = GTK_SPIN_BUTTON(named(root(), "reminder.minute"));
    ASSERT_NE(minute, nullptr);
    gtk_spin_button_set_value(minute, 15);
    settle();
    EXPECT_EQ(savedState().reminderHour, 3);
    EXPECT_EQ(savedState().reminderMinute, 15);
    EXPECT_STREQ(gtk_entry_get_text(GTK_ENTRY(named(root(), "reminder.hour"))), "03");

    // The pages the settings lead to; another page starts at its top.
    click(buttonShowing(root(), text("guide")));
    ASSERT_EQ(page(), "guide");
    expectShowsBody("guide");
    click(buttonShowing(root(), text("understood")));
    click(buttonShowing(root(), text("language")));
    ASSERT_EQ(page(), "language");
    expectShowsBody("language");
    EXPECT_DOUBLE_EQ(gtk_adjustment_get_value(scroll), 0);
}

TEST_F(PanelWidgetTest, UnreadableState_ShowsTheLoadErrorAndRetries)
{
    saveBeforeStart(onboardedState());
    test::writeFileBytes(url(), "{\"version\":");
    show();
    ASSERT_TRUE(model().loadFailed().get());
    expectShowsBody("load error");
    EXPECT_EQ(buttonShowing(root(), text("begin")), nullptr) << "no footer while the state is unreadable";

    test::writeFileBytes(url(), onboardedState().toJSON());
    click(buttonShowing(root(), text("retry")));
    EXPECT_FALSE(model().loadFailed().get());
    expectShowsBody("settings after a retry");
}

TEST_F(PanelWidgetTest, Rebuild_ComesOnTheNextTurnOfTheLoopAndNeverAfterThePanelWent)
{
    show();
    GtkButton* begin = buttonShowing(root(), text("begin"));
    ASSERT_NE(begin, nullptr);
    GtkWidget* gone = GTK_WIDGET(begin);
    g_object_add_weak_pointer(G_OBJECT(gone), reinterpret_cast<gpointer*>(&gone));

    gtk_button_clicked(begin);
    EXPECT_EQ(page(), "selection");
    // The view announced the change before making it: nothing is rebuilt
    // inside the click.
    EXPECT_NE(gone, nullptr);
    settle();
    EXPECT_EQ(gone, nullptr) << "the welcome page's widgets are destroyed";
    EXPECT_FALSE(showsAll({text("welcomeTitle")}));

    // Gone with a rebuild pending: neither it nor a later change reaches
    // the panel.
    GtkWidget* widget = root();
    g_object_add_weak_pointer(G_OBJECT(widget), reinterpret_cast<gpointer*>(&widget));
    gtk_button_clicked(buttonShowing(root(), text("next")));
    m_panel.reset();
    EXPECT_EQ(widget, nullptr) << "the panel's widgets went with it";
    drain();
    panelView().advance();
    drain();
    EXPECT_EQ(panelView().group(), 2);
}

// The pond shows through the settings only where a compositor blends the
// panel's window over it; elsewhere a translucent background would lie
// over the theme's grey and wash the palette out.
TEST(PanelStyleSheet, TranslucentBackground_IsThePalettesOpaqueColourWithoutACompositor)
{
    if (gtk_init_check(nullptr, nullptr) == FALSE)
        GTEST_SKIP() << "no display";
    PanelBody body;
    body.background = Color{14 / 255.0, 36 / 255.0, 34 / 255.0}.withOpacity(0.8);
    const std::string text = PanelStyleSheet("root", body).text();
    const bool composited = gdk_screen_is_composited(gdk_screen_get_default()) != FALSE;
    EXPECT_NE(text.find("background-color: "
                  + PanelStyleSheet::css(composited ? body.background : body.background.withOpacity(1))),
        std::string::npos)
        << text;
}

// Every text a user may see, in every shipped language, has a glyph for
// each of its characters in the fonts the install script brings: a missing
// one shows as a box (Hindi, without a Devanagari font).
TEST(PanelFonts, EveryShippedText_HasAGlyphForEachCharacter)
{
    if (gtk_init_check(nullptr, nullptr) == FALSE)
        GTEST_SKIP() << "no display";
    std::vector<std::string> texts;
    const std::function<void(const nlohmann::json&)> collect = [&](const nlohmann::json& value) {
        if (value.is_string())
            texts.push_back(value.get<std::string>());
        else if (value.is_structured())
            for (const nlohmann::json& inner : value)
                collect(inner);
    };
    std::ifstream file(VELMORA_CONTENT_RESOURCE);
    const nlohmann::json content = nlohmann::json::parse(file);
    for (const char* section : {"topics", "languages", "strings"})
        collect(content.at(section));
    for (const auto& [language, table] : MacStrings::values())
        for (const auto& [key, text] : table)
            texts.push_back(text);
    ASSERT_GT(texts.size(), 100U);

    PangoFontMap* fonts = pango_cairo_font_map_get_default();
    PangoContext* context = pango_font_map_create_context(fonts);
    PangoLayout* layout = pango_layout_new(context);
    std::vector<std::string> missing;
    // The panel's faces: the theme's sans serif, and the serif of titles.
    for (const char* family : {"Sans", "Serif"}) {
        PangoFontDescription* font = pango_font_description_from_string(family);
        pango_layout_set_font_description(layout, font);
        pango_font_description_free(font);
        for (const std::string& text : texts) {
            pango_layout_set_text(layout, text.c_str(), -1);
            if (pango_layout_get_unknown_glyphs_count(layout) > 0)
                missing.push_back(std::string(family) + ": " + text);
        }
    }
    g_object_unref(layout);
    g_object_unref(context);
    EXPECT_EQ(missing, std::vector<std::string>{});
}

} // namespace
} // namespace velmora
