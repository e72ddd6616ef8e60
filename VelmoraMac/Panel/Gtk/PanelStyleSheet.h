#pragma once

#include <map>
#include <string>

#include <gtk/gtk.h>

#include "VelmoraMac/Panel/Color.h"
#include "VelmoraMac/Panel/PanelBody.h"

namespace velmora {

// The one style sheet of a panel, written from the values of the page being
// built rather than from constants, so that a changed palette restyles the
// panel without a line of code changing. The builder asks for a style
// ("background-color: …; border-radius: 24px") and gets a class to give the
// widget; equal styles share a class. Every rule is scoped under the name
// of one panel's root widget, so the sheet, installed for the whole screen,
// touches no other window of the process, nor another panel with classes
// of the same names.
//
// A plain value, rebuilt for each page.
class PanelStyleSheet {
public:
    // The base rules: the panel's background and foreground from `body`,
    // and the theme's button and entry chrome taken off, so that only what
    // the panel draws shows. `rootName` is the root widget's name.
    PanelStyleSheet(std::string rootName, const PanelBody& body);

    // The class that gives a widget `declarations`.
    [[nodiscard]] std::string classFor(const std::string& declarations);
    // Adds that class to `widget`.
    void style(GtkWidget* widget, const std::string& declarations);

    [[nodiscard]] std::string text() const;

    // A CSS colour, such as "rgba(243,235,217,0.07)".
    [[nodiscard]] static std::string css(Color color);
    // A number of pixels, such as "24px" or "1.5px".
    [[nodiscard]] static std::string pixels(double value);

private:
    std::string m_root;
    std::string m_base;
    // Declarations to their class, and the classes in the order given.
    std::map<std::string, std::string, std::less<>> m_classes;
    std::string m_rules;
};

} // namespace velmora
