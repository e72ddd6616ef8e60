#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "Color.h"
#include "PanelImage.h"
#include "TimeOfDay.h"
#include "VelmoraCore/Instant.h"

namespace velmora {

// What a control of the panel does when used. An action stays safe to call
// after the view that made it is gone; it then does nothing.
using PanelAction = std::function<void()>;

// One text of the panel as a toolkit draws it. Sizes are in points; a text
// whose size or colour the panel's style leaves open is at the base size in
// the foreground colour.
struct PanelText {
    enum class Design : std::uint8_t {
        system,
        serif,
    };
    enum class Style : std::uint8_t {
        regular,
        italic,
    };
    enum class Alignment : std::uint8_t {
        leading,
        center,
    };

    std::string text;
    double size = 15;
    Color color;
    Design design = Design::system;
    Style style = Style::regular;
    // Extra space between letters, in points.
    double tracking = 0;
    // Extra space between lines, in points.
    double lineSpacing = 0;
    Alignment alignment = Alignment::leading;
    // Empty when the text has none.
    std::string accessibilityIdentifier;

    bool operator==(const PanelText&) const = default;

    // A text in the system design, regular, leading, without an identifier.
    static PanelText plain(std::string text, double size, Color color)
    {
        PanelText result;
        result.text = std::move(text);
        result.size = size;
        result.color = color;
        return result;
    }
};

// An icon drawn as a template image: only the image's shape counts, filled
// with `tint`, and stretched to a square of `size` points. An empty image
// still takes its square.
struct PanelIcon {
    // The name among the content's interface icons, or the topic ID for a
    // topic's icon.
    std::string name;
    PanelImage image;
    double size = 24;
    Color tint;

    bool operator==(const PanelIcon&) const = default;
};

// A button of the panel.
struct PanelButton {
    enum class Kind : std::uint8_t {
        // The main filled button of a page: the full available width, at
        // least `minimumHeight` high, `background` in a continuous rounded
        // rectangle of `cornerRadius`.
        primary,
        // A plain text button; its label carries the colour.
        text,
        // An icon in a square hit area of `hitSize` points.
        icon,
    };

    Kind kind = Kind::text;
    // Primary and text buttons.
    std::optional<PanelText> label;
    // Icon buttons.
    std::optional<PanelIcon> icon;
    bool enabled = true;
    std::optional<Color> background;
    double cornerRadius = 0;
    double minimumHeight = 0;
    double hitSize = 0;
    // Empty when the button has none.
    std::string accessibilityLabel;
    std::string accessibilityIdentifier;
    PanelAction action;
};

// The capsule switch of a switch row: a track with a round knob inside it,
// `knobInset` points from the track's edges and at its end for the value.
struct PanelSwitch {
    bool isOn = false;
    Color track;
    // The track's border; none while on.
    std::optional<Color> border;
    double borderWidth = 0;
    Color knob;
    double knobDiameter = 0;
    double knobInset = 0;
    // The same in both states: the knob and its inset on both sides.
    double trackHeight = 32;

    bool operator==(const PanelSwitch&) const = default;
};

// A tappable row: the leading icon, the title with the subtitle below it, a
// spacer, then the trailing icon. The whole row, padding included, is the
// hit area.
struct PanelRow {
    std::optional<PanelIcon> icon;
    PanelText title;
    std::optional<PanelText> subtitle;
    std::optional<PanelIcon> trailing;
    double padding = 20;
    PanelAction action;
};

// A row with a switch: the title with the body below it, then the state
// word and the switch. A tap anywhere on the row turns the switch over.
struct PanelSwitchRow {
    PanelText title;
    PanelText body;
    PanelText stateWord;
    PanelSwitch control;
    // Empty when the row has none.
    std::string accessibilityIdentifier;
    // Asks for the opposite of the value shown.
    PanelAction toggle;
};

// How the panel draws a card, the rounded container of one section's rows,
// and the thin line between the rows inside it. The content of a card is
// stacked vertically.
struct PanelCardStyle {
    Color background;
    // Of a continuous rounded rectangle.
    double cornerRadius = 24;
    Color border;
    double borderWidth = 1;
    Color separator;
    double separatorThickness = 1;

    bool operator==(const PanelCardStyle&) const = default;
};

// The panel's top bar, left to right: back, title, cancel, close.
struct PanelHeader {
    std::optional<PanelButton> back;
    PanelText title;
    std::optional<PanelButton> cancel;
    PanelButton close;
};

// The row of capsules above the selection page that shows how far through
// the topic groups the user is.
struct StepIndicator {
    // One capsule per topic group, in order.
    std::vector<Color> steps;
    double spacing = 6;
    double capsuleHeight = 3;
    double horizontalPadding = 27;

    bool operator==(const StepIndicator&) const = default;
};

// The bottom of the onboarding pages: how many topics are chosen (on the
// selection page only) and the button that leads on.
struct SelectionFooter {
    std::optional<PanelText> counter;
    PanelButton primary;
};

// One topic on the selection page: its icon on the left, name and
// description in the middle, the check mark on the right, in a continuous
// rounded rectangle. Tapping it adds the topic to the working selection or
// takes it out.
struct TopicCard {
    std::string topicID;
    bool selected = false;
    // None when the topic's image data is not an image.
    std::optional<PanelIcon> icon;
    PanelText name;
    PanelText description;
    PanelIcon check;
    Color background;
    double cornerRadius = 20;
    double padding = 16;
    PanelAction toggle;
};

// A drawing of a menu bar that shows the user where the status-bar icon
// lives: the network icon, the lotus on a rounded pale background, the name
// and a clock, left to right.
struct MenuBarIllustration {
    PanelIcon network;
    PanelIcon lotus;
    Color lotusBackground;
    double lotusCornerRadius = 6;
    PanelText name;
    PanelText time;
};

// The launch-at-login switch with what the system says about it.
struct LoginBlock {
    PanelSwitchRow toggle;
    // Both present while the system waits for the user's approval; the
    // button opens the system's login-items settings.
    std::optional<PanelText> approval;
    std::optional<PanelButton> openSettings;
    // The last failed switch.
    std::optional<PanelText> error;
};

// The picker of the daily reminder's time, hours and minutes only.
struct ReminderTimePicker {
    PanelText label;
    // Today at the reminder time in the user's calendar.
    Instant date;
    // The stored hour and minute: what `date` shows in the user's calendar,
    // except on a day when a daylight-saving change skips them.
    std::int64_t hour = 0;
    std::int64_t minute = 0;
    Color tint;
    bool enabled = false;
    // Stores the hour and minute of the picked instant in the user's
    // calendar.
    std::function<void(Instant picked)> pick;
    // Stores `time` as it is, for a picker that edits the hour and minute
    // fields rather than an instant: any instant formed from them today is
    // wrong on a day with a daylight-saving change, when a time in the
    // skipped hour becomes the hour after it.
    std::function<void(TimeOfDay time)> pickTime;
};

// All the panel shows besides its header after the state file could not be
// read: what happened and a button that reads it again.
struct LoadErrorPage {
    PanelText message;
    PanelButton retry;
};

// The first page of a fresh install, top to bottom. It has no control of its
// own: the footer's button leads on.
struct WelcomePage {
    PanelIcon lotus;
    PanelText title;
    PanelText body;
    PanelText foot;
    // The privacy line: the icon beside the text.
    PanelIcon privacyIcon;
    PanelText privacy;
};

// One step of the topic choice: the shown group's name, a body, and the
// group's topics in catalog order.
struct SelectionPage {
    PanelText title;
    PanelText body;
    std::vector<TopicCard> topics;
};

// The last onboarding page: where to find the application, and whether it
// starts at login. The footer's button finishes onboarding.
struct LoginIntroPage {
    PanelText title;
    PanelText body;
    MenuBarIllustration illustration;
    // Drawn in a card.
    LoginBlock login;
};

// The choice of the panel's and the pond's language: following the system,
// then each practice language.
struct LanguagePage {
    struct Choice {
        // "system" or a practice language code.
        std::string code;
        PanelRow row;
    };

    std::vector<Choice> choices;
};

// The one-time hint, the guide opened from the settings, and the wilt
// explanation: a title, a body and a button to go on.
struct ExplanationPage {
    PanelText title;
    PanelText body;
    PanelButton understood;
};

// The settings, section by section from top to bottom. Each section but the
// footer is drawn in a card; rows within one card are parted by separators.
struct SettingsPage {
    struct Language {
        PanelText heading;
        PanelRow row;
    };
    struct Sounds {
        PanelText heading;
        PanelSwitchRow water;
        PanelSwitchRow bell;
    };
    struct Topics {
        PanelRow topics;
        PanelRow guide;
    };
    struct Reminder {
        PanelSwitchRow toggle;
        // Only while notifications are denied: opens the system's
        // notification settings.
        std::optional<PanelButton> openSettings;
        ReminderTimePicker time;
    };
    struct Privacy {
        // The link to the product's privacy page.
        struct Link {
            PanelIcon icon;
            PanelText label;
            std::string url;
            PanelAction open;
        };

        PanelIcon icon;
        PanelText title;
        PanelText body;
        Link link;
    };

    Language language;
    LoginBlock login;
    Sounds sounds;
    Topics topics;
    Reminder reminder;
    Privacy privacy;
    // The wordmark at the end, outside any card.
    PanelText footer;
};

// Everything the settings panel shows at one moment, top to bottom, for a
// toolkit to draw: the header, the step indicator, the page content in a
// scrolling area, the error line and the footer. It fills the space the host
// gives it, always in a dark colour scheme.
//
// A plain value built anew for each redraw; its actions call back into the
// view that built it.
struct PanelBody {
    using Page = std::variant<LoadErrorPage, WelcomePage, SelectionPage, LoginIntroPage, LanguagePage, ExplanationPage,
        SettingsPage>;

    Color background;
    // Of every text and icon that names no colour of its own.
    Color foreground;
    double baseFontSize = 15;
    PanelCardStyle card;

    PanelHeader header;
    std::optional<StepIndicator> steps;
    Page page;
    std::optional<PanelText> errorLine;
    std::optional<SelectionFooter> footer;
};

} // namespace velmora
