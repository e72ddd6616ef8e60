#pragma once

#include <gtk/gtk.h>

namespace velmora {

// A container of one child that keeps the child at most `maximumWidth`
// pixels wide and centres it in any wider space, as a reading column: the
// panel's window may be much wider than lines of text should run. Narrower
// than that, the child gets the full width and wraps its text to it.
// Heights follow the child's height for the width it is given, so that a
// scrolling parent sees the true height of wrapped text.
// Main thread only, as every GTK widget.
class PanelColumn {
public:
    // A new floating widget, as GTK constructors return.
    [[nodiscard]] static GtkWidget* create(int maximumWidth);

    PanelColumn() = delete;
};

} // namespace velmora
