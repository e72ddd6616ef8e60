#include "PondChromeView.h"

#include <algorithm>
#include <utility>

namespace velmora {

PondChromeView::PondChromeView(const ContentCatalog& catalog, std::string settingsLabel, Action action)
    : m_gearAccessibilityLabel(std::move(settingsLabel))
    , m_action(std::move(action))
{
    const auto& icons = catalog.uiIcons();
    if (const auto icon = icons.find("settings"); icon != icons.end())
        m_gearImage = PanelImage::fromBase64(icon->second);
}

void PondChromeView::setMeasuredTextSizes(Size wordmarkSize, double daysLineHeight)
{
    m_wordmarkSize = wordmarkSize;
    m_daysLineHeight = daysLineHeight;
}

PondChromeView::Layout PondChromeView::layout() const
{
    const double width = m_size.width;
    const double height = m_size.height;

    Layout layout;
    const double wordmarkCentre = wordmarkTop + m_wordmarkSize.height * 0.5;
    layout.gear = Rect(width - gearTrailing - gearSize, wordmarkCentre - gearSize * 0.5, gearSize, gearSize);
    // The wordmark gives way before it reaches under the gear.
    const double wordmarkRoom = std::max(0.0, layout.gear.minX() - wordmarkGearSpacing - wordmarkLeading);
    layout.wordmark
        = Rect(wordmarkLeading, wordmarkTop, std::min(m_wordmarkSize.width, wordmarkRoom), m_wordmarkSize.height);
    layout.days = Rect(daysSideMargin, height - daysBottom - m_daysLineHeight,
        std::max(0.0, width - 2 * daysSideMargin), m_daysLineHeight);
    return layout;
}

std::array<PondChromeView::Shade, 2> PondChromeView::shades() const
{
    const double height = m_size.height;
    return {
        Shade{{0, 0}, {0, topShadeHeight}, shadeColor.withOpacity(topShadeOpacity), shadeColor.withOpacity(0)},
        Shade{{0, height - bottomShadeHeight}, {0, height}, shadeColor.withOpacity(0),
            shadeColor.withOpacity(bottomShadeOpacity)},
    };
}

bool PondChromeView::takesClick(Point point) const
{
    return !m_hidden && layout().gear.contains(point);
}

void PondChromeView::click(Point point)
{
    if (!takesClick(point) || !m_action)
        return;
    // A copy: the action may replace the chrome.
    const Action action = m_action;
    action();
}

} // namespace velmora
