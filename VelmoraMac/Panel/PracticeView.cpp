#include "PracticeView.h"

#include <stdexcept>
#include <utility>

#include "TimeOfDay.h"

namespace velmora {

namespace {

std::shared_ptr<PracticeCoordinator> checked(std::shared_ptr<PracticeCoordinator> model, const PanelServices& services)
{
    if (!model || !services.urlOpener || !services.loginItems || !services.system)
        throw std::invalid_argument("the panel needs its model and every one of its services");
    return model;
}

} // namespace

PracticeView::PracticeView(std::shared_ptr<PracticeCoordinator> model, PanelServices services)
    : m_model(checked(std::move(model), services))
    , m_services(std::move(services))
    , m_style(m_model->catalog())
{
    const auto redraw = [this](const auto& /*upcoming*/) { needsDisplay(); };
    const PracticeCoordinator& observed = *m_model;
    m_subscriptions.push_back(observed.page().observe(redraw));
    m_subscriptions.push_back(observed.state().observe(redraw));
    m_subscriptions.push_back(observed.loadFailed().observe(redraw));
    m_subscriptions.push_back(observed.errorText().observe(redraw));
    m_subscriptions.push_back(observed.loginEnabled().observe(redraw));
    m_subscriptions.push_back(observed.loginRequiresApproval().observe(redraw));
    m_subscriptions.push_back(observed.loginError().observe(redraw));
    m_subscriptions.push_back(observed.reminderPermissionDenied().observe(redraw));
}

bool PracticeView::onboarding() const
{
    const std::string& page = m_model->page().get();
    return page == "welcome" || page == "selection" || page == "loginIntro";
}

void PracticeView::needsDisplay() const
{
    if (m_onNeedsDisplay)
        m_onNeedsDisplay();
}

std::string PracticeView::text(std::string_view key, std::optional<std::int64_t> count) const
{
    return m_model->text(key, count);
}

std::string PracticeView::languageName(const std::string& code) const
{
    if (code == "system")
        return text("systemLanguage");
    const auto& names = m_model->catalog().languages();
    const auto found = names.find(code);
    return found == names.end() ? code : found->second;
}

void PracticeView::appear()
{
    if (std::exchange(m_appeared, true))
        return;
    m_selected = m_model->state().get().selected;
    needsDisplay();
    m_model->refreshLoginLaunch();
}

void PracticeView::applicationDidBecomeActive()
{
    m_model->refreshLoginLaunch();
}

void PracticeView::back()
{
    if (m_model->page().get() != "selection") {
        m_model->setPage("settings");
        return;
    }
    if (m_group >= 1) {
        --m_group;
        needsDisplay();
        return;
    }
    m_model->setPage(m_model->state().get().onboarded ? "settings" : "welcome");
}

void PracticeView::cancel()
{
    // The working selection stays as it is for the next visit by back.
    m_model->setPage("settings");
}

void PracticeView::close()
{
    // A copy: the host may install another callback while this one runs.
    if (const PracticeCoordinator::Callback enterPond = m_model->onEnterPond())
        enterPond();
}

void PracticeView::enterSelection()
{
    m_selected = m_model->state().get().selected;
    m_group = 0;
    needsDisplay();
    m_model->setPage("selection");
}

bool PracticeView::advanceEnabled() const
{
    return !(m_model->page().get() == "selection" && m_group == groupCount - 1 && m_selected.empty());
}

void PracticeView::advance()
{
    if (!onboarding() || m_model->loadFailed().get() || !advanceEnabled())
        return;
    const std::string& page = m_model->page().get();
    if (page == "welcome") {
        enterSelection();
    } else if (page == "loginIntro") {
        m_model->finishLoginIntro();
    } else if (m_group >= groupCount - 1) {
        m_model->select(m_selected);
    } else {
        ++m_group;
        needsDisplay();
    }
}

void PracticeView::toggleTopic(std::string_view topicID)
{
    if (const auto found = m_selected.find(topicID); found != m_selected.end())
        m_selected.erase(found);
    else
        m_selected.emplace(topicID);
    needsDisplay();
}

void PracticeView::retry()
{
    m_model->load();
}

void PracticeView::understood()
{
    if (m_model->page().get() == "guide")
        m_model->setPage("settings");
    else
        m_model->dismissExplanation();
}

void PracticeView::chooseLanguage(const std::string& code)
{
    const bool saved = m_model->change([&code](PracticeState state) {
        state.language = code;
        return state;
    });
    if (saved)
        m_model->setPage("settings");
}

void PracticeView::openLanguage()
{
    m_model->setPage("language");
}

void PracticeView::openTopics()
{
    enterSelection();
}

void PracticeView::openGuide()
{
    m_model->setPage("guide");
}

bool PracticeView::stateBool(StateSwitch field) const
{
    return m_model->state().get().*field;
}

bool PracticeView::setStateBool(StateSwitch field, bool value)
{
    return m_model->change([field, value](PracticeState state) {
        state.*field = value;
        return state;
    });
}

void PracticeView::setLoginLaunch(bool enabled)
{
    m_model->setLoginLaunch(enabled);
}

void PracticeView::openLoginItemsSettings()
{
    m_services.loginItems->openLoginItemsSettings();
}

void PracticeView::setReminder(bool enabled)
{
    m_model->setReminder(enabled);
}

void PracticeView::openNotificationSettings()
{
    m_model->openNotificationSettings();
}

Instant PracticeView::reminderTime() const
{
    const PracticeState& state = m_model->state().get();
    const Instant now = m_services.system->now();
    return TimeOfDay{state.reminderHour, state.reminderMinute}
        .on(now, m_services.system->currentCalendar())
        .value_or(now);
}

bool PracticeView::reminderTimeEnabled() const
{
    return m_model->state().get().reminderEnabled && !m_model->reminderPermissionDenied().get();
}

bool PracticeView::setReminderTime(Instant picked)
{
    const std::optional<TimeOfDay> time = TimeOfDay::of(picked, m_services.system->currentCalendar());
    return time && setReminderTime(*time);
}

bool PracticeView::setReminderTime(TimeOfDay time)
{
    if (!reminderTimeEnabled() || !time.isOnTheClock())
        return false;
    return m_model->change([time](PracticeState state) {
        state.reminderHour = time.hour;
        state.reminderMinute = time.minute;
        return state;
    });
}

void PracticeView::openPrivacyPolicy()
{
    m_services.urlOpener->openURL(std::string(privacyURL));
}

} // namespace velmora
