// What the panel shows for the coordinator's current state. Texts and icons
// whose colour or size the style leaves open take the panel's foreground
// ("paper") and base size.

#include <cstddef>
#include <utility>

#include "PracticeView.h"
#include "TimeOfDay.h"

namespace velmora {

namespace {

constexpr double baseSize = 15;
constexpr double rowTitleSize = 16;
constexpr double bodySize = 14;
constexpr double headingSize = 20;
constexpr double rowIconSize = 24;
constexpr double headerHitSize = 44;
constexpr double lineSpacing = 5;

PanelText serif(PanelText text)
{
    text.design = PanelText::Design::serif;
    return text;
}

PanelText centered(PanelText text)
{
    text.alignment = PanelText::Alignment::center;
    return text;
}

PanelText spaced(PanelText text)
{
    text.lineSpacing = lineSpacing;
    return text;
}

// The entry at the resolved language's position, or empty when a topic has
// fewer entries than there are languages.
std::string atLanguage(const std::vector<std::string>& entries, std::size_t index)
{
    return index < entries.size() ? entries[index] : std::string();
}

} // namespace

// Actions keep the view weakly: a toolkit may hold on to a description after
// the view is gone.
template <typename Operation> PanelAction PracticeView::bound(Operation operation) const
{
    return [weak = m_weakSelf.weak(), operation = std::move(operation)] {
        if (PracticeView* view = WeakSelf<PracticeView>::lock(weak))
            operation(*view);
    };
}

PanelIcon PracticeView::icon(std::string_view name, double size, std::string_view colorKey) const
{
    return m_style.icon(name, size, m_style.color(colorKey));
}

PanelBody PracticeView::body() const
{
    const PracticeState& state = m_model->state().get();
    const bool loadFailed = m_model->loadFailed().get();

    PanelBody body;
    // The pond shows through once there is one to see.
    body.background = m_style.color("ink").withOpacity(state.onboarded && !loadFailed ? 0.8 : 1.0);
    body.foreground = m_style.color("paper");
    body.baseFontSize = baseSize;
    body.card = m_style.card();
    body.header = header();
    if (m_model->page().get() == "selection")
        body.steps = m_style.steps(m_group, groupCount);
    body.page = content();
    if (const auto& error = m_model->errorText().get(); error && !loadFailed)
        body.errorLine = PanelText::plain(*error, bodySize, PanelStyle::errorRed());
    if (onboarding() && !loadFailed)
        body.footer = footer();
    return body;
}

PanelHeader PracticeView::header() const
{
    const std::string& page = m_model->page().get();
    const Color paper = m_style.color("paper");
    PanelHeader header;

    if (onboarding()) {
        header.title = serif(PanelText::plain("velmora", 22, paper));
        header.title.style = PanelText::Style::italic;
        header.title.tracking = 1.5;
    } else {
        header.title = PanelText::plain(text(page == "language" ? "language" : "settings"), 22, paper);
        header.title.accessibilityIdentifier = "settings.heading";
    }

    if (page == "selection" || page == "language" || page == "guide") {
        PanelButton back;
        back.kind = PanelButton::Kind::icon;
        back.icon = icon("back", rowIconSize, "paper");
        back.hitSize = headerHitSize;
        back.accessibilityLabel = text("back");
        back.action = bound([](PracticeView& view) { view.back(); });
        header.back = std::move(back);
    }
    if (page == "selection" && m_model->state().get().onboarded)
        header.cancel = m_style.textButton(text("cancel"), baseSize, bound([](PracticeView& view) { view.cancel(); }));

    header.close.kind = PanelButton::Kind::icon;
    header.close.icon = icon("close", rowIconSize, "paper");
    header.close.hitSize = headerHitSize;
    header.close.accessibilityLabel = text("close");
    header.close.accessibilityIdentifier = "settings.close";
    header.close.action = bound([](PracticeView& view) { view.close(); });
    return header;
}

PanelBody::Page PracticeView::content() const
{
    if (m_model->loadFailed().get()) {
        return LoadErrorPage{
            PanelText::plain(text("loadError"), baseSize, m_style.color("paper")),
            m_style.primary(text("retry"), bound([](PracticeView& view) { view.retry(); })),
        };
    }
    const std::string& page = m_model->page().get();
    if (page == "welcome")
        return welcomePage();
    if (page == "selection")
        return selectionPage();
    if (page == "loginIntro")
        return loginIntroPage();
    if (page == "language")
        return languagePage();
    if (page == "hint" || page == "wilt" || page == "guide")
        return explanationPage();
    return settingsPage();
}

SelectionFooter PracticeView::footer() const
{
    const std::string& page = m_model->page().get();
    const auto count = static_cast<std::int64_t>(m_selected.size());
    const bool lastStep = m_group >= groupCount - 1;
    SelectionFooter footer;

    if (page == "selection") {
        const char* key = lastStep && m_selected.empty() ? "chooseOne" : "selected";
        footer.counter = PanelText::plain(text(key, count), baseSize, m_style.color("muted"));
    }

    std::string label;
    if (page == "welcome")
        label = text("begin");
    else if (page == "loginIntro")
        label = text("enterPond");
    else
        label = text(lastStep && m_model->state().get().onboarded ? "save" : "next");
    footer.primary = m_style.primary(std::move(label), bound([](PracticeView& view) { view.advance(); }));
    footer.primary.enabled = advanceEnabled();
    return footer;
}

WelcomePage PracticeView::welcomePage() const
{
    const Color paper = m_style.color("paper");
    return WelcomePage{
        .lotus = icon("lotus", 68, "gold"),
        .title = centered(serif(PanelText::plain(text("welcomeTitle"), 37, paper))),
        .body = PanelText::plain(text("welcomeBody"), 17, paper),
        .foot = PanelText::plain(text("welcomeFoot"), baseSize, m_style.color("muted")),
        .privacyIcon = icon("lock", 18, "paper"),
        .privacy = PanelText::plain(text("privacy"), 13, paper),
    };
}

SelectionPage PracticeView::selectionPage() const
{
    const Color paper = m_style.color("paper");
    const Color muted = m_style.color("muted");
    const std::size_t language = m_model->languageIndex();
    SelectionPage page;
    page.title = PanelText::plain(m_model->catalog().group(m_group, m_model->resolvedLanguage()), 29, paper);
    page.body = PanelText::plain(text(m_group == groupCount - 1 ? "poisonsBody" : "selectionBody"), baseSize, paper);

    for (const Topic& topic : m_model->catalog().topics()) {
        if (topic.group != m_group)
            continue;
        const bool chosen = m_selected.contains(topic.id);
        TopicCard card;
        card.topicID = topic.id;
        card.selected = chosen;
        if (const PanelImage& image = m_style.topicImage(topic.id); !image.empty())
            card.icon = PanelIcon{topic.id, image, 32, chosen ? Color::mobileHex(topic.color) : muted};
        card.name = PanelText::plain(atLanguage(topic.names, language), rowTitleSize, paper);
        card.description = spaced(PanelText::plain(atLanguage(topic.descriptions, language), 13, muted));
        card.check = chosen ? icon("checked", rowIconSize, "primary") : icon("unchecked", rowIconSize, "muted");
        card.background = chosen ? PanelStyle::selectedTopicBackground() : PanelStyle::topicBackground();
        card.toggle = bound([id = topic.id](PracticeView& view) { view.toggleTopic(id); });
        page.topics.push_back(std::move(card));
    }
    return page;
}

LoginIntroPage PracticeView::loginIntroPage() const
{
    const Color paper = m_style.color("paper");
    const Color muted = m_style.color("muted");
    return LoginIntroPage{
        .title = PanelText::plain(text("menuWelcome"), 29, paper),
        .body = PanelText::plain(text("menuFind"), 17, paper),
        .illustration = MenuBarIllustration{
            .network = icon("wifi", 14, "muted"),
            .lotus = icon("lotus", 22, "paper"),
            .lotusBackground = paper.withOpacity(0.12),
            .lotusCornerRadius = 6,
            .name = PanelText::plain("Velmora", 13, muted),
            .time = PanelText::plain("12:00", 13, muted),
        },
        .login = loginBlock(),
    };
}

LanguagePage PracticeView::languagePage() const
{
    const std::string& current = m_model->state().get().language;
    std::vector<std::string> codes{"system"};
    const auto& languages = PracticeState::languages();
    codes.insert(codes.end(), languages.begin(), languages.end());

    LanguagePage page;
    for (const std::string& code : codes) {
        PanelRow row;
        row.title = PanelText::plain(languageName(code), rowTitleSize, m_style.color("paper"));
        row.trailing
            = code == current ? icon("checked", rowIconSize, "primary") : icon("unchecked", rowIconSize, "muted");
        row.action = bound([code](PracticeView& view) { view.chooseLanguage(code); });
        page.choices.push_back({code, std::move(row)});
    }
    return page;
}

ExplanationPage PracticeView::explanationPage() const
{
    const Color paper = m_style.color("paper");
    const bool wilt = m_model->page().get() == "wilt";
    return ExplanationPage{
        .title = serif(PanelText::plain(text(wilt ? "wiltTitle" : "hintTitle"), 29, paper)),
        .body = PanelText::plain(text(wilt ? "wiltBody" : "hintBody"), 17, paper),
        .understood = m_style.primary(text("understood"), bound([](PracticeView& view) { view.understood(); })),
    };
}

SettingsPage PracticeView::settingsPage() const
{
    const PracticeState& state = m_model->state().get();
    const bool denied = m_model->reminderPermissionDenied().get();
    const Color paper = m_style.color("paper");
    const Color muted = m_style.color("muted");
    SettingsPage page;

    page.language.heading = PanelText::plain(text("language"), headingSize, paper);
    page.language.row = row("language", text("language"), languageName(state.language), "expand",
        bound([](PracticeView& view) { view.openLanguage(); }));

    page.login = loginBlock();

    page.sounds.heading = PanelText::plain(text("sounds"), headingSize, paper);
    page.sounds.water = stateSwitchRow("waterSound", "waterSoundBody", &PracticeState::waterSoundEnabled);
    page.sounds.bell = stateSwitchRow("bellSound", "bellSoundBody", &PracticeState::bellSoundEnabled);

    page.topics.topics = row(
        "lotus", text("topicsTitle"), text("retained"), "next", bound([](PracticeView& view) { view.openTopics(); }));
    page.topics.guide
        = row("guide", text("guide"), std::nullopt, "next", bound([](PracticeView& view) { view.openGuide(); }));

    page.reminder.toggle = switchRow(text("reminder"), text(denied ? "permissionDenied" : "reminderBody"),
        state.reminderEnabled, denied ? Warning::shown : Warning::none,
        bound([](PracticeView& view) { view.setReminder(!view.model().state().get().reminderEnabled); }));
    page.reminder.toggle.accessibilityIdentifier = "reminder.toggle";
    if (denied) {
        PanelButton button = m_style.textButton(
            text("notificationSettings"), baseSize, bound([](PracticeView& view) { view.openNotificationSettings(); }));
        button.accessibilityIdentifier = "reminder.openSettings";
        page.reminder.openSettings = std::move(button);
    }
    ReminderTimePicker& picker = page.reminder.time;
    picker.label = PanelText::plain(text("time"), baseSize, paper);
    picker.date = reminderTime();
    picker.hour = state.reminderHour;
    picker.minute = state.reminderMinute;
    picker.tint = m_style.color("gold");
    picker.enabled = reminderTimeEnabled();
    picker.pickTime = [weak = m_weakSelf.weak()](TimeOfDay time) {
        if (PracticeView* view = WeakSelf<PracticeView>::lock(weak))
            view->setReminderTime(time);
    };
    picker.pick = [weak = m_weakSelf.weak()](Instant picked) {
        if (PracticeView* view = WeakSelf<PracticeView>::lock(weak))
            view->setReminderTime(picked);
    };

    page.privacy.icon = icon("lock", rowIconSize, "gold");
    page.privacy.title = PanelText::plain(text("localOnly"), headingSize, paper);
    page.privacy.body = PanelText::plain(text("privacy"), baseSize, muted);
    page.privacy.link.icon = icon("privacy", 18, "paper");
    page.privacy.link.label = PanelText::plain(text("privacyPolicy"), baseSize, paper);
    page.privacy.link.url = std::string(privacyURL);
    page.privacy.link.open = bound([](PracticeView& view) { view.openPrivacyPolicy(); });

    page.footer = PanelText::plain("velmora", baseSize, muted);
    return page;
}

LoginBlock PracticeView::loginBlock() const
{
    LoginBlock block;
    block.toggle = switchRow(text("launchAtLogin"), text("launchAtLoginBody"), m_model->loginEnabled().get(),
        Warning::none, bound([](PracticeView& view) { view.setLoginLaunch(!view.model().loginEnabled().get()); }));
    if (m_model->loginRequiresApproval().get()) {
        block.approval = PanelText::plain(text("loginApproval"), bodySize, m_style.color("muted"));
        block.openSettings = m_style.textButton(
            text("loginSettings"), bodySize, bound([](PracticeView& view) { view.openLoginItemsSettings(); }));
    }
    if (const auto& error = m_model->loginError().get())
        block.error = PanelText::plain(*error, bodySize, m_style.color("paper"));
    return block;
}

PanelRow PracticeView::row(std::string_view iconName, std::string title, std::optional<std::string> subtitle,
    std::string_view trailing, PanelAction action) const
{
    PanelRow row;
    row.icon = icon(iconName, rowIconSize, "gold");
    row.title = PanelText::plain(std::move(title), rowTitleSize, m_style.color("paper"));
    if (subtitle)
        row.subtitle = spaced(PanelText::plain(std::move(*subtitle), baseSize, m_style.color("muted")));
    row.trailing = icon(trailing, rowIconSize, "muted");
    row.action = std::move(action);
    return row;
}

PanelSwitchRow PracticeView::switchRow(
    std::string title, std::string body, bool isOn, Warning warning, PanelAction toggle) const
{
    PanelSwitchRow row;
    row.title = PanelText::plain(std::move(title), rowTitleSize, m_style.color("paper"));
    row.body = PanelText::plain(std::move(body), bodySize, m_style.color(warning == Warning::shown ? "gold" : "muted"));
    row.stateWord = PanelText::plain(text(isOn ? "stateOn" : "stateOff"), baseSize, m_style.color("paper"));
    row.control = m_style.switchControl(isOn);
    row.toggle = std::move(toggle);
    return row;
}

PanelSwitchRow PracticeView::stateSwitchRow(std::string_view title, std::string_view body, StateSwitch field) const
{
    return switchRow(text(title), text(body), stateBool(field), Warning::none,
        bound([field](PracticeView& view) { view.setStateBool(field, !view.stateBool(field)); }));
}

} // namespace velmora
