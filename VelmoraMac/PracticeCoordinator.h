#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ContentCatalog.h"
#include "LoginLaunchControlling.h"
#include "PondSnapshot.h"
#include "Published.h"
#include "ReminderScheduling.h"
#include "VelmoraCore/PracticeState.h"
#include "VelmoraCore/PracticeStore.h"
#include "VelmoraMac/Platform/SystemEnvironment.h"
#include "WeakSelf.h"

namespace velmora {

// Position of `language` in PracticeState::languages(); that of "en" for a
// code outside the list.
std::size_t indexOfLanguage(std::string_view language);

// Owns the live practice state while the library runs. Every change of the
// state goes through change(), which saves through the store before anything
// is published, and then refresh() brings everything that depends on the
// state up to date: the pond's snapshot, the reminders and the pond's chrome.
// It also holds the panel's page, the error shown there and the launch-at-
// login status, as published properties the panel redraws from.
//
// Errors of the rules and the store are caught here and become localized
// texts and flags; nothing is retried automatically. While a load has failed
// no change is saved, so a file that could not be read is never overwritten.
//
// Main thread only.
class PracticeCoordinator {
public:
    using SnapshotCallback = std::function<void(const PondSnapshot& snapshot)>;
    using Callback = std::function<void()>;
    using NotificationSettingsOpener = std::function<void()>;
    using Body = PracticeStore::Change;

    PracticeCoordinator(std::shared_ptr<const ContentCatalog> catalog, std::unique_ptr<PracticeStore> store,
        std::shared_ptr<LoginLaunchControlling> loginLaunch, std::shared_ptr<ReminderScheduling> reminders,
        NotificationSettingsOpener notificationSettingsOpener, std::shared_ptr<SystemEnvironment> system);
    PracticeCoordinator(const PracticeCoordinator&) = delete;
    PracticeCoordinator& operator=(const PracticeCoordinator&) = delete;
    PracticeCoordinator(PracticeCoordinator&&) = delete;
    PracticeCoordinator& operator=(PracticeCoordinator&&) = delete;
    ~PracticeCoordinator();

    [[nodiscard]] const ContentCatalog& catalog() const { return *m_catalog; }
    [[nodiscard]] ReminderScheduling& reminders() const { return *m_reminders; }

    // Published properties.
    [[nodiscard]] const Published<bool>& loginEnabled() const { return m_loginEnabled; }
    [[nodiscard]] const Published<bool>& loginRequiresApproval() const { return m_loginRequiresApproval; }
    [[nodiscard]] const Published<std::optional<std::string>>& loginError() const { return m_loginError; }
    [[nodiscard]] const Published<PracticeState>& state() const { return m_state; }
    [[nodiscard]] const Published<bool>& loadFailed() const { return m_loadFailed; }
    [[nodiscard]] const Published<bool>& reminderPermissionDenied() const { return m_reminderPermissionDenied; }
    [[nodiscard]] const Published<std::optional<std::string>>& errorText() const { return m_errorText; }
    [[nodiscard]] const Published<std::string>& page() const { return m_page; }

    // The panel moves between its own pages ("selection", "guide",
    // "language", "settings") itself.
    void setPage(std::string page) { m_page.set(std::move(page)); }
    void setErrorText(std::optional<std::string> text) { m_errorText.set(std::move(text)); }
    void setReminderPermissionDenied(bool denied) { m_reminderPermissionDenied.set(denied); }

    // Installed by the host.
    void setOnSnapshot(SnapshotCallback callback) { m_onSnapshot = std::move(callback); }
    void setOnEnterPond(Callback callback) { m_onEnterPond = std::move(callback); }
    // The panel's close button calls it too.
    [[nodiscard]] const Callback& onEnterPond() const { return m_onEnterPond; }
    void setOnOpenPanel(Callback callback) { m_onOpenPanel = std::move(callback); }
    void setOnChromeChanged(Callback callback) { m_onChromeChanged = std::move(callback); }

    // Reads the state file, then chooses the page and refreshes; on failure
    // only sets loadFailed and the "loadError" text.
    void load();
    // Republishes everything that depends on the state; nothing after a
    // failed load.
    void refresh();
    // Saves `body`'s change through the store, then publishes and refreshes.
    // False, with the "saveError" text shown in the panel, when the body or
    // the save fails; false without a word while a load has failed.
    bool change(const Body& body);
    // One more moment noticed for `topicID`, now, in the user's calendar.
    bool notice(std::string_view topicID);

    // The topics chosen on the selection page; an empty choice is ignored.
    void select(const PracticeState::StringSet& topics);
    // Into the pond, or to the one-time hint first.
    void enter();
    void finishLoginIntro();
    void dismissExplanation();
    // Switching on asks for notification permission first.
    void setReminder(bool enabled);
    void setLoginLaunch(bool enabled);
    void refreshLoginLaunch();
    void openNotificationSettings() const;

    // The language every text is shown in, resolved anew at each use from
    // the stored choice and the system's preferred languages.
    [[nodiscard]] std::string resolvedLanguage() const;
    // Position of the resolved language in PracticeState::languages().
    [[nodiscard]] std::size_t languageIndex() const;
    // The text for `key` in the resolved language.
    [[nodiscard]] std::string text(std::string_view key, std::optional<std::int64_t> count = std::nullopt) const;

    // The pond's picture of the state as compact JSON, with its form for the
    // envelope. Throws the JSON library's error when it cannot be serialised.
    [[nodiscard]] PondSnapshot snapshot() const;

private:
    // The parts of the snapshot that only the catalog decides, encoded once.
    struct SnapshotParts;
    // What a snapshot takes from the system, read once on the main thread so
    // that the snapshot itself can be built on any.
    struct SnapshotMoment {
        Instant now;
        UserCalendar calendar;
        std::vector<std::string> preferredLanguages;
    };

    void openPanel() const;
    [[nodiscard]] SnapshotMoment snapshotMoment() const;
    // A pure function of its arguments and the catalog; any thread, once
    // the parts are built.
    [[nodiscard]] PondSnapshot snapshotOf(const PracticeState& state, const SnapshotMoment& moment) const;
    const SnapshotParts& snapshotParts() const;
    // `prepared` is the snapshot of the current state, when it was built
    // already.
    void refresh(std::optional<PondSnapshot> prepared);

    std::shared_ptr<const ContentCatalog> m_catalog;
    std::unique_ptr<PracticeStore> m_store;
    std::shared_ptr<ReminderScheduling> m_reminders;
    NotificationSettingsOpener m_notificationSettingsOpener;
    std::shared_ptr<LoginLaunchControlling> m_loginLaunch;
    std::shared_ptr<SystemEnvironment> m_system;

    Published<bool> m_loginEnabled{false};
    Published<bool> m_loginRequiresApproval{false};
    Published<std::optional<std::string>> m_loginError{std::nullopt};
    Published<PracticeState> m_state{PracticeState()};
    Published<bool> m_loadFailed{false};
    Published<bool> m_reminderPermissionDenied{false};
    Published<std::optional<std::string>> m_errorText{std::nullopt};
    Published<std::string> m_page{"welcome"};

    SnapshotCallback m_onSnapshot;
    // Built at the first snapshot; the catalog never changes.
    mutable std::shared_ptr<const SnapshotParts> m_snapshotParts;
    Callback m_onEnterPond;
    Callback m_onOpenPanel;
    Callback m_onChromeChanged;

    WeakSelf<PracticeCoordinator> m_weakSelf{this};
};

} // namespace velmora
