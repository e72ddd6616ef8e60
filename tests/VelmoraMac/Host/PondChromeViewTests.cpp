#include <gtest/gtest.h>

#include "VelmoraMac/Host/PondChromeView.h"
#include "tests/VelmoraMac/CatalogFixture.h"

namespace velmora {
namespace {

TEST(PondChromeView, Construction_WithoutAUsableIcon_KeepsAWorkingGear)
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

} // namespace
} // namespace velmora
