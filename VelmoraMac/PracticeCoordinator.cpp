#include "PracticeCoordinator.h"

#include <algorithm>
#include <exception>

namespace velmora {

std::size_t indexOfLanguage(std::string_view language)
{
    const auto& languages = PracticeState::languages();
    const auto found = std::find(languages.begin(), languages.end(), language);
    constexpr std::size_t english = 1;
    return found == languages.end() ? english : static_cast<std::size_t>(found - languages.begin());
}

PracticeCoordinator::PracticeCoordinator(std::shared_ptr<const ContentCatalog> catalog,
    std::unique_ptr<PracticeStore> store, std::shared_ptr<LoginLaunchControlling> loginLaunch,
    std::shared_ptr<ReminderScheduling> reminders, NotificationSettingsOpener notificationSettingsOpener,
    std::shared_ptr<SystemEnvironment> system)
    : m_catalog(std::move(catalog))
    , m_store(std::move(store))
    , m_reminders(std::move(reminders))
    , m_notificationSettingsOpener(std::move(notificationSettingsOpener))
    , m_loginLaunch(std::move(loginLaunch))
    , m_system(std::move(system))
{
    m_reminders->setOnPermissionDenied([weak = m_weakSelf.weak()](bool denied) {
        if (PracticeCoordinator* self = WeakSelf<PracticeCoordinator>::lock(weak))
            self->m_reminderPermissionDenied.set(denied);
    });
}

PracticeCoordinator::~PracticeCoordinator()
{
    // The scheduler may outlive us when someone else shares it.
    m_reminders->setOnPermissionDenied(nullptr);
}

std::string PracticeCoordinator::resolvedLanguage() const
{
    return PracticeState::resolvedLanguage(m_state.get().language, m_system->preferredLanguages());
}

std::size_t PracticeCoordinator::languageIndex() const
{
    return indexOfLanguage(resolvedLanguage());
}

std::string PracticeCoordinator::text(std::string_view key, std::optional<std::int64_t> count) const
{
    return m_catalog->text(key, resolvedLanguage(), count);
}

void PracticeCoordinator::openPanel() const
{
    if (m_onOpenPanel)
        m_onOpenPanel();
}

void PracticeCoordinator::load()
{
    std::shared_ptr<const PracticeState> loaded;
    try {
        loaded = m_store->load();
    } catch (const std::exception&) {
        // The reason stays with the file; the user is offered a retry.
        m_loadFailed.set(true);
        m_errorText.set(text("loadError"));
        return;
    }
    m_state.set(loaded);
    m_loadFailed.set(false);
    m_errorText.set(std::nullopt);
    if (loaded->onboarded)
        m_page.set("settings");
    else if (!loaded->selected.empty())
        m_page.set("loginIntro");
    else
        m_page.set("welcome");
    refresh();
}

void PracticeCoordinator::refresh()
{
    refresh(std::nullopt);
}

void PracticeCoordinator::refresh(std::optional<PondSnapshot> prepared)
{
    if (m_loadFailed.get())
        return;
    refreshLoginLaunch();
    if (m_state.get().onboarded) {
        if (!prepared) {
            try {
                prepared = snapshot();
            } catch (const std::exception&) {
                // The renderer keeps showing the previous snapshot.
            }
        }
        if (prepared && m_onSnapshot)
            m_onSnapshot(*prepared);
    }
    m_reminders->schedule(m_state.shared(), "velmora", text("dailyGentle"));
    if (m_onChromeChanged)
        m_onChromeChanged();
}

bool PracticeCoordinator::change(const Body& body)
{
    if (m_loadFailed.get())
        return false;
    std::shared_ptr<const PracticeState> changed;
    // Built while the write waits for the device, and published only once
    // the new state is in place.
    std::optional<PondSnapshot> prepared;
    const SnapshotMoment moment = snapshotMoment();
    (void)snapshotParts();
    const auto prepare = [this, &moment, &prepared](const PracticeState& upcoming) {
        if (!upcoming.onboarded)
            return;
        try {
            prepared = snapshotOf(upcoming, moment);
        } catch (const std::exception&) {
            // As in refresh(): no snapshot, the renderer keeps its last.
        }
    };
    try {
        changed = m_store->update(body, prepare);
    } catch (const std::exception&) {
        // Whatever failed, the state and the file are as they were; the
        // panel shows that the change was not saved.
        m_errorText.set(text("saveError"));
        openPanel();
        return false;
    }
    m_state.set(std::move(changed));
    m_errorText.set(std::nullopt);
    refresh(std::move(prepared));
    return true;
}

bool PracticeCoordinator::notice(std::string_view topicID)
{
    const std::string topic(topicID);
    return change([this, &topic](const PracticeState& state) {
        return state.notice(topic, m_system->now(), m_system->currentCalendar());
    });
}

void PracticeCoordinator::select(const PracticeState::StringSet& topics)
{
    if (topics.empty())
        return;
    const bool wasOnboarded = m_state.get().onboarded;
    const bool changed = change([&topics](PracticeState state) {
        state.selected = topics;
        return state;
    });
    if (!changed)
        return;
    if (wasOnboarded) {
        enter();
        return;
    }
    m_page.set("loginIntro");
    openPanel();
}

void PracticeCoordinator::enter()
{
    if (!m_state.get().hintSeen) {
        m_page.set("hint");
        openPanel();
        return;
    }
    if (m_onEnterPond)
        m_onEnterPond();
}

void PracticeCoordinator::finishLoginIntro()
{
    const bool changed = change([](PracticeState state) {
        state.onboarded = true;
        return state;
    });
    if (changed)
        enter();
}

void PracticeCoordinator::dismissExplanation()
{
    const bool changed = change([](PracticeState state) {
        state.hintSeen = true;
        return state;
    });
    if (changed)
        enter();
}

void PracticeCoordinator::setReminder(bool enabled)
{
    if (!enabled) {
        change([](PracticeState state) {
            state.reminderEnabled = false;
            return state;
        });
        return;
    }
    m_reminders->request([weak = m_weakSelf.weak()](bool granted) {
        PracticeCoordinator* self = WeakSelf<PracticeCoordinator>::lock(weak);
        if (self == nullptr)
            return;
        if (granted) {
            self->change([](PracticeState state) {
                state.reminderEnabled = true;
                return state;
            });
            return;
        }
        self->m_reminderPermissionDenied.set(true);
        if (self->m_errorText.get() == self->text("permissionDenied"))
            self->m_errorText.set(std::nullopt);
    });
}

void PracticeCoordinator::setLoginLaunch(bool enabled)
{
    try {
        m_loginLaunch->setEnabled(enabled);
        m_loginError.set(std::nullopt);
    } catch (const std::exception&) {
        // The system's reason is not for the user; the status is re-read below.
        m_loginError.set(text("loginError"));
    }
    refreshLoginLaunch();
}

void PracticeCoordinator::refreshLoginLaunch()
{
    m_loginEnabled.set(m_loginLaunch->enabled());
    m_loginRequiresApproval.set(m_loginLaunch->requiresApproval());
}

void PracticeCoordinator::openNotificationSettings() const
{
    if (m_notificationSettingsOpener)
        m_notificationSettingsOpener();
}

} // namespace velmora
