#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <cairo.h>
#include <gtest/gtest.h>

#include "Owned.h"
#include "PondController.h"
#include "PondLayout.h"
#include "PondPainter.h"
#include "PondSnapshot.h"

// fontconfig, which Pango loads to lay the labels out, keeps its caches for
// the life of the process and never frees them; that is no leak of ours.
// Read by LeakSanitizer in sanitizer builds, unused otherwise.
// NOLINTNEXTLINE(bugprone-reserved-identifier,readability-identifier-naming): the sanitizer's own hook
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libfontconfig.so\n";
}

namespace pond {
namespace {

constexpr PondLayout::Size window{780, 640};

struct Pixel {
    int red = 0;
    int green = 0;
    int blue = 0;
};

class Canvas {
public:
    Canvas()
        : m_surface(cairo_image_surface_create(
            CAIRO_FORMAT_ARGB32, static_cast<int>(window.width), static_cast<int>(window.height)))
        , m_cr(cairo_create(m_surface.get()))
    {
    }
    [[nodiscard]] cairo_t* cr() const { return m_cr.get(); }
    // The painted colour at a point; the pond is opaque, so premultiplied
    // components are the colour itself.
    [[nodiscard]] Pixel at(double x, double y) const
    {
        cairo_surface_flush(m_surface.get());
        const unsigned char* row = cairo_image_surface_get_data(m_surface.get())
            + static_cast<std::ptrdiff_t>(y) * cairo_image_surface_get_stride(m_surface.get());
        std::uint32_t argb = 0;
        std::memcpy(&argb, row + static_cast<std::ptrdiff_t>(x) * 4, sizeof argb);
        return {static_cast<int>((argb >> 16U) & 0xFFU), static_cast<int>((argb >> 8U) & 0xFFU),
            static_cast<int>(argb & 0xFFU)};
    }

private:
    Owned<cairo_surface_t, cairo_surface_destroy> m_surface;
    Owned<cairo_t, cairo_destroy> m_cr;
};

// Seventeen full lotuses: the first red, the last blue, the rest green; the
// second with an icon that is no image.
PondSnapshot coloured()
{
    PondSnapshot snapshot;
    for (int i = 0; i < 17; ++i) {
        PondTopic topic;
        topic.id = "topic" + std::to_string(i);
        topic.title = "Title " + std::to_string(i);
        topic.growthMoments = 14;
        topic.color = i == 0 ? PondColor{1, 0, 0} : i == 16 ? PondColor{0, 0, 1} : PondColor{0, 1, 0};
        topic.icon = i == 1 ? "no image at all" : "";
        snapshot.topics.push_back(topic);
    }
    snapshot.noticeLabel = "Notice";
    snapshot.savedLabel = "Noticed";
    return snapshot;
}

bool dominated(Pixel pixel, int Pixel::*channel)
{
    const int strongest = pixel.*channel;
    return strongest > 80 && strongest > pixel.red + pixel.green + pixel.blue - strongest;
}

TEST(PondPainter, PaintsEachLotusInItsColourAndSizeWhereTheLayoutAndPanPutIt)
{
    const PondSnapshot snapshot = coloured();
    const PondLayout layout(snapshot.topics.size(), window);
    PondController controller;
    std::vector<std::string> ids;
    for (const PondTopic& topic : snapshot.topics)
        ids.push_back(topic.id);
    controller.setTopics(ids);
    std::vector<double> growth(snapshot.topics.size(), 14);
    growth[3] = 0;
    PondPainter painter(1);
    painter.setSnapshot(snapshot);
    const Canvas canvas;
    const double petals = PondLayout::radiusFor(14) * layout.scale() * 0.45;

    painter.paint(canvas.cr(), layout, controller, growth, 1);
    const PondLayout::Slot& first = layout.slot(0);
    EXPECT_TRUE(dominated(canvas.at(first.x, first.y - petals), &Pixel::red));
    // Just below the tip of a full flower: a bud does not reach it.
    const double tip = PondLayout::radiusFor(13) * layout.scale() * 0.8;
    EXPECT_TRUE(dominated(canvas.at(layout.slot(2).x, layout.slot(2).y - tip), &Pixel::green));
    EXPECT_FALSE(dominated(canvas.at(layout.slot(3).x, layout.slot(3).y - tip), &Pixel::green));
    const Pixel water = canvas.at(first.x, 30);
    EXPECT_LT(water.red, 60);

    // Scrolled to the end: the last lotus is in view where the pan puts it,
    // and the first has left.
    PondInput input;
    input.visible = 1;
    input.interactive = 1;
    input.pointerX = -1;
    input.scrollX = -1e5F;
    controller.update(input, layout, 2);
    ASSERT_DOUBLE_EQ(controller.pan(), layout.maximumPan());
    painter.paint(canvas.cr(), layout, controller, growth, 2);
    const PondLayout::Slot& last = layout.slot(16);
    EXPECT_TRUE(dominated(canvas.at(last.x - controller.pan(), last.y - petals), &Pixel::blue));
    EXPECT_FALSE(dominated(canvas.at(first.x, first.y - petals), &Pixel::red));
}

} // namespace
} // namespace pond
