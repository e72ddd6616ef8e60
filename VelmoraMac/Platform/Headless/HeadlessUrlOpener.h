#pragma once

#include <string>
#include <vector>

#include "VelmoraMac/Platform/UrlOpener.h"

namespace velmora {

// Records the addresses it is asked to open, for tests and for any process
// without a desktop. Main thread only, like the interface.
class HeadlessUrlOpener final : public UrlOpener {
public:
    void openURL(const std::string& url) override { m_opened.push_back(url); }

    [[nodiscard]] const std::vector<std::string>& opened() const { return m_opened; }

private:
    std::vector<std::string> m_opened;
};

} // namespace velmora
