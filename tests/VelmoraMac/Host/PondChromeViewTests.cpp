#include <filesystem>
#include <memory>

#include <gtest/gtest.h>

#include "VelmoraMac/Host/PondChromeView.h"
#include "tests/VelmoraMac/CatalogFixture.h"

namespace velmora {
namespace {

class PondChromeViewTest : public testing::Test {
protected:
    std::shared_ptr<const ContentCatalog> m_catalog = std::make_shared<const ContentCatalog>(std::filesystem::path(VELMORA_CONTENT_RESOURCE));
    int m_actions = 0;
    PondChromeView m_chrome{*m_catalog, "Settings", [this] { ++m_actions; }};
};

TEST_F(PondChromeViewTest, Construction_WithoutAUsableIcon_KeepsAWorkingGear)
{
    for (const char* icon : {static_cast<const char*>(nullptr), "not base64!", "bG90dXM="}) {
        SCOPED_TRACE(icon == nullptr ? "missing" : icon);
        nlohmann::json document = test::minimalCatalogDocument();
        if (icon != nullptr)
            document["uiIcons"]["settings"] = icon;
        const ContentCatalog catalog = ContentCatalog::fromJSON(document.dump());
        int actions = 0;
        PondChromeView chrome(catalog, "Réglages", [&actions] { ++actions; });
        chrome.setSize({400, 300});
        EXPECT_TRUE(chrome.gearImage().empty());
        EXPECT_EQ(chrome.gearAccessibilityLabel(), "Réglages");
        chrome.click(chrome.layout().gear.origin);
        EXPECT_EQ(actions, 1);
    }
}

TEST_F(PondChromeViewTest, Layout_KeepsTheMarginsAtEverySize)
{
    for (const Size size : {Size{800, 600}, Size{300, 200}, Size{60, 40}, Size{0, 0}}) {
        SCOPED_TRACE(testing::Message() << size.width << " x " << size.height);
        m_chrome.setSize(size);
        const PondChromeView::Layout layout = m_chrome.layout();
        EXPECT_EQ(layout.gear.size, Size(48, 48));
        EXPECT_EQ(layout.gear.maxX(), size.width - 18);
        EXPECT_EQ(layout.gear.midY(), layout.wordmark.midY());
        EXPECT_EQ(layout.wordmark.origin, Point(26, 16));
        EXPECT_LE(layout.wordmark.maxX(), std::max(26.0, layout.gear.minX() - 12));
        EXPECT_EQ(layout.days.minX(), 24);
        EXPECT_LE(layout.days.maxX(), std::max(24.0, size.width - 24));
        EXPECT_EQ(layout.days.maxY(), size.height - 18);
    }
}

TEST_F(PondChromeViewTest, HitTest_OnlyTheGearTakesClicks)
{
    m_chrome.setSize({800, 600});
    struct ClickCase {
        const char* name = nullptr;
        Point point;
        bool taken = false;
    };
    const ClickCase cases[] = {
        {"gear centre", {758, 32}, true},
        {"gear top left corner", {734, 8}, true},
        {"just right of the gear", {782, 32}, false},
        {"wordmark", {40, 30}, false},
        {"day line", {400, 575}, false},
    };
    for (const ClickCase& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(m_chrome.takesClick(c.point), c.taken);
        const int before = m_actions;
        m_chrome.click(c.point);
        EXPECT_EQ(m_actions, before + (c.taken ? 1 : 0));
    }
    m_chrome.hide();
    EXPECT_FALSE(m_chrome.takesClick({758, 32}));
    m_chrome.show();
    EXPECT_TRUE(m_chrome.takesClick({758, 32}));
}

} // namespace
} // namespace velmora
