#pragma once

#include "VelmoraMac/Platform/UrlOpener.h"

namespace velmora {

// Opens a web address with the user's default handler for its scheme, as
// the desktop would for a click on a link: through GIO's registry of
// applications (or the desktop portal inside a sandbox). When a display is
// open, the launch carries GDK's context, so that the browser may come to
// the front. A failure is swallowed, as the interface allows: there is
// nothing the panel could offer instead.
// Main thread only.
class DesktopUrlOpener final : public UrlOpener {
public:
    void openURL(const std::string& url) override;
};

} // namespace velmora
