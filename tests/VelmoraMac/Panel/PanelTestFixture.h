#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "VelmoraMac/Panel/PracticeView.h"
#include "VelmoraMac/Platform/Headless/HeadlessLoginItemService.h"
#include "VelmoraMac/Platform/Headless/HeadlessSystemEnvironment.h"
#include "VelmoraMac/Platform/Headless/HeadlessUrlOpener.h"
#include "VelmoraMac/PracticeCoordinator.h"
#include "tests/VelmoraCore/CoreTestSupport.h"
#include "tests/VelmoraCore/TemporaryFolder.h"
#include "tests/VelmoraMac/CoordinatorTestDoubles.h"

namespace velmora::test {

// The content file exactly as the library ships it, as JSON to change a copy
// of.
inline nlohmann::json shippedContentDocument()
{
    return nlohmann::json::parse(fileBytes(std::filesystem::path(VELMORA_CONTENT_RESOURCE)));
}

// A panel over a real coordinator and store in a temporary folder, with the
// shipped content, an English-speaking user in Helsinki, and the host's
// callbacks counted.
class PanelTest : public testing::Test {
protected:
    PanelTest()
    {
        m_system->setPreferredLanguages({"en_GB"});
        m_system->setCalendar(UserCalendar::inTimeZone("Europe/Helsinki"));
        m_system->setNow(utc(2025, 3, 14, 22, 30)); // 00:30 on the 15th in Helsinki
        rebuild();
    }

    // A coordinator and a fresh view over the file as it now is.
    void rebuild(const nlohmann::json& content = shippedContentDocument())
    {
        // The old coordinator lets go of the shared reminders when it goes,
        // so it must go before the new one takes them.
        m_view.reset();
        m_coordinator.reset();
        m_coordinator = std::make_shared<PracticeCoordinator>(
            std::make_shared<const ContentCatalog>(ContentCatalog::fromJSON(content.dump())),
            std::make_unique<PracticeStore>(url()), m_login, m_reminders, [this] { ++m_notificationSettingsOpened; },
            m_system);
        m_coordinator->setOnEnterPond([this] { ++m_pondEntered; });
        m_view = std::make_unique<PracticeView>(m_coordinator, PanelServices{m_urlOpener, m_loginItems, m_system});
    }

    // Starts as the host does: load, then the panel appears.
    void start(const std::optional<PracticeState>& stored = std::nullopt)
    {
        if (stored)
            saveBeforeStart(*stored);
        rebuild();
        m_coordinator->load();
        m_view->appear();
    }

    [[nodiscard]] std::filesystem::path url() const { return m_folder / "app.velmora.mac" / "practice.json"; }

    void saveBeforeStart(const PracticeState& state) const
    {
        std::filesystem::create_directories(url().parent_path());
        writeFileBytes(url(), state.toJSON());
    }

    [[nodiscard]] PracticeState savedState() const { return PracticeState::fromJSON(fileBytes(url())); }

    [[nodiscard]] std::string text(std::string_view key, std::optional<std::int64_t> count = std::nullopt) const
    {
        return m_coordinator->text(key, count);
    }

    [[nodiscard]] PracticeView& view() { return *m_view; }
    [[nodiscard]] PracticeCoordinator& model() { return *m_coordinator; }
    [[nodiscard]] const std::string& page() const { return m_coordinator->page().get(); }
    [[nodiscard]] const PracticeState& state() const { return m_coordinator->state().get(); }

    TemporaryFolder m_folder;
    std::shared_ptr<RecordingReminders> m_reminders = std::make_shared<RecordingReminders>();
    std::shared_ptr<FakeLoginLaunch> m_login = std::make_shared<FakeLoginLaunch>();
    std::shared_ptr<HeadlessSystemEnvironment> m_system = std::make_shared<HeadlessSystemEnvironment>();
    std::shared_ptr<HeadlessLoginItemService> m_loginItems = std::make_shared<HeadlessLoginItemService>();
    std::shared_ptr<HeadlessUrlOpener> m_urlOpener = std::make_shared<HeadlessUrlOpener>();
    std::shared_ptr<PracticeCoordinator> m_coordinator;
    std::unique_ptr<PracticeView> m_view;
    int m_pondEntered = 0;
    int m_notificationSettingsOpened = 0;
};

// The page the body shows, failing the test when it shows another.
template <typename Page> const Page& shownPage(const PanelBody& body)
{
    const Page* shown = std::get_if<Page>(&body.page);
    if (shown == nullptr)
        throw std::logic_error("the panel shows another page");
    return *shown;
}

// Uses a control as a user would: through the action the body hands out.
inline void tap(const PanelAction& action)
{
    ASSERT_TRUE(action);
    action();
}

inline PracticeState onboardedState(PracticeState::StringSet selected = {"phone"})
{
    PracticeState state;
    state.onboarded = true;
    state.hintSeen = true;
    state.selected = std::move(selected);
    return state;
}

} // namespace velmora::test
