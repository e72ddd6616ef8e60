#pragma once

#include <memory>

// GTK's own declaration, so that the interfaces need not include GTK.
typedef struct _GtkWidget GtkWidget; // NOLINT(modernize-use-using,bugprone-reserved-identifier)

namespace velmora {

class OverlayView;
class WindowContent;

// The GTK widgets that draw the shell's own content and overlays. The
// desktop's windows know how to hold a panel's content and how to lay an
// overlay over the renderer's widget and route its clicks, but not what the
// shell draws there: the shell hands the desktop platform this factory when
// it starts it, and a window asks it whenever it is given content or an
// overlay. The headless platform draws nothing and needs none.
// Main thread only (GTK's).
class GtkViewFactory {
public:
    // A widget made for one object of the shell's. It holds a reference to
    // the widget while it lives; the window that asked for it keeps it as
    // long as it shows the object.
    class View {
    public:
        View() = default;
        View(const View&) = delete;
        View& operator=(const View&) = delete;
        View(View&&) = delete;
        View& operator=(View&&) = delete;
        virtual ~View() = default;

        [[nodiscard]] virtual GtkWidget* widget() const = 0;
        // Gives the keyboard to the view's primary control, as the view
        // does itself when it is shown; for a view moved into another
        // window. Nothing for a view that takes no keys.
        virtual void focusPrimary() { }
    };

    GtkViewFactory() = default;
    GtkViewFactory(const GtkViewFactory&) = delete;
    GtkViewFactory& operator=(const GtkViewFactory&) = delete;
    GtkViewFactory(GtkViewFactory&&) = delete;
    GtkViewFactory& operator=(GtkViewFactory&&) = delete;
    virtual ~GtkViewFactory() = default;

    // The widget that fills a panel showing `content`; none for content the
    // shell does not draw, which leaves the panel empty.
    [[nodiscard]] virtual std::unique_ptr<View> contentView(const std::shared_ptr<WindowContent>& content) = 0;
    // The widget that draws `overlay` edge to edge over a window's content
    // and keeps it told of its size (OverlayView::setSize); none for an
    // overlay the shell does not draw, which is then not laid at all.
    [[nodiscard]] virtual std::unique_ptr<View> overlayView(const std::shared_ptr<OverlayView>& overlay) = 0;
};

} // namespace velmora
