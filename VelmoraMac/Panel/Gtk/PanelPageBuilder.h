#pragma once

#include <string>
#include <vector>

#include <gtk/gtk.h>

#include "PanelImageCache.h"
#include "PanelStyleSheet.h"
#include "VelmoraMac/Panel/PanelBody.h"

namespace velmora {

// Turns one description of the panel into GTK widgets: each region of the
// body as a new floating widget for the caller to place. Every control is
// wired to the action the description hands out; the connection owns its
// copy of the action, so it goes with the widget and no callback outlives
// what it calls. Styles go to `sheet`, which the caller installs; texts are
// styled with Pango attributes from their own description, and icons are
// painted as template images in their tint.
//
// Widgets that carry an accessibility identifier are named after it, so
// that the widget tree can be searched the way the description names its
// controls. Main thread only.
class PanelPageBuilder {
public:
    // The widest the page content and footer run, in pixels.
    static constexpr int columnWidth = 560;

    PanelPageBuilder(PanelStyleSheet& sheet, PanelImageCache& images);

    [[nodiscard]] GtkWidget* header(const PanelHeader& header);
    [[nodiscard]] static GtkWidget* steps(const StepIndicator& steps);
    // The page content, for the scrolling area.
    [[nodiscard]] GtkWidget* content(const PanelBody& body);
    // The error line and the footer under the scrolling area; null when the
    // body has neither.
    [[nodiscard]] GtkWidget* bottom(const PanelBody& body);

    // The widget's own or an ancestor's key: what identifies a control
    // across rebuilds, so that focus can follow it to its new widget.
    [[nodiscard]] static std::string keyOf(GtkWidget* widget);
    // The first widget under `root` with `key`, or null.
    [[nodiscard]] static GtkWidget* findKey(GtkWidget* root, const std::string& key);

    // Text of the kind PanelText::Design describes, with fallbacks found on
    // any desktop.
    static constexpr const char* systemFamilies = "Inter, Cantarell, Noto Sans, DejaVu Sans, sans-serif";
    static constexpr const char* serifFamilies
        = "Source Serif 4, Source Serif Pro, Noto Serif, Nimbus Roman, DejaVu Serif, serif";

private:
    [[nodiscard]] static GtkWidget* label(const PanelText& text);
    [[nodiscard]] GtkWidget* icon(const PanelIcon& icon);
    [[nodiscard]] GtkWidget* button(const PanelButton& button);
    [[nodiscard]] GtkWidget* row(const PanelRow& row);
    [[nodiscard]] static GtkWidget* switchRow(const PanelSwitchRow& row);
    [[nodiscard]] GtkWidget* card(const std::vector<GtkWidget*>& sections);
    [[nodiscard]] std::vector<GtkWidget*> loginSections(const LoginBlock& block);
    [[nodiscard]] GtkWidget* topicCard(const TopicCard& card);
    [[nodiscard]] GtkWidget* timePicker(const ReminderTimePicker& picker);
    [[nodiscard]] GtkWidget* illustration(const MenuBarIllustration& illustration);
    [[nodiscard]] GtkWidget* privacy(const SettingsPage::Privacy& privacy);

    [[nodiscard]] GtkWidget* welcomePage(const WelcomePage& page);
    [[nodiscard]] GtkWidget* selectionPage(const SelectionPage& page);
    [[nodiscard]] GtkWidget* loginIntroPage(const LoginIntroPage& page);
    [[nodiscard]] GtkWidget* languagePage(const LanguagePage& page);
    [[nodiscard]] GtkWidget* explanationPage(const ExplanationPage& page);
    [[nodiscard]] GtkWidget* loadErrorPage(const LoadErrorPage& page);
    [[nodiscard]] GtkWidget* settingsPage(const SettingsPage& page);

    PanelStyleSheet& m_sheet;
    PanelImageCache& m_images;
    PanelCardStyle m_card;
};

} // namespace velmora
