#include "ChromeOverlayWidget.h"

#include <cstring>
#include <string_view>
#include <utility>

#include "VelmoraMac/Host/PondChromeView.h"

namespace velmora {

namespace {

// The wordmark's face, "TimesNewRomanPS-ItalicMT" by its PostScript name,
// is the italic face of the Times New Roman family wherever it is
// installed; fontconfig knows it by family and style.
constexpr const char* wordmarkFamily = "Times New Roman";

bool wordmarkFaceInstalled(PangoContext* context)
{
    PangoFontMap* map = pango_context_get_font_map(context);
    PangoFontFamily** families = nullptr;
    int familyCount = 0;
    pango_font_map_list_families(map, &families, &familyCount);
    bool found = false;
    for (int index = 0; index < familyCount && !found; ++index) {
        if (g_ascii_strcasecmp(pango_font_family_get_name(families[index]), wordmarkFamily) != 0)
            continue;
        PangoFontFace** faces = nullptr;
        int faceCount = 0;
        pango_font_family_list_faces(families[index], &faces, &faceCount);
        for (int face = 0; face < faceCount && !found; ++face) {
            PangoFontDescription* description = pango_font_face_describe(faces[face]);
            found = pango_font_description_get_style(description) == PANGO_STYLE_ITALIC
                && pango_font_description_get_weight(description) == PANGO_WEIGHT_NORMAL;
            pango_font_description_free(description);
        }
        g_free(faces);
    }
    g_free(families);
    return found;
}

// The system font, the widget's own, at `size` points. Points are the
// desktop's logical pixels, as everywhere in the shell, so the size is
// absolute and does not grow again with the font resolution.
PangoFontDescription* systemFont(PangoContext* context, double size)
{
    const PangoFontDescription* base = pango_context_get_font_description(context);
    PangoFontDescription* font
        = base != nullptr ? pango_font_description_copy(base) : pango_font_description_from_string("Sans");
    pango_font_description_set_absolute_size(font, size * PANGO_SCALE);
    return font;
}

PangoFontDescription* wordmarkFont(PangoContext* context)
{
    // Fonts are not installed while a process runs often enough to look
    // again for every frame.
    static const bool installed = wordmarkFaceInstalled(context);
    if (!installed)
        return systemFont(context, PondChromeView::wordmarkFontSize);
    PangoFontDescription* font = pango_font_description_new();
    pango_font_description_set_family(font, wordmarkFamily);
    pango_font_description_set_style(font, PANGO_STYLE_ITALIC);
    pango_font_description_set_absolute_size(font, PondChromeView::wordmarkFontSize * PANGO_SCALE);
    return font;
}

void setSource(cairo_t* cairo, const Color& color)
{
    cairo_set_source_rgba(cairo, color.red, color.green, color.blue, color.opacity);
}

void addStop(cairo_pattern_t* pattern, double offset, const Color& color)
{
    cairo_pattern_add_color_stop_rgba(pattern, offset, color.red, color.green, color.blue, color.opacity);
}

// Reads a PNG held in memory for Cairo.
struct PNGReader {
    std::string_view bytes;
    std::size_t offset = 0;

    static cairo_status_t read(void* closure, unsigned char* data, unsigned int length)
    {
        auto* reader = static_cast<PNGReader*>(closure);
        if (reader->bytes.size() - reader->offset < length)
            return CAIRO_STATUS_READ_ERROR;
        std::memcpy(data, reader->bytes.data() + reader->offset, length);
        reader->offset += length;
        return CAIRO_STATUS_SUCCESS;
    }
};

} // namespace

ChromeOverlayWidget::ChromeOverlayWidget(std::shared_ptr<PondChromeView> chrome)
    : m_chrome(std::move(chrome))
    , m_widget(WidgetPointer::adopt(GTK_WIDGET(g_object_ref_sink(gtk_drawing_area_new()))))
    , m_draw(m_widget.get(), "draw", G_CALLBACK(&ChromeOverlayWidget::drawn), this)
    , m_allocate(m_widget.get(), "size-allocate", G_CALLBACK(&ChromeOverlayWidget::allocated), this)
{
    gtk_widget_set_name(m_widget.get(), "velmora-chrome");
    gtk_widget_set_hexpand(m_widget.get(), TRUE);
    gtk_widget_set_vexpand(m_widget.get(), TRUE);
    gtk_widget_set_halign(m_widget.get(), GTK_ALIGN_FILL);
    gtk_widget_set_valign(m_widget.get(), GTK_ALIGN_FILL);
    m_tick = gtk_widget_add_tick_callback(m_widget.get(), &ChromeOverlayWidget::ticked, this, nullptr);
    gtk_widget_show(m_widget.get());
}

ChromeOverlayWidget::~ChromeOverlayWidget()
{
    gtk_widget_remove_tick_callback(m_widget.get(), m_tick);
}

ChromeOverlayWidget::Appearance ChromeOverlayWidget::appearance() const
{
    return Appearance{m_chrome->isHidden(), m_chrome->size(), m_chrome->daysText(), m_chrome->gearImage().png().data()};
}

bool ChromeOverlayWidget::changedSinceDrawn() const
{
    // Compared in place: this runs every frame and must not allocate.
    const PondChromeView& chrome = *m_chrome;
    return chrome.isHidden() != m_drawn.hidden || chrome.size() != m_drawn.size || chrome.daysText() != m_drawn.days
        || chrome.gearImage().png().data() != m_drawn.gear;
}

gboolean ChromeOverlayWidget::drawn(GtkWidget* /*widget*/, cairo_t* cairo, gpointer self)
{
    try {
        static_cast<ChromeOverlayWidget*>(self)->draw(cairo);
    } catch (...) {
        GLibSignal::reportFailure("drawing the chrome");
    }
    return FALSE;
}

void ChromeOverlayWidget::allocated(GtkWidget* /*widget*/, GdkRectangle* allocation, gpointer self)
{
    auto* overlay = static_cast<ChromeOverlayWidget*>(self);
    try {
        overlay->m_chrome->setSize(Size(allocation->width, allocation->height));
        overlay->measure(*overlay->m_chrome);
    } catch (...) {
        GLibSignal::reportFailure("sizing the chrome");
    }
}

gboolean ChromeOverlayWidget::ticked(GtkWidget* widget, GdkFrameClock* /*clock*/, gpointer self)
{
    const auto* overlay = static_cast<const ChromeOverlayWidget*>(self);
    if (overlay->changedSinceDrawn())
        gtk_widget_queue_draw(widget);
    return G_SOURCE_CONTINUE;
}

void ChromeOverlayWidget::draw(cairo_t* cairo)
{
    m_drawn = appearance();
    if (m_chrome->isHidden())
        return;
    measure(*m_chrome);
    cairo_save(cairo);
    drawChrome(cairo, *m_chrome);
    cairo_restore(cairo);
}

PangoLayout* ChromeOverlayWidget::newWordmarkLayout() const
{
    PangoContext* context = gtk_widget_get_pango_context(m_widget.get());
    PangoLayout* layout = pango_layout_new(context);
    PangoFontDescription* font = wordmarkFont(context);
    pango_layout_set_font_description(layout, font);
    pango_font_description_free(font);
    PangoAttrList* attributes = pango_attr_list_new();
    pango_attr_list_insert(
        attributes, pango_attr_letter_spacing_new(static_cast<int>(PondChromeView::wordmarkKerning * PANGO_SCALE)));
    pango_layout_set_attributes(layout, attributes);
    pango_attr_list_unref(attributes);
    pango_layout_set_text(layout, PondChromeView::wordmarkText, -1);
    return layout;
}

PangoLayout* ChromeOverlayWidget::newDaysLayout(const std::string& text) const
{
    PangoContext* context = gtk_widget_get_pango_context(m_widget.get());
    PangoLayout* layout = pango_layout_new(context);
    PangoFontDescription* font = systemFont(context, PondChromeView::daysFontSize);
    pango_layout_set_font_description(layout, font);
    pango_font_description_free(font);
    pango_layout_set_single_paragraph_mode(layout, TRUE);
    pango_layout_set_text(layout, text.c_str(), static_cast<int>(text.size()));
    return layout;
}

void ChromeOverlayWidget::measure(PondChromeView& chrome)
{
    PangoRectangle wordmark;
    PangoLayout* layout = newWordmarkLayout();
    pango_layout_get_pixel_extents(layout, nullptr, &wordmark);
    g_object_unref(layout);
    // An empty line is as tall as any other: the day line keeps its place
    // before the host first sets it.
    PangoRectangle days;
    layout = newDaysLayout(chrome.daysText().empty() ? std::string(" ") : chrome.daysText());
    pango_layout_get_pixel_extents(layout, nullptr, &days);
    g_object_unref(layout);
    chrome.setMeasuredTextSizes(Size(wordmark.width, wordmark.height), days.height);
}

void ChromeOverlayWidget::drawChrome(cairo_t* cairo, PondChromeView& chrome)
{
    const Size size = chrome.size();
    // Top band first: the bottom one lies over it where a short view makes
    // them meet. Neither extends past its two points.
    for (const PondChromeView::Shade& shade : chrome.shades()) {
        cairo_pattern_t* pattern = cairo_pattern_create_linear(shade.start.x, shade.start.y, shade.end.x, shade.end.y);
        if (cairo_pattern_status(pattern) == CAIRO_STATUS_SUCCESS) {
            addStop(pattern, 0, shade.startColor);
            addStop(pattern, 1, shade.endColor);
            cairo_pattern_set_extend(pattern, CAIRO_EXTEND_NONE);
            cairo_set_source(cairo, pattern);
            cairo_rectangle(cairo, 0, 0, size.width, size.height);
            cairo_fill(cairo);
        }
        cairo_pattern_destroy(pattern);
    }

    const PondChromeView::Layout layout = chrome.layout();

    PangoLayout* wordmark = newWordmarkLayout();
    cairo_save(cairo);
    // The wordmark gives way to the gear: what does not fit is cut off.
    cairo_rectangle(cairo, layout.wordmark.minX(), 0, layout.wordmark.width(), size.height);
    cairo_clip(cairo);
    setSource(cairo, PondChromeView::wordmarkColor);
    cairo_move_to(cairo, layout.wordmark.minX(), layout.wordmark.minY());
    pango_cairo_show_layout(cairo, wordmark);
    cairo_restore(cairo);
    g_object_unref(wordmark);

    if (!chrome.daysText().empty() && layout.days.width() > 0) {
        PangoLayout* days = newDaysLayout(chrome.daysText());
        pango_layout_set_width(days, static_cast<int>(layout.days.width() * PANGO_SCALE));
        pango_layout_set_alignment(days, PANGO_ALIGN_CENTER);
        pango_layout_set_ellipsize(days, PANGO_ELLIPSIZE_END);
        setSource(cairo, PondChromeView::daysColor);
        cairo_move_to(cairo, layout.days.minX(), layout.days.minY());
        pango_cairo_show_layout(cairo, days);
        g_object_unref(days);
    }

    drawGear(cairo, chrome);
}

void ChromeOverlayWidget::drawGear(cairo_t* cairo, const PondChromeView& chrome)
{
    const PanelImage& image = chrome.gearImage();
    if (image.empty())
        return;
    if (m_gearSource != image.png().data()) {
        m_gearSource = image.png().data();
        PNGReader reader{image.png()};
        m_gearSurface = SurfacePointer::adopt(cairo_image_surface_create_from_png_stream(&PNGReader::read, &reader));
    }
    cairo_surface_t* surface = m_gearSurface.get();
    // Bytes that pass for a PNG by their header and still do not decode
    // leave the gear as an empty image: it still takes its clicks.
    if (surface == nullptr || cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS)
        return;
    const int pixelWidth = cairo_image_surface_get_width(surface);
    const int pixelHeight = cairo_image_surface_get_height(surface);
    if (pixelWidth <= 0 || pixelHeight <= 0)
        return;
    // A template image: only its shape counts, filled with the gear's tint,
    // at its own size in the middle of the gear.
    const Rect gear = chrome.layout().gear;
    const Size icon = PondChromeView::gearImageSize;
    cairo_save(cairo);
    cairo_translate(cairo, gear.midX() - icon.width * 0.5, gear.midY() - icon.height * 0.5);
    cairo_scale(cairo, icon.width / pixelWidth, icon.height / pixelHeight);
    setSource(cairo, PondChromeView::gearTint);
    cairo_mask_surface(cairo, surface, 0, 0);
    cairo_restore(cairo);
}

} // namespace velmora
