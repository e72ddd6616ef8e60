#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "VelmoraMac/Platform/StatusBar.h"

namespace velmora {

// A GTK pop-up menu at the pointer, for a tray host that asks the item to
// show its own menu (a right click on KDE's or XFCE's tray). It runs a
// nested main loop until the user chooses an entry or dismisses the menu,
// and returns only then, as a click on a status item with a menu does.
//
// Needs GTK initialised with a display. While it waits, everything else on
// the main loop keeps running, D-Bus calls included.
// Main thread only (GTK's).
class StatusNotifierPopupMenu {
public:
    // The index in `entries` of the entry chosen, none when the menu was
    // dismissed or could not be shown (another program holds the pointer,
    // or a Wayland session, where a pop-up needs a window of ours).
    // The entries' actions are not run: the caller runs the chosen one
    // once the menu has gone.
    static std::optional<std::size_t> run(const std::vector<MenuItem>& entries);
};

} // namespace velmora
