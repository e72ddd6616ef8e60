#pragma once

#include <string>

namespace velmora {

// Opens a web address in the user's browser. A failure is the system's to
// show or to swallow; the panel has nothing to offer in its place.
// Main thread only.
class UrlOpener {
public:
    UrlOpener() = default;
    UrlOpener(const UrlOpener&) = delete;
    UrlOpener& operator=(const UrlOpener&) = delete;
    UrlOpener(UrlOpener&&) = delete;
    UrlOpener& operator=(UrlOpener&&) = delete;
    virtual ~UrlOpener() = default;

    virtual void openURL(const std::string& url) = 0;
};

} // namespace velmora
