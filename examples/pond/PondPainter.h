#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include <cairo.h>

#include "Owned.h"
#include "PondColor.h"
#include "PondController.h"
#include "PondLayout.h"
#include "PondSnapshot.h"

namespace pond {

// Paints the pond with Cairo: moving water, and for each topic a lotus in
// the topic's colour with its icon, title and a button to notice it.
//
// Everything that costs (text layout, icon decoding, the flowers' curves
// and gradients, the water's backdrop) is drawn once into cached surfaces
// when a snapshot arrives or a lotus changes size; a frame then blits
// those and strokes a few dozen short lines for the water. It lays out no
// text and makes no allocation of its own; Cairo's stroking and painting
// still allocate short-lived buffers inside each call.
//
// One thread only (the one that paints).
class PondPainter {
public:
    // `deviceScale`: device pixels per point of the surfaces painted on.
    explicit PondPainter(double deviceScale);

    // Takes the texts, icons and colours of a new snapshot. What an earlier
    // snapshot already had (a title, an icon, a label) is kept as it was
    // drawn, so a snapshot that changes a count costs next to nothing;
    // what no topic uses any more is let go.
    void setSnapshot(const PondSnapshot& snapshot);

    // Paints the whole view at `seconds`. `growth` holds each lotus's size
    // in moments as currently shown (it eases towards the snapshot's).
    void paint(cairo_t* cr, const PondLayout& layout, const PondController& controller, std::span<const double> growth,
        double seconds);

    [[nodiscard]] double deviceScale() const { return m_deviceScale; }

private:
    using Surface = Owned<cairo_surface_t, cairo_surface_destroy>;

    // A text drawn once as coverage, painted in any colour by masking.
    struct TextMask {
        std::string label;
        Surface surface;
        double width = 0;
        double height = 0;
    };

    // A flower on its leaf, drawn for one size.
    struct Sprite {
        Surface surface;
        // Where the flower's base lies in the surface, in points.
        double anchorX = 0;
        double anchorY = 0;
        // The half width and half height of the leaf, for the water rings.
        double leafX = 0;
        double leafY = 0;
        // What it was drawn for; a negative growth means never.
        double growth = -1;
        double scale = 0;
    };

    // Drawn texts by text, font and width; icons by their encoded image.
    // The art of the topics points into them: their entries keep their
    // place however the tables grow.
    using TextCache = std::unordered_map<std::string, TextMask>;
    using IconCache = std::unordered_map<std::string, Surface>;

    struct TopicArt {
        PondColor color;
        const TextMask* title = nullptr;
        // The topic's icon at label size, or a glyph when it has none.
        cairo_surface_t* icon = nullptr;
        const TextMask* glyph = nullptr;
        Sprite sprite;
    };

    // The drawn text from `kept` when an earlier snapshot had it, else drawn
    // now; either way it ends up in `into`.
    const TextMask& cachedText(
        TextCache& kept, TextCache& into, const std::string& text, const char* font, double maximumWidth) const;
    cairo_surface_t* cachedIcon(IconCache& kept, IconCache& into, const std::string& base64) const;
    [[nodiscard]] TextMask textMask(const std::string& text, const char* font, double maximumWidth) const;
    [[nodiscard]] Surface iconSurface(const std::string& base64, double size) const;
    [[nodiscard]] Sprite sprite(PondColor color, double growth, double scale) const;
    void ensureBackground(const PondLayout::Size& view);
    // `point` moved to the nearest device pixel: a surface painted there
    // is copied, not resampled, which costs a fraction.
    [[nodiscard]] double aligned(double point) const;
    void paintWater(cairo_t* cr, const PondLayout& layout, double pan, double seconds);
    void paintLotus(cairo_t* cr, const PondLayout& layout, const PondController& controller, std::size_t index,
        double growth, double seconds);
    void paintButton(
        cairo_t* cr, const PondController& controller, std::size_t index, double x, double y, double seconds) const;
    // The button as most lotuses show it, neither lit nor pressed nor
    // saved, drawn once for the label.
    void ensurePlainButton();
    // Each row of the water's glints, drawn once as a strip at four
    // quarter-pixel offsets, so that a frame masks through one strip a row
    // instead of stroking every glint.
    void ensureGlints(const PondLayout::Size& view);

    double m_deviceScale;
    TextCache m_texts;
    IconCache m_icons;
    std::vector<TopicArt> m_topics;
    const TextMask* m_notice = nullptr;
    const TextMask* m_saved = nullptr;
    Surface m_background;
    PondLayout::Size m_backgroundSize;
    // Two soft patches of light drifting over the water, drawn once.
    Surface m_light[2];
    Surface m_plainButton;
    std::string m_plainButtonLabel;
    double m_plainButtonWidth = 0;
    struct GlintRow {
        double y = 0; // where the masks are painted, on a device pixel
        double spacing = 0;
        double length = 0;
        double pad = 0;
        std::array<Surface, 4> masks;
    };
    std::vector<GlintRow> m_glints;
    PondLayout::Size m_glintsSize;
};

} // namespace pond
