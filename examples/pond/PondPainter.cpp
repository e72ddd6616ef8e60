#include "PondPainter.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include <gdk-pixbuf/gdk-pixbuf.h>
#include <gdk/gdk.h>
#include <pango/pangocairo.h>

namespace pond {
namespace {

// The palette the library's own panel and chrome use, so the pond sits
// with them.
constexpr PondColor ink = PondColor::fromBytes(0x0E, 0x24, 0x22);
constexpr PondColor paper = PondColor::fromBytes(0xF3, 0xEB, 0xD9);
constexpr PondColor muted = PondColor::fromBytes(0xA9, 0xB8, 0xAD);
constexpr PondColor gold = PondColor::fromBytes(0xD9, 0xC5, 0x9A);
constexpr PondColor primary = PondColor::fromBytes(0x9E, 0xD3, 0xB4);
constexpr PondColor leafDeep = PondColor::fromBytes(0x17, 0x3F, 0x33);
constexpr PondColor leafLight = PondColor::fromBytes(0x3C, 0x73, 0x58);
constexpr PondColor waterTop = PondColor::fromBytes(0x1A, 0x47, 0x41);
constexpr PondColor waterMiddle = PondColor::fromBytes(0x10, 0x30, 0x2C);
constexpr PondColor waterBottom = PondColor::fromBytes(0x08, 0x1B, 0x19);

constexpr const char* titleFont = "Sans Semi-Bold 10.5";
constexpr const char* buttonFont = "Sans 9.5";
constexpr const char* glyphFont = "Sans Bold 9";
constexpr double titleWidth = 150;
constexpr double iconSize = 17;
constexpr double buttonHeight = 24;
// How long a noticed lotus shows that it was saved, and its ripple runs.
constexpr double savedSeconds = 1.8;
constexpr double rippleSeconds = 2.4;
constexpr double tau = 2 * std::numbers::pi;
constexpr int glintRows = 14;
// The shimmer along a row of glints: a wave of 2π / 0.013 points, drawn
// as a repeating gradient of this many steps.
constexpr double shimmerWavelength = tau / 0.013;
constexpr int shimmerStops = 8;

void setColor(cairo_t* cr, PondColor color, double alpha = 1)
{
    cairo_set_source_rgba(cr, color.red, color.green, color.blue, alpha);
}

void addStop(cairo_pattern_t* pattern, double offset, PondColor color, double alpha = 1)
{
    cairo_pattern_add_color_stop_rgba(pattern, offset, color.red, color.green, color.blue, alpha);
}

int devicePixels(double points, double scale)
{
    return std::max(1, static_cast<int>(std::ceil(points * scale)));
}

void roundedRectangle(cairo_t* cr, double x, double y, double width, double height)
{
    const double radius = height / 2;
    cairo_new_sub_path(cr);
    cairo_arc(cr, x + width - radius, y + radius, radius, -tau / 4, tau / 4);
    cairo_arc(cr, x + radius, y + radius, radius, tau / 4, 3 * tau / 4);
    cairo_close_path(cr);
}

void ellipse(cairo_t* cr, double x, double y, double radiusX, double radiusY)
{
    cairo_save(cr);
    cairo_translate(cr, x, y);
    cairo_scale(cr, radiusX, radiusY);
    cairo_new_sub_path(cr);
    cairo_arc(cr, 0, 0, 1, 0, tau);
    cairo_restore(cr);
}

// One petal pointing up from the origin, `length` long and `width` wide at
// its widest, with a pointed tip as lotus petals have.
void petal(cairo_t* cr, double length, double width)
{
    cairo_move_to(cr, 0, 0);
    cairo_curve_to(cr, -width, -length * 0.22, -width * 0.9, -length * 0.72, 0, -length);
    cairo_curve_to(cr, width * 0.9, -length * 0.72, width, -length * 0.22, 0, 0);
    cairo_close_path(cr);
}

// A fan of `count` petals over `spread` radians either side of upright.
void petalLayer(cairo_t* cr, int count, double spread, double length, double width, PondColor color, double shade)
{
    const PondColor base = color.mixed(ink, 0.30 + shade);
    const PondColor tip = color.mixed(paper, 0.38 - shade);
    const Owned<cairo_pattern_t, cairo_pattern_destroy> fill(cairo_pattern_create_linear(0, 0, 0, -length));
    addStop(fill.get(), 0, base);
    addStop(fill.get(), 0.55, color.mixed(ink, shade));
    addStop(fill.get(), 1, tip);
    // Outer petals first, so that the middle one lies in front.
    for (int ring = count - 1; ring >= 0; ring -= 2) {
        for (const int side : {-1, 1}) {
            if (ring == 0 && side == 1)
                continue;
            const int position = side * ring; // -(count-1)..(count-1), step 2
            const double angle = count == 1 ? 0 : spread * position / (count - 1);
            // Petals further out lean back and look shorter.
            const double reach = length * (1 - 0.16 * std::abs(angle) / (tau / 4));
            cairo_save(cr);
            cairo_rotate(cr, angle);
            petal(cr, reach, width);
            cairo_set_source(cr, fill.get());
            cairo_fill_preserve(cr);
            setColor(cr, color.mixed(ink, 0.55), 0.55);
            cairo_set_line_width(cr, 0.9);
            cairo_stroke(cr);
            // The midrib, barely there.
            cairo_move_to(cr, 0, -reach * 0.12);
            cairo_line_to(cr, 0, -reach * 0.74);
            setColor(cr, paper, 0.16);
            cairo_set_line_width(cr, 0.8);
            cairo_stroke(cr);
            cairo_restore(cr);
        }
    }
}

} // namespace

PondPainter::PondPainter(double deviceScale)
    : m_deviceScale(deviceScale)
{
}

void PondPainter::setSnapshot(const PondSnapshot& snapshot)
{
    TextCache texts;
    IconCache icons;
    std::vector<TopicArt> topics;
    topics.reserve(snapshot.topics.size());
    for (std::size_t i = 0; i < snapshot.topics.size(); ++i) {
        const PondTopic& topic = snapshot.topics[i];
        TopicArt art;
        // A lotus keeps its drawn flower when only its label changed.
        if (i < m_topics.size() && m_topics[i].color == topic.color)
            art.sprite = std::move(m_topics[i].sprite);
        art.color = topic.color;
        art.title = &cachedText(m_texts, texts, topic.title, titleFont, titleWidth);
        art.icon = cachedIcon(m_icons, icons, topic.icon);
        if (art.icon == nullptr) {
            // The first letter stands in for an icon that does not decode.
            const char* first = topic.title.c_str();
            const char* next = g_utf8_find_next_char(first, nullptr);
            const std::string letter
                = topic.title.empty() || next == nullptr ? std::string("•") : std::string(first, next);
            art.glyph = &cachedText(m_texts, texts, letter, glyphFont, iconSize * 2);
        }
        topics.push_back(std::move(art));
    }
    m_notice = &cachedText(m_texts, texts, snapshot.noticeLabel, buttonFont, titleWidth);
    m_saved = &cachedText(m_texts, texts, snapshot.savedLabel, buttonFont, titleWidth);
    m_topics = std::move(topics);
    m_texts = std::move(texts);
    m_icons = std::move(icons);
    ensurePlainButton();
}

void PondPainter::ensurePlainButton()
{
    const TextMask& text = *m_notice;
    if (m_plainButton && m_plainButtonLabel == text.label)
        return;
    m_plainButton.reset();
    m_plainButtonLabel = text.label;
    if (!text.surface)
        return;
    // A point of margin around it for the stroke's outer half.
    m_plainButtonWidth = text.width + 26;
    m_plainButton.reset(cairo_image_surface_create(CAIRO_FORMAT_ARGB32,
        devicePixels(m_plainButtonWidth + 2, m_deviceScale), devicePixels(buttonHeight + 2, m_deviceScale)));
    cairo_surface_set_device_scale(m_plainButton.get(), m_deviceScale, m_deviceScale);
    const Owned<cairo_t, cairo_destroy> cr(cairo_create(m_plainButton.get()));
    roundedRectangle(cr.get(), 1, 1, m_plainButtonWidth, buttonHeight);
    setColor(cr.get(), ink, 0.35);
    cairo_fill_preserve(cr.get());
    setColor(cr.get(), gold, 0.4);
    cairo_set_line_width(cr.get(), 1);
    cairo_stroke(cr.get());
    setColor(cr.get(), gold, 0.8);
    cairo_mask_surface(cr.get(), text.surface.get(), 1 + m_plainButtonWidth / 2 - text.width / 2,
        1 + (buttonHeight - text.height) / 2);
}

const PondPainter::TextMask& PondPainter::cachedText(
    TextCache& kept, TextCache& into, const std::string& text, const char* font, double maximumWidth) const
{
    std::string key = std::string(font) + '\n' + std::to_string(maximumWidth) + '\n' + text;
    if (const auto found = into.find(key); found != into.end())
        return found->second;
    if (auto node = kept.extract(key))
        return into.insert(std::move(node)).position->second;
    return into.emplace(std::move(key), textMask(text, font, maximumWidth)).first->second;
}

cairo_surface_t* PondPainter::cachedIcon(IconCache& kept, IconCache& into, const std::string& base64) const
{
    if (const auto found = into.find(base64); found != into.end())
        return found->second.get();
    if (auto node = kept.extract(base64))
        return into.insert(std::move(node)).position->second.get();
    // A broken icon is remembered as such, so it is not decoded again.
    return into.emplace(base64, iconSurface(base64, iconSize)).first->second.get();
}

PondPainter::TextMask PondPainter::textMask(const std::string& text, const char* font, double maximumWidth) const
{
    TextMask mask;
    mask.label = text;
    if (text.empty())
        return mask;
    const Surface measuring(cairo_image_surface_create(CAIRO_FORMAT_A8, 1, 1));
    const Owned<cairo_t, cairo_destroy> measure(cairo_create(measuring.get()));
    const Owned<PangoLayout, g_object_unref> layout(pango_cairo_create_layout(measure.get()));
    const Owned<PangoFontDescription, pango_font_description_free> description(
        pango_font_description_from_string(font));
    pango_layout_set_font_description(layout.get(), description.get());
    pango_layout_set_text(layout.get(), text.c_str(), -1);
    pango_layout_set_width(layout.get(), static_cast<int>(maximumWidth * PANGO_SCALE));
    pango_layout_set_ellipsize(layout.get(), PANGO_ELLIPSIZE_END);
    pango_layout_set_single_paragraph_mode(layout.get(), TRUE);
    PangoRectangle inked{};
    PangoRectangle logical{};
    pango_layout_get_pixel_extents(layout.get(), &inked, &logical);
    mask.width = logical.width;
    mask.height = logical.height;
    mask.surface.reset(cairo_image_surface_create(
        CAIRO_FORMAT_A8, devicePixels(mask.width + 2, m_deviceScale), devicePixels(mask.height + 2, m_deviceScale)));
    cairo_surface_set_device_scale(mask.surface.get(), m_deviceScale, m_deviceScale);
    const Owned<cairo_t, cairo_destroy> cr(cairo_create(mask.surface.get()));
    pango_cairo_update_layout(cr.get(), layout.get());
    cairo_move_to(cr.get(), -logical.x, -logical.y);
    pango_cairo_show_layout(cr.get(), layout.get());
    return mask;
}

PondPainter::Surface PondPainter::iconSurface(const std::string& base64, double size) const
{
    if (base64.empty())
        return {};
    gsize length = 0;
    const Owned<guchar, g_free> bytes(g_base64_decode(base64.c_str(), &length));
    const Owned<GdkPixbufLoader, g_object_unref> loader(gdk_pixbuf_loader_new());
    // A broken icon is not worth a word: the glyph takes its place.
    if (!gdk_pixbuf_loader_write(loader.get(), bytes.get(), length, nullptr)
        || !gdk_pixbuf_loader_close(loader.get(), nullptr))
        return {};
    GdkPixbuf* decoded = gdk_pixbuf_loader_get_pixbuf(loader.get());
    if (decoded == nullptr)
        return {};
    const int pixels = devicePixels(size, m_deviceScale);
    const Owned<GdkPixbuf, g_object_unref> scaled(gdk_pixbuf_scale_simple(decoded, pixels, pixels, GDK_INTERP_HYPER));
    if (!scaled)
        return {};
    Surface surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, pixels, pixels));
    {
        const Owned<cairo_t, cairo_destroy> cr(cairo_create(surface.get()));
        gdk_cairo_set_source_pixbuf(cr.get(), scaled.get(), 0, 0);
        cairo_paint(cr.get());
    }
    cairo_surface_set_device_scale(surface.get(), m_deviceScale, m_deviceScale);
    return surface;
}

PondPainter::Sprite PondPainter::sprite(PondColor color, double growth, double scale) const
{
    const double radius = PondLayout::radiusFor(growth) * scale;
    const double openness = std::clamp(growth / PondSnapshot::maximumGrowth, 0.0, 1.0);
    const int petals = PondLayout::petalsFor(static_cast<int>(std::floor(growth)));
    const double leafX = radius * 1.05 + 10 * scale;
    const double leafY = leafX * 0.3;

    Sprite drawn;
    drawn.growth = growth;
    drawn.scale = scale;
    drawn.leafX = leafX;
    drawn.leafY = leafY;
    drawn.anchorX = leafX + 6;
    drawn.anchorY = radius * 1.12 + 6;
    const double width = 2 * drawn.anchorX;
    const double height = drawn.anchorY + leafY + 10 * scale + 6;
    drawn.surface.reset(cairo_image_surface_create(
        CAIRO_FORMAT_ARGB32, devicePixels(width, m_deviceScale), devicePixels(height, m_deviceScale)));
    cairo_surface_set_device_scale(drawn.surface.get(), m_deviceScale, m_deviceScale);
    const Owned<cairo_t, cairo_destroy> owned(cairo_create(drawn.surface.get()));
    cairo_t* cr = owned.get();
    cairo_translate(cr, drawn.anchorX, drawn.anchorY);

    // The leaf's shadow on the water, then the leaf with its notch turned
    // to the viewer's right.
    ellipse(cr, 2, leafY * 0.45 + 3 * scale, leafX * 1.02, leafY * 1.05);
    cairo_set_source_rgba(cr, 0, 0, 0, 0.22);
    cairo_fill(cr);
    cairo_save(cr);
    cairo_translate(cr, 0, leafY * 0.25);
    cairo_scale(cr, leafX, leafY);
    cairo_move_to(cr, 0, 0);
    cairo_arc(cr, 0, 0, 1, 0.42, 0.42 + tau - 0.3);
    cairo_close_path(cr);
    cairo_restore(cr);
    const Owned<cairo_pattern_t, cairo_pattern_destroy> leaf(
        cairo_pattern_create_radial(-leafX * 0.2, 0, leafX * 0.1, 0, leafY * 0.25, leafX));
    addStop(leaf.get(), 0, leafLight);
    addStop(leaf.get(), 1, leafDeep);
    cairo_set_source(cr, leaf.get());
    cairo_fill_preserve(cr);
    setColor(cr, primary, 0.22);
    cairo_set_line_width(cr, 1);
    cairo_stroke(cr);

    // A glow of the flower's colour on the leaf, stronger as it opens.
    ellipse(cr, 0, leafY * 0.1, radius * 0.8, leafY * 0.55);
    setColor(cr, color, 0.10 + 0.12 * openness);
    cairo_fill(cr);

    const int front = (petals + 1) / 2;
    const int back = petals - front;
    const double backSpread = (0.24 + 0.98 * openness) * (tau / 4) * 0.78;
    const double frontSpread = (0.10 + 0.72 * openness) * (tau / 4) * 0.78;
    if (back > 0)
        petalLayer(cr, back, backSpread, radius, radius * (0.30 + 0.06 * openness), color, 0.12);
    petalLayer(cr, front, frontSpread, radius * 0.82, radius * (0.30 + 0.08 * openness), color, 0);
    return drawn;
}

void PondPainter::ensureBackground(const PondLayout::Size& view)
{
    if (m_background && m_backgroundSize.width == view.width && m_backgroundSize.height == view.height)
        return;
    m_backgroundSize = view;
    m_background.reset(cairo_image_surface_create(
        CAIRO_FORMAT_RGB24, devicePixels(view.width, m_deviceScale), devicePixels(view.height, m_deviceScale)));
    cairo_surface_set_device_scale(m_background.get(), m_deviceScale, m_deviceScale);
    const Owned<cairo_t, cairo_destroy> cr(cairo_create(m_background.get()));
    const Owned<cairo_pattern_t, cairo_pattern_destroy> depth(cairo_pattern_create_linear(0, 0, 0, view.height));
    addStop(depth.get(), 0, waterTop);
    addStop(depth.get(), 0.45, waterMiddle);
    addStop(depth.get(), 1, waterBottom);
    cairo_set_source(cr.get(), depth.get());
    cairo_paint(cr.get());
    // Darker towards the banks, so the eye rests in the middle.
    const double reach = std::hypot(view.width, view.height) * 0.62;
    const Owned<cairo_pattern_t, cairo_pattern_destroy> banks(cairo_pattern_create_radial(
        view.width / 2, view.height * 0.45, reach * 0.35, view.width / 2, view.height * 0.45, reach));
    cairo_pattern_add_color_stop_rgba(banks.get(), 0, 0, 0, 0, 0);
    cairo_pattern_add_color_stop_rgba(banks.get(), 1, 0, 0, 0, 0.35);
    cairo_set_source(cr.get(), banks.get());
    cairo_paint(cr.get());

    for (int patch = 0; patch < 2; ++patch) {
        const double radiusX = view.width * (0.42 + 0.1 * patch);
        const double radiusY = view.height * (0.16 + 0.05 * patch);
        Surface& light = m_light[patch];
        // Coverage only, painted in the paper colour: a quarter of the
        // memory to read each frame, and empty pixels are skipped.
        light.reset(cairo_image_surface_create(
            CAIRO_FORMAT_A8, devicePixels(2 * radiusX, m_deviceScale), devicePixels(2 * radiusY, m_deviceScale)));
        cairo_surface_set_device_scale(light.get(), m_deviceScale, m_deviceScale);
        const Owned<cairo_t, cairo_destroy> glow(cairo_create(light.get()));
        const Owned<cairo_pattern_t, cairo_pattern_destroy> fade(cairo_pattern_create_radial(0, 0, 0, 0, 0, 1));
        addStop(fade.get(), 0, paper, 0.075);
        addStop(fade.get(), 0.5, paper, 0.03);
        addStop(fade.get(), 1, paper, 0);
        cairo_matrix_t matrix;
        cairo_matrix_init_scale(&matrix, 1 / radiusX, 1 / radiusY);
        cairo_matrix_translate(&matrix, -radiusX, -radiusY);
        cairo_pattern_set_matrix(fade.get(), &matrix);
        cairo_set_source(glow.get(), fade.get());
        cairo_paint(glow.get());
    }
}

double PondPainter::aligned(double point) const
{
    return std::round(point * m_deviceScale) / m_deviceScale;
}

void PondPainter::paint(cairo_t* cr, const PondLayout& layout, const PondController& controller,
    std::span<const double> growth, double seconds)
{
    const double pan = controller.pan();
    ensureBackground(layout.view());
    cairo_save(cr);
    cairo_set_operator(cr, CAIRO_OPERATOR_SOURCE);
    cairo_set_source_surface(cr, m_background.get(), 0, 0);
    cairo_paint(cr);
    cairo_restore(cr);
    paintWater(cr, layout, pan, seconds);
    const std::size_t count = std::min({layout.count(), m_topics.size(), growth.size()});
    for (std::size_t i = 0; i < count; ++i) {
        const double x = layout.slot(i).x - pan;
        if (x + layout.halfWidth() < 0 || x - layout.halfWidth() > layout.view().width)
            continue;
        paintLotus(cr, layout, controller, i, growth[i], seconds);
    }
}

void PondPainter::paintWater(cairo_t* cr, const PondLayout& layout, double pan, double seconds)
{
    const PondLayout::Size view = layout.view();
    // Two broad patches of light drift across, slower than the lotuses
    // pan, which gives the water depth.
    for (int patch = 0; patch < 2; ++patch) {
        const double radiusX = view.width * (0.42 + 0.1 * patch);
        const double radiusY = view.height * (0.16 + 0.05 * patch);
        const double span = view.width + 2 * radiusX;
        const double travel = std::fmod(seconds * (7.0 + 4.0 * patch) + patch * span * 0.55 - pan * 0.3, span);
        const double x = (travel < 0 ? travel + span : travel) - radiusX;
        const double y = view.height * (0.36 + 0.3 * patch) + std::sin(seconds * 0.11 + patch) * 14;
        // A pixel's step is lost in a blur this soft.
        setColor(cr, paper);
        cairo_mask_surface(cr, m_light[patch].get(), aligned(x - radiusX), aligned(y - radiusY));
    }

    // Glints: short arcs in rows, drifting, nearer rows faster and wider,
    // each row one strip masked through a shimmer that runs along it.
    ensureGlints(view);
    for (std::size_t row = 0; row < m_glints.size(); ++row) {
        const GlintRow& glints = m_glints[row];
        const double depth = static_cast<double>(row) / static_cast<double>(glintRows - 1); // 0 far, 1 near
        const double speed = (5 + 3 * static_cast<double>(row % 3)) * (row % 2 == 0 ? 1 : -1);
        double offset = std::fmod(
            seconds * speed - pan * (0.55 + 0.45 * depth) + static_cast<double>(row) * 53.0, glints.spacing);
        if (offset < 0)
            offset += glints.spacing;
        // The strip starts one spacing left of the view.
        const double device = (offset - glints.spacing) * m_deviceScale;
        const double whole = std::floor(device);
        const auto quarter = static_cast<std::size_t>(std::min(3.0, std::floor((device - whole) * 4)));
        // Each glint's brightness: 0.035 + 0.1 * shimmer * nearness, the
        // shimmer a slow wave along the row, 0.5 + 0.5 * sin(0.9 t +
        // 0.013 x + 1.7 row).
        const double nearness = 0.4 + 0.6 * depth;
        const double phase = seconds * 0.9 + static_cast<double>(row) * 1.7;
        const Owned<cairo_pattern_t, cairo_pattern_destroy> shimmer(
            cairo_pattern_create_linear(0, 0, shimmerWavelength, 0));
        for (int stop = 0; stop <= shimmerStops; ++stop) {
            const double along = static_cast<double>(stop) / shimmerStops;
            addStop(shimmer.get(), along, muted, 0.035 + 0.1 * nearness * (0.5 + 0.5 * std::sin(tau * along + phase)));
        }
        cairo_pattern_set_extend(shimmer.get(), CAIRO_EXTEND_REPEAT);
        cairo_set_source(cr, shimmer.get());
        cairo_mask_surface(cr, glints.masks[quarter].get(), whole / m_deviceScale - glints.pad, glints.y);
    }
}

void PondPainter::ensureGlints(const PondLayout::Size& view)
{
    if (!m_glints.empty() && m_glintsSize.width == view.width && m_glintsSize.height == view.height)
        return;
    m_glintsSize = view;
    m_glints.clear();
    for (int row = 0; row < glintRows; ++row) {
        const double depth = static_cast<double>(row) / (glintRows - 1);
        const double y = view.height * (0.13 + 0.84 * depth * (0.7 + 0.3 * depth));
        const double lift = 1.6 + 1.4 * depth;
        GlintRow glints;
        glints.spacing = (110 + 45 * (row % 4)) * (0.8 + 0.5 * depth);
        glints.length = glints.spacing * (0.22 + 0.06 * (row % 3));
        glints.pad = 2;
        // The row's height lands on a device pixel; the rest of it is drawn
        // into the masks.
        glints.y = std::floor((y - lift - glints.pad) * m_deviceScale) / m_deviceScale;
        const double top = y - glints.y;
        // The whole view and a spacing more: the strip slides by up to one.
        const double width = view.width + 2 * glints.spacing + 2 * glints.pad + 1;
        for (std::size_t quarter = 0; quarter < glints.masks.size(); ++quarter) {
            Surface& mask = glints.masks[quarter];
            mask.reset(cairo_image_surface_create(
                CAIRO_FORMAT_A8, devicePixels(width, m_deviceScale), devicePixels(top + glints.pad, m_deviceScale)));
            cairo_surface_set_device_scale(mask.get(), m_deviceScale, m_deviceScale);
            const Owned<cairo_t, cairo_destroy> cr(cairo_create(mask.get()));
            cairo_set_line_width(cr.get(), 1.1);
            cairo_set_line_cap(cr.get(), CAIRO_LINE_CAP_ROUND);
            for (double x = glints.pad + static_cast<double>(quarter) / 4 / m_deviceScale; x < width;
                 x += glints.spacing) {
                cairo_move_to(cr.get(), x, top);
                cairo_curve_to(cr.get(), x + glints.length * 0.3, top - lift, x + glints.length * 0.7, top - lift,
                    x + glints.length, top);
            }
            cairo_stroke(cr.get());
        }
        m_glints.push_back(std::move(glints));
    }
}

void PondPainter::paintLotus(cairo_t* cr, const PondLayout& layout, const PondController& controller, std::size_t index,
    double growth, double seconds)
{
    TopicArt& art = m_topics[index];
    // A quarter moment is finer than the eye follows while a lotus grows,
    // and keeps the redraws of its flower few.
    const double drawnGrowth = std::round(growth * 4) / 4;
    if (art.sprite.growth != drawnGrowth || art.sprite.scale != layout.scale())
        art.sprite = sprite(art.color, drawnGrowth, layout.scale());
    const Sprite& flower = art.sprite;

    const PondLayout::Slot& slot = layout.slot(index);
    const double phase = static_cast<double>(index) * 1.37;
    const double x = slot.x - controller.pan();
    const double bob = std::sin(seconds * 0.8 + phase) * 1.6 * layout.scale();
    const double y = slot.y + bob;
    const double ringY = y + flower.leafY * 0.25;

    // A ring spreading from the leaf, as if the lotus stirred the water.
    const double stir = std::fmod(seconds * 0.22 + phase * 0.29, 1.0);
    ellipse(cr, x, ringY, flower.leafX * (1.02 + 0.55 * stir), flower.leafY * (1.02 + 0.55 * stir));
    setColor(cr, paper, 0.14 * (1 - stir));
    cairo_set_line_width(cr, 1);
    // A faint ring a point wide shows no facets at a third of a pixel,
    // and takes far fewer segments to fill than at Cairo's tenth.
    cairo_set_tolerance(cr, 0.35);
    cairo_stroke(cr);
    cairo_set_tolerance(cr, 0.1);

    if (const auto noticedAt = controller.noticedAt(index); noticedAt && seconds - *noticedAt < rippleSeconds) {
        for (const double delay : {0.0, 0.35}) {
            const double age = (seconds - *noticedAt - delay) / (rippleSeconds - delay);
            if (age <= 0 || age >= 1)
                continue;
            const double spread = 1.05 + 1.3 * std::sqrt(age);
            ellipse(cr, x, ringY, flower.leafX * spread, flower.leafY * spread);
            setColor(cr, gold, 0.55 * (1 - age));
            cairo_set_line_width(cr, 1.6);
            cairo_stroke(cr);
        }
    }

    const bool selected = controller.selected() == index;
    if (selected || controller.hovered() == index) {
        ellipse(cr, x, ringY, flower.leafX * 1.18, flower.leafY * 1.25);
        setColor(cr, primary, selected ? 0.85 : 0.35);
        cairo_set_line_width(cr, selected ? 2 : 1.4);
        cairo_stroke(cr);
    }

    // The bob moves a flower by whole pixels, a step a second at most,
    // which the eye takes for a slow drift.
    cairo_set_source_surface(cr, flower.surface.get(), aligned(x - flower.anchorX), aligned(y - flower.anchorY));
    cairo_paint(cr);

    // The label: icon and title centred under the leaf.
    const double scale = layout.scale();
    const double labelY = slot.y + flower.leafY + 12 * scale;
    const TextMask& title = *art.title;
    const double iconWidth = art.icon != nullptr ? iconSize : art.glyph->width;
    const double gap = 5;
    const double labelWidth = iconWidth + gap + title.width;
    const double left = x - labelWidth / 2;
    const double lineHeight = std::max(iconSize, title.height);
    if (art.icon != nullptr) {
        setColor(cr, art.color.mixed(paper, 0.15));
        cairo_mask_surface(cr, art.icon, left, labelY + (lineHeight - iconSize) / 2);
    } else if (art.glyph->surface) {
        setColor(cr, art.color);
        cairo_mask_surface(cr, art.glyph->surface.get(), left, labelY + (lineHeight - art.glyph->height) / 2);
    }
    if (title.surface) {
        setColor(cr, paper, 0.93);
        cairo_mask_surface(cr, title.surface.get(), left + iconWidth + gap, labelY + (lineHeight - title.height) / 2);
    }
    paintButton(cr, controller, index, x, labelY + lineHeight + 7 * scale, seconds);
}

void PondPainter::paintButton(
    cairo_t* cr, const PondController& controller, std::size_t index, double x, double y, double seconds) const
{
    const auto noticedAt = controller.noticedAt(index);
    const double sinceSaved = noticedAt ? seconds - *noticedAt : savedSeconds;
    const bool saved = sinceSaved >= 0 && sinceSaved < savedSeconds && m_saved->surface;
    const TextMask& text = saved ? *m_saved : *m_notice;
    if (!text.surface)
        return;
    const bool pressed = controller.pressed() == index && controller.hovered() == index;
    const bool lit = controller.selected() == index || controller.hovered() == index;
    if (!saved && !pressed && !lit && m_plainButton) {
        cairo_set_source_surface(cr, m_plainButton.get(), aligned(x - m_plainButtonWidth / 2) - 1, aligned(y) - 1);
        cairo_paint(cr);
        return;
    }
    const double width = text.width + 26;
    const double left = x - width / 2;
    roundedRectangle(cr, left, y, width, buttonHeight);
    PondColor label = gold;
    double labelAlpha = 0.8;
    if (saved) {
        // Fades back to the plain button in its last third.
        const double fade = std::clamp((savedSeconds - sinceSaved) / (savedSeconds / 3), 0.0, 1.0);
        setColor(cr, gold, 0.92 * fade);
        cairo_fill(cr);
        label = ink;
        labelAlpha = 0.6 + 0.4 * fade;
    } else if (pressed || lit) {
        setColor(cr, pressed ? primary.mixed(ink, 0.25) : primary, 0.92);
        cairo_fill(cr);
        label = ink;
        labelAlpha = 1;
    } else {
        setColor(cr, ink, 0.35);
        cairo_fill_preserve(cr);
        setColor(cr, gold, 0.4);
        cairo_set_line_width(cr, 1);
        cairo_stroke(cr);
    }
    setColor(cr, label, labelAlpha);
    cairo_mask_surface(cr, text.surface.get(), x - text.width / 2, y + (buttonHeight - text.height) / 2);
}

} // namespace pond
