#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <vector>

#include <cairo.h>

#include "PondController.h"
#include "PondLayout.h"
#include "PondPainter.h"
#include "PondSnapshot.h"
#include "PondSound.h"
#include "VelmoraLibrary.h"

namespace pond {

// One frame of the pond, the same in the window and in the benchmark:
// `advance` polls the library (its input, and the newest event, parsed
// only when there is one) and moves the pond on; `paint` draws it.
//
// One thread only: the one that renders.
class PondFrame {
public:
    PondFrame(const VelmoraLibrary& library, double deviceScale);

    // Polls and moves the pond to `seconds` (a monotonic clock) for a view
    // of `view` points.
    void advance(double seconds, PondLayout::Size view);
    void paint(cairo_t* cr);

    // The key that notices the selected lotus, from the window.
    void activate();
    // Selects a lotus as the navigation keys would.
    void select(std::size_t index);
    // Changes the device pixels per point; the cached drawing is redone.
    void setDeviceScale(double deviceScale);
    // Where the water and the bell are heard; none by default. `sound`
    // must outlive the frame.
    void setSound(PondSound* sound) { m_sound = sound; }

    [[nodiscard]] const std::optional<PondSnapshot>& snapshot() const { return m_snapshot; }
    // Whether the library showed the pond at the last advance.
    [[nodiscard]] bool visible() const { return m_visible; }
    // Whether anything but the water's slow drift moved at the last
    // advance: input, the camera, a lotus growing, a noticing's feedback,
    // a new snapshot. A pond that is not moving can be drawn less often.
    [[nodiscard]] bool moving() const { return m_moving; }
    // How long the last advance spent in the library's functions, with
    // parsing a new event.
    [[nodiscard]] std::chrono::nanoseconds lastPoll() const { return m_lastPoll; }
    [[nodiscard]] std::size_t snapshotsRead() const { return m_snapshotsRead; }
    // How long the last advance spent taking a new snapshot in (reading
    // it, and what the painter redraws for it); zero when none came.
    [[nodiscard]] std::chrono::nanoseconds lastSnapshotWork() const { return m_lastSnapshotWork; }

private:
    void take(PondSnapshot snapshot);
    void sound(bool visible);
    void notice(std::size_t index);

    const VelmoraLibrary* m_library;
    PondSound* m_sound = nullptr;
    PondSound::Water m_water = PondSound::Water::off;
    PondController m_controller;
    PondPainter m_painter;
    std::optional<PondSnapshot> m_snapshot;
    PondLayout m_layout;
    // Each lotus's size as shown; it eases towards the snapshot's growth.
    std::vector<double> m_growth;
    double m_seconds = 0;
    std::optional<double> m_lastSeconds;
    std::chrono::nanoseconds m_lastPoll{0};
    std::chrono::nanoseconds m_lastSnapshotWork{0};
    std::size_t m_snapshotsRead = 0;
    PondInput m_lastInput;
    bool m_visible = false;
    bool m_moving = true;
};

} // namespace pond
