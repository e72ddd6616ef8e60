#pragma once

#include <cstdint>
#include <string>

#include "VelmoraMac/Platform/StatusBar.h"

namespace velmora {

class HeadlessStatusItem;

// The button of a HeadlessStatusItem; it records what the shell set.
// Main thread only.
class HeadlessStatusButton final : public StatusButton {
public:
    explicit HeadlessStatusButton(HeadlessStatusItem& item)
        : m_item(item)
    {
    }

    void setTemplateImage(std::string png, Size size) override;
    void setToolTip(std::string toolTip) override { m_toolTip = std::move(toolTip); }
    void setAccessibilityLabel(std::string label) override { m_accessibilityLabel = std::move(label); }
    void setAction(Action action) override { m_action = std::move(action); }
    void sendActionOn(std::uint64_t eventMask) override { m_actionMask = eventMask; }
    // As a left click.
    void performClick() override;

    // The bytes set, empty for an empty image.
    [[nodiscard]] const std::string& imagePNG() const { return m_imagePNG; }
    [[nodiscard]] Size imageSize() const { return m_imageSize; }
    // Whether a template image has been set at all.
    [[nodiscard]] bool hasImage() const { return m_hasImage; }
    [[nodiscard]] const std::string& toolTip() const { return m_toolTip; }
    [[nodiscard]] const std::string& accessibilityLabel() const { return m_accessibilityLabel; }
    [[nodiscard]] std::uint64_t actionMask() const { return m_actionMask; }
    [[nodiscard]] bool hasAction() const { return static_cast<bool>(m_action); }

private:
    friend class HeadlessStatusItem;

    HeadlessStatusItem& m_item;
    std::string m_imagePNG;
    Size m_imageSize;
    bool m_hasImage = false;
    std::string m_toolTip;
    std::string m_accessibilityLabel;
    Action m_action;
    // The window system's default: left mouse up only.
    std::uint64_t m_actionMask = eventMaskBit(InputEventType::leftMouseUp);
};

} // namespace velmora
