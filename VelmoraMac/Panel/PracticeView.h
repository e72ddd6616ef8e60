#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "PanelBody.h"
#include "PanelServices.h"
#include "PanelStyle.h"
#include "TimeOfDay.h"
#include "VelmoraCore/Instant.h"
#include "VelmoraCore/PracticeState.h"
#include "VelmoraMac/PracticeCoordinator.h"
#include "VelmoraMac/Subscription.h"
#include "VelmoraMac/WeakSelf.h"

namespace velmora {

// The settings panel's pages, independent of any widget toolkit: body()
// describes what the panel shows for the coordinator's current state, and
// every control is an operation here that the description's actions call.
// A toolkit only draws the description and passes the user's taps on.
//
// Nearly everything comes from the coordinator (`model`): its page, state,
// errors and login status. The view's own state is the working topic
// selection and the topic group shown while the selection page is open;
// both live as long as the view, so leaving the selection page by back,
// cancel or close and returning by other means shows them as they were.
//
// Main thread only.
class PracticeView {
public:
    using Callback = std::function<void()>;
    // Points at one of the state's switches, such as
    // &PracticeState::waterSoundEnabled.
    using StateSwitch = bool PracticeState::*;

    // The topic groups the selection page steps through.
    static constexpr std::int64_t groupCount = 5;
    static constexpr std::string_view privacyURL = "https://velmora.app/privacy/";

    // Starts with an empty working selection on group 0. Throws
    // std::invalid_argument when the model or a service is missing.
    PracticeView(std::shared_ptr<PracticeCoordinator> model, PanelServices services);
    PracticeView(const PracticeView&) = delete;
    PracticeView& operator=(const PracticeView&) = delete;
    PracticeView(PracticeView&&) = delete;
    PracticeView& operator=(PracticeView&&) = delete;
    ~PracticeView() = default;

    [[nodiscard]] PracticeCoordinator& model() const { return *m_model; }
    [[nodiscard]] const PracticeState::StringSet& selected() const { return m_selected; }
    [[nodiscard]] std::int64_t group() const { return m_group; }
    // True on "welcome", "selection" and "loginIntro".
    [[nodiscard]] bool onboarding() const;

    // Called whenever something the panel shows changes. The coordinator
    // announces a change just before making it, so the callback must not
    // draw at once: it should draw body() once the current call is over,
    // such as on the next turn of the main loop.
    void setOnNeedsDisplay(Callback callback) { m_onNeedsDisplay = std::move(callback); }

    [[nodiscard]] PanelBody body() const;

    // The first call fills the working selection from the saved one and
    // reads the login-item status; later calls do nothing.
    void appear();
    // The user may have changed the login item in the system settings
    // meanwhile.
    void applicationDidBecomeActive();

    // The header.
    void back();
    void cancel();
    void close();

    // The footer's button: begin, next, save or enter the pond, on the
    // onboarding pages while the state is loaded and the button is enabled.
    void advance();
    // False only on the last selection step with nothing chosen.
    [[nodiscard]] bool advanceEnabled() const;
    // A topic card: in or out of the working selection; nothing is saved.
    void toggleTopic(std::string_view topicID);

    // The load-error page.
    void retry();
    // The explanation page's button.
    void understood();
    // A row of the language page; the page closes only when the choice was
    // saved.
    void chooseLanguage(const std::string& code);

    // The settings page.
    void openLanguage();
    void openTopics();
    void openGuide();
    [[nodiscard]] bool stateBool(StateSwitch field) const;
    // Saves at once; false when the change could not be saved.
    bool setStateBool(StateSwitch field, bool value);
    void setLoginLaunch(bool enabled);
    void openLoginItemsSettings();
    void setReminder(bool enabled);
    void openNotificationSettings();
    // Today at the reminder time, or now when that time cannot be formed.
    [[nodiscard]] Instant reminderTime() const;
    // Off while reminders are off, and while notifications are denied.
    [[nodiscard]] bool reminderTimeEnabled() const;
    // Saves the hour and minute of `picked` in the user's calendar; false
    // when the picker is disabled or the change could not be saved.
    bool setReminderTime(Instant picked);
    // Saves `time` as it is, for a picker that edits the hour and minute
    // themselves; false as above, and for a time outside the clock.
    bool setReminderTime(TimeOfDay time);
    void openPrivacyPolicy();

private:
    [[nodiscard]] std::string text(std::string_view key, std::optional<std::int64_t> count = std::nullopt) const;
    [[nodiscard]] std::string languageName(const std::string& code) const;
    void needsDisplay() const;
    void enterSelection();

    template <typename Operation> [[nodiscard]] PanelAction bound(Operation operation) const;

    [[nodiscard]] PanelHeader header() const;
    [[nodiscard]] PanelBody::Page content() const;
    [[nodiscard]] SelectionFooter footer() const;
    [[nodiscard]] WelcomePage welcomePage() const;
    [[nodiscard]] SelectionPage selectionPage() const;
    [[nodiscard]] LoginIntroPage loginIntroPage() const;
    [[nodiscard]] LanguagePage languagePage() const;
    [[nodiscard]] ExplanationPage explanationPage() const;
    [[nodiscard]] SettingsPage settingsPage() const;
    [[nodiscard]] LoginBlock loginBlock() const;
    [[nodiscard]] PanelRow row(std::string_view iconName, std::string title, std::optional<std::string> subtitle,
        std::string_view trailing, PanelAction action) const;
    // A warning shows in the body's colour.
    enum class Warning : std::uint8_t {
        none,
        shown,
    };
    [[nodiscard]] PanelSwitchRow switchRow(
        std::string title, std::string body, bool isOn, Warning warning, PanelAction toggle) const;
    [[nodiscard]] PanelSwitchRow stateSwitchRow(std::string_view title, std::string_view body, StateSwitch field) const;
    [[nodiscard]] PanelIcon icon(std::string_view name, double size, std::string_view colorKey) const;

    std::shared_ptr<PracticeCoordinator> m_model;
    PanelServices m_services;
    PanelStyle m_style;
    PracticeState::StringSet m_selected;
    std::int64_t m_group = 0;
    bool m_appeared = false;
    Callback m_onNeedsDisplay;
    std::vector<Subscription> m_subscriptions;
    WeakSelf<PracticeView> m_weakSelf{this};
};

} // namespace velmora
