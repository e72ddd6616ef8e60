#pragma once

#include <optional>
#include <string>

#include "LoginBlock.h"
#include "PanelButton.h"
#include "PanelIcon.h"
#include "PanelRow.h"
#include "PanelSwitchRow.h"
#include "PanelText.h"
#include "ReminderTimePicker.h"

namespace velmora {

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

} // namespace velmora
