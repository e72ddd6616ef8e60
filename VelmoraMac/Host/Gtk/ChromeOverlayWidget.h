#pragma once

#include <memory>
#include <string>

#include <gtk/gtk.h>

#include "VelmoraCore/Size.h"
#include "VelmoraMac/Platform/GLibPointer.h"
#include "VelmoraMac/Platform/GLibSignal.h"
#include "VelmoraMac/Platform/GtkViewFactory.h"

namespace velmora {

class PondChromeView;

// The pond's chrome drawn over the renderer's content: a transparent
// drawing area that the desktop's window lays over the renderer's own
// widget, passing every input event through (the window's click filter
// decides which clicks are the chrome's). It keeps the chrome told of its
// size.
//
// Drawn with Cairo and Pango as the chrome looks: the two shade bands, the
// wordmark (its own serif italic when installed, the system font
// otherwise), the day line centred between its margins, and the gear's
// template icon in its tint. The texts are measured here and handed back to
// the chrome, so that its layout, and with it the gear's clickable square,
// matches what is drawn.
//
// The chrome tells nobody when it changes, so on each tick of the frame
// clock (while the widget is mapped) the widget compares what it would draw
// with what it drew and redraws only on a difference: a few comparisons a
// frame.
// Main thread only (GTK's).
class ChromeOverlayWidget final : public GtkViewFactory::View {
public:
    explicit ChromeOverlayWidget(std::shared_ptr<PondChromeView> chrome);
    ChromeOverlayWidget(const ChromeOverlayWidget&) = delete;
    ChromeOverlayWidget& operator=(const ChromeOverlayWidget&) = delete;
    ChromeOverlayWidget(ChromeOverlayWidget&&) = delete;
    ChromeOverlayWidget& operator=(ChromeOverlayWidget&&) = delete;
    ~ChromeOverlayWidget() override;

    // This object holds a reference to it while it lives.
    [[nodiscard]] GtkWidget* widget() const override { return m_widget.get(); }

    // Paints the chrome at its current size, origin at its top left.
    void draw(cairo_t* cairo);

private:
    using WidgetPointer = GLibPointer<GtkWidget, g_object_ref, g_object_unref>;
    using SurfacePointer = GLibPointer<cairo_surface_t, cairo_surface_reference, cairo_surface_destroy>;

    // What a chrome's drawing depends on.
    struct Appearance {
        bool hidden = false;
        Size size;
        std::string days;
        const void* gear = nullptr;

        friend bool operator==(const Appearance&, const Appearance&) = default;
    };

    static gboolean drawn(GtkWidget* widget, cairo_t* cairo, gpointer self);
    static void allocated(GtkWidget* widget, GdkRectangle* allocation, gpointer self);
    static gboolean ticked(GtkWidget* widget, GdkFrameClock* clock, gpointer self);

    [[nodiscard]] Appearance appearance() const;
    [[nodiscard]] bool changedSinceDrawn() const;
    // Measures the chrome's texts and tells it their sizes.
    void measure(PondChromeView& chrome);
    void drawChrome(cairo_t* cairo, PondChromeView& chrome);
    void drawGear(cairo_t* cairo, const PondChromeView& chrome);
    [[nodiscard]] PangoLayout* newWordmarkLayout() const;
    [[nodiscard]] PangoLayout* newDaysLayout(const std::string& text) const;

    std::shared_ptr<PondChromeView> m_chrome;
    WidgetPointer m_widget;
    guint m_tick = 0;
    Appearance m_drawn;
    // The gear's icon decoded, and the bytes it came from.
    SurfacePointer m_gearSurface;
    const void* m_gearSource = nullptr;
    // Last: disconnected first.
    GLibSignal m_draw;
    GLibSignal m_allocate;
};

} // namespace velmora
