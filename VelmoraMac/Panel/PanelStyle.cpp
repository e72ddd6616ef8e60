#include "PanelStyle.h"

#include <utility>

namespace velmora {

PanelStyle::PanelStyle(const ContentCatalog& catalog)
    : m_palette(catalog.palette())
{
    for (const auto& [name, data] : catalog.uiIcons())
        m_icons.emplace(name, PanelImage::fromBase64(data));
    for (const Topic& topic : catalog.topics())
        m_topicImages.emplace(topic.id, PanelImage::fromBase64(topic.icon));
}

Color PanelStyle::paletteColor(const ContentCatalog::StringMap& palette, std::string_view key)
{
    const auto found = palette.find(key);
    return Color::mobileHex(found == palette.end() ? fallbackColor : std::string_view(found->second));
}

Color PanelStyle::color(std::string_view key) const
{
    return paletteColor(m_palette, key);
}

PanelIcon PanelStyle::icon(std::string_view name, double size, Color tint) const
{
    const auto found = m_icons.find(name);
    return PanelIcon{std::string(name), found == m_icons.end() ? PanelImage() : found->second, size, tint};
}

const PanelImage& PanelStyle::topicImage(std::string_view topicID) const
{
    static const PanelImage none;
    const auto found = m_topicImages.find(topicID);
    return found == m_topicImages.end() ? none : found->second;
}

PanelCardStyle PanelStyle::card() const
{
    const Color faintPaper = color("paper").withOpacity(0.07);
    return PanelCardStyle{cardBackground(), 24, faintPaper, 1, faintPaper, 1};
}

PanelSwitch PanelStyle::switchControl(bool isOn) const
{
    if (isOn)
        return PanelSwitch{true, color("primary"), std::nullopt, 0, color("onPrimary"), 24, 4, 32};
    return PanelSwitch{false, color("surfaceContainerHighest"), color("outline"), 2, color("outline"), 16, 8, 32};
}

PanelButton PanelStyle::primary(std::string label, PanelAction action) const
{
    PanelButton button;
    button.kind = PanelButton::Kind::primary;
    button.label = PanelText::plain(std::move(label), 16, color("onPrimary"));
    button.background = color("primary");
    button.cornerRadius = 18;
    button.minimumHeight = 54;
    button.action = std::move(action);
    return button;
}

PanelButton PanelStyle::textButton(std::string label, double size, PanelAction action) const
{
    PanelButton button;
    button.kind = PanelButton::Kind::text;
    button.label = PanelText::plain(std::move(label), size, color("gold"));
    button.action = std::move(action);
    return button;
}

StepIndicator PanelStyle::steps(std::int64_t group, std::int64_t count) const
{
    StepIndicator indicator;
    for (std::int64_t step = 0; step < count; ++step)
        indicator.steps.push_back(step <= group ? color("gold") : color("muted").withOpacity(0.15));
    return indicator;
}

} // namespace velmora
