#pragma once

#include <array>
#include <functional>
#include <string>

#include "VelmoraCore/Point.h"
#include "VelmoraCore/Rect.h"
#include "VelmoraCore/Size.h"
#include "VelmoraMac/ContentCatalog.h"
#include "VelmoraMac/Panel/Color.h"
#include "VelmoraMac/Panel/PanelImage.h"
#include "VelmoraMac/Platform/ContentView.h"

namespace velmora {

// The overlay on the pond: shaded top and bottom edges, the wordmark at the
// top left, the settings gear at the top right and the count of practice
// days along the bottom. Only the gear takes clicks; everything else on it
// belongs to the renderer's view underneath.
//
// Without a toolkit of its own it holds what a toolkit draws: the texts,
// the gear's image and label, the look as constants, the layout rules as
// data resolved by layout(), and the two shade bands (shades()).
// Coordinates are flipped: y grows downwards from the top edge.
// Main thread only.
class PondChromeView final : public OverlayView {
public:
    using Action = std::function<void()>;

    // The shade's colour, at the opacities of the bands below.
    static constexpr Color shadeColor{14.0 / 255, 36.0 / 255, 34.0 / 255, 1};
    static constexpr double topShadeOpacity = 0.7;
    static constexpr double topShadeHeight = 120;
    static constexpr double bottomShadeOpacity = 0.4;
    static constexpr double bottomShadeHeight = 100;

    static constexpr const char* wordmarkText = "velmora";
    static constexpr const char* wordmarkFont = "TimesNewRomanPS-ItalicMT";
    static constexpr double wordmarkFontSize = 28;
    static constexpr Color wordmarkColor{243.0 / 255, 235.0 / 255, 217.0 / 255, 1};
    static constexpr double wordmarkKerning = 1.5;

    static constexpr double daysFontSize = 13;
    static constexpr Color daysColor{217.0 / 255, 197.0 / 255, 154.0 / 255, 0.45};

    static constexpr Size gearImageSize{22, 22};
    static constexpr double gearSize = 48;
    static constexpr Color gearTint{0.96, 0.95, 0.88, 0.35};

    // The layout's distances: from the view's edges, and between the
    // wordmark and the gear.
    static constexpr double wordmarkTop = 16;
    static constexpr double wordmarkLeading = 26;
    static constexpr double wordmarkGearSpacing = 12;
    static constexpr double gearTrailing = 18;
    static constexpr double daysBottom = 18;
    static constexpr double daysSideMargin = 24;

    // What the chrome assumes of its texts until the toolkit that draws them
    // measures them: the wordmark in its font, one line of the days label.
    static constexpr Size estimatedWordmarkSize{104, 32};
    static constexpr double estimatedDaysLineHeight = 16;

    // Where each part lies for the view's current size.
    struct Layout {
        Rect wordmark;
        Rect days;
        Rect gear;

        friend bool operator==(const Layout&, const Layout&) = default;
    };

    // A band of shade, drawn from `start` to `end` with the colour going
    // from `startColor` to `endColor`, not extended beyond either point.
    struct Shade {
        Point start;
        Point end;
        Color startColor;
        Color endColor;

        friend bool operator==(const Shade&, const Shade&) = default;
    };

    // The gear sends `action`; its icon is the catalog's "settings" icon,
    // or an empty image when that is missing or undecodable. The days line
    // starts empty.
    PondChromeView(const ContentCatalog& catalog, std::string settingsLabel, Action action);

    [[nodiscard]] const std::string& daysText() const { return m_daysText; }
    void setDaysText(std::string text) { m_daysText = std::move(text); }
    [[nodiscard]] const std::string& gearAccessibilityLabel() const { return m_gearAccessibilityLabel; }
    void setGearAccessibilityLabel(std::string label) { m_gearAccessibilityLabel = std::move(label); }
    [[nodiscard]] const PanelImage& gearImage() const { return m_gearImage; }

    void show() { m_hidden = false; }
    void hide() { m_hidden = true; }

    [[nodiscard]] Size size() const { return m_size; }
    // The texts' sizes as the drawing toolkit measures them.
    void setMeasuredTextSizes(Size wordmarkSize, double daysLineHeight);
    [[nodiscard]] Layout layout() const;
    // Top first: the bottom band is drawn over it where they meet.
    [[nodiscard]] std::array<Shade, 2> shades() const;

    void setSize(Size size) override { m_size = size; }
    [[nodiscard]] bool isHidden() const override { return m_hidden; }
    // Only inside the gear.
    [[nodiscard]] bool takesClick(Point point) const override;
    // Presses the gear.
    void click(Point point) override;

private:
    std::string m_daysText;
    std::string m_gearAccessibilityLabel;
    PanelImage m_gearImage;
    Action m_action;
    Size m_size;
    Size m_wordmarkSize = estimatedWordmarkSize;
    double m_daysLineHeight = estimatedDaysLineHeight;
    bool m_hidden = false;
};

} // namespace velmora
