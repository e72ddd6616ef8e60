#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "Color.h"
#include "PanelBody.h"
#include "PanelImage.h"
#include "VelmoraMac/ContentCatalog.h"
#include "VelmoraMac/Topic.h"

namespace velmora {

// The panel's look: the catalog's palette turned into colours, the icons
// decoded once, and the few styled pieces every page shares.
//
// Immutable once built; the catalog never changes while the library runs,
// so nothing is decoded again on a redraw.
class PanelStyle {
public:
    // Used for a palette key the catalog lacks, so that an incomplete
    // palette still gives a legible panel.
    static constexpr std::string_view fallbackColor = "#F3EBD9";

    explicit PanelStyle(const ContentCatalog& catalog);

    // The colour of palette `key`: its text through Color::mobileHex, or
    // fallbackColor's when the palette has no such key.
    static Color paletteColor(const ContentCatalog::StringMap& palette, std::string_view key);
    [[nodiscard]] Color color(std::string_view key) const;

    // The colours the palette does not change.
    static Color cardBackground() { return Color::mobileHex("#19312D"); }
    static Color selectedTopicBackground() { return Color::mobileHex("#2A4035"); }
    static Color topicBackground() { return Color::mobileHex("#172E2A"); }
    // The system's red in a dark colour scheme.
    static Color errorRed() { return Color{1.0, 69.0 / 255.0, 58.0 / 255.0, 1}; }

    // Interface icon `name` at `size` points in `tint`; an empty image when
    // the catalog has no such icon or its data is not an image.
    [[nodiscard]] PanelIcon icon(std::string_view name, double size, Color tint) const;
    // The topic's own icon, decoded from its data.
    [[nodiscard]] const PanelImage& topicImage(std::string_view topicID) const;

    [[nodiscard]] PanelCardStyle card() const;
    [[nodiscard]] PanelSwitch switchControl(bool isOn) const;
    // The main filled button of a page.
    [[nodiscard]] PanelButton primary(std::string label, PanelAction action) const;
    // A text button in the accent colour.
    [[nodiscard]] PanelButton textButton(std::string label, double size, PanelAction action) const;
    // Capsule `i` is filled for every i up to and including `group`.
    [[nodiscard]] StepIndicator steps(std::int64_t group, std::int64_t count) const;

private:
    ContentCatalog::StringMap m_palette;
    std::map<std::string, PanelImage, std::less<>> m_icons;
    std::map<std::string, PanelImage, std::less<>> m_topicImages;
};

} // namespace velmora
