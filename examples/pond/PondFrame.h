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

    [[nodiscard]] const std::optional<PondSnapshot>& snapshot() const { return m_snapshot; }
    // How long the last advance spent in the library's functions, with
    // parsing a new event.
    [[nodiscard]] std::chrono::nanoseconds lastPoll() const { return m_lastPoll; }
    [[nodiscard]] std::size_t snapshotsRead() const { return m_snapshotsRead; }

private:
    void take(PondSnapshot snapshot);
    void notice(std::size_t index);

    const VelmoraLibrary* m_library;
    PondController m_controller;
    PondPainter m_painter;
    std::optional<PondSnapshot> m_snapshot;
    PondLayout m_layout;
    // Each lotus's size as shown; it eases towards the snapshot's growth.
    std::vector<double> m_growth;
    double m_seconds = 0;
    std::optional<double> m_lastSeconds;
    std::chrono::nanoseconds m_lastPoll{0};
    std::size_t m_snapshotsRead = 0;
};

} // namespace pond
