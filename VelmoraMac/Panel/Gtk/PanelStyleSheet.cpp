#include "PanelStyleSheet.h"

#include <algorithm>
#include <cmath>
#include <locale>
#include <sstream>
#include <utility>

namespace velmora {

namespace {

int channel(double component)
{
    return static_cast<int>(std::lround(std::clamp(component, 0.0, 1.0) * 255.0));
}

// CSS wants a full stop whatever the user's locale says.
std::string number(double value)
{
    std::ostringstream out;
    out.imbue(std::locale::classic());
    out << value;
    return out.str();
}

} // namespace

PanelStyleSheet::PanelStyleSheet(std::string rootName, const PanelBody& body)
    : m_root(std::move(rootName.insert(0, 1, '#')))
{
    const std::string& root = m_root;
    const std::string foreground = css(body.foreground);
    // Focus stays visible for keyboard users, in the panel's own colour.
    const std::string faint = css(body.foreground.withOpacity(0.45));
    // Without a compositor a window of its own cannot let the pond show
    // through: a translucent colour would only lie over the theme's grey.
    GdkScreen* screen = gdk_screen_get_default();
    const Color background = screen != nullptr && gdk_screen_is_composited(screen) == FALSE
        ? body.background.withOpacity(1)
        : body.background;
    m_base = root + " { background-color: " + css(background) + "; color: " + foreground
        + "; font-size: " + pixels(body.baseFontSize) + "; }\n" + root + " scrolledwindow, " + root
        + " viewport { background: none; border: none; }\n" + root
        + " button { background: none; border: none; box-shadow: none; text-shadow: none; -gtk-icon-shadow: none;"
          " padding: 0; margin: 0; min-height: 0; min-width: 0; border-radius: 0; color: "
        + foreground
        + ";"
          " outline-color: "
        + faint + "; outline-style: solid; outline-width: 2px; outline-offset: -2px; }\n" + root
        + " button:disabled { opacity: 0.4; }\n" + root + " button:active { opacity: 0.82; }\n" + root + " spinbutton, "
        + root + " spinbutton entry, " + root
        + " spinbutton button { background: none; border: none;"
          " box-shadow: none; text-shadow: none; -gtk-icon-shadow: none; color: "
        + foreground + "; }\n" + root + " spinbutton:disabled { opacity: 0.4; }\n" + root
        + " spinbutton entry { padding: 6px 4px 6px 12px; min-height: 0; font-size: inherit; color: inherit; }\n" + root
        + " spinbutton button { padding: 0 7px; min-width: 16px; }\n" + root
        + " spinbutton button:last-child { padding-right: 10px; }\n" + root
        + " scrollbar { background: none; border: none; }\n" + root + " scrollbar slider { background-color: " + faint
        + "; border: none; min-width: 6px; }\n";
}

std::string PanelStyleSheet::classFor(const std::string& declarations)
{
    if (const auto found = m_classes.find(declarations); found != m_classes.end())
        return found->second;
    std::string name = "panel-s" + std::to_string(m_classes.size());
    m_rules += m_root + " ." + name + " { " + declarations + " }\n";
    m_classes.emplace(declarations, name);
    return name;
}

void PanelStyleSheet::style(GtkWidget* widget, const std::string& declarations)
{
    gtk_style_context_add_class(gtk_widget_get_style_context(widget), classFor(declarations).c_str());
}

std::string PanelStyleSheet::text() const
{
    return m_base + m_rules;
}

std::string PanelStyleSheet::css(Color color)
{
    return "rgba(" + std::to_string(channel(color.red)) + "," + std::to_string(channel(color.green)) + ","
        + std::to_string(channel(color.blue)) + "," + number(std::clamp(color.opacity, 0.0, 1.0)) + ")";
}

std::string PanelStyleSheet::pixels(double value)
{
    return number(value) + "px";
}

} // namespace velmora
