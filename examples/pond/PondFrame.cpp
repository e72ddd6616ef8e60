#include "PondFrame.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <utility>

namespace pond {
namespace {

// Moments a lotus grows or shrinks per second while it changes size.
constexpr double growthPace = 3;

} // namespace

PondFrame::PondFrame(const VelmoraLibrary& library, double deviceScale)
    : m_library(&library)
    , m_painter(deviceScale)
{
}

void PondFrame::advance(double seconds, PondLayout::Size view)
{
    const double elapsed = m_lastSeconds ? std::clamp(seconds - *m_lastSeconds, 0.0, 0.25) : 0.0;
    m_lastSeconds = seconds;
    m_seconds = seconds;

    const auto pollStart = std::chrono::steady_clock::now();
    const PondInput input = m_library->readInput();
    if (const VelmoraLibrary::Event event = m_library->copyEvent()) {
        try {
            take(PondSnapshot::fromEvent(event.text()));
        } catch (const PondSnapshotError& error) {
            // The pond keeps the last snapshot it could read; the next
            // event carries the whole state again.
            std::fprintf(stderr, "pond: ignoring an event: %s\n", error.what());
        }
    }
    m_lastPoll = std::chrono::steady_clock::now() - pollStart;

    const std::size_t count = m_snapshot ? m_snapshot->topics.size() : 0;
    const PondLayout::Size current = m_layout.view();
    if (m_layout.count() != count || current.width != view.width || current.height != view.height)
        m_layout = PondLayout(count, view);

    if (const auto noticed = m_controller.update(input, m_layout, seconds))
        notice(*noticed);

    for (std::size_t i = 0; i < count; ++i) {
        const double target = m_snapshot->topics[i].growthMoments;
        const double step = growthPace * elapsed;
        m_growth[i] = m_growth[i] < target ? std::min(target, m_growth[i] + step) : std::max(target, m_growth[i] - step);
    }
}

void PondFrame::paint(cairo_t* cr)
{
    m_painter.paint(cr, m_layout, m_controller, m_growth, m_seconds);
}

void PondFrame::take(PondSnapshot snapshot)
{
    ++m_snapshotsRead;
    // Lotuses that stay keep their shown size and grow from there; new
    // ones appear at their size.
    std::vector<double> growth;
    std::vector<std::string> ids;
    growth.reserve(snapshot.topics.size());
    ids.reserve(snapshot.topics.size());
    for (const PondTopic& topic : snapshot.topics) {
        double shown = topic.growthMoments;
        if (m_snapshot) {
            const auto& before = m_snapshot->topics;
            const auto found = std::find_if(before.begin(), before.end(), [&](const PondTopic& old) { return old.id == topic.id; });
            if (found != before.end())
                shown = m_growth[static_cast<std::size_t>(found - before.begin())];
        }
        growth.push_back(shown);
        ids.push_back(topic.id);
    }
    m_growth = std::move(growth);
    m_controller.setTopics(std::move(ids));
    m_painter.setSnapshot(snapshot);
    m_snapshot = std::move(snapshot);
}

void PondFrame::notice(std::size_t index)
{
    if (!m_snapshot || index >= m_snapshot->topics.size())
        return;
    m_library->notice(m_snapshot->topics[index].id);
    m_controller.noticed(index, m_seconds);
}

void PondFrame::activate()
{
    if (const auto index = m_controller.activate(m_layout))
        notice(*index);
}

void PondFrame::select(std::size_t index)
{
    m_controller.select(index, m_layout);
}

void PondFrame::setDeviceScale(double deviceScale)
{
    if (deviceScale == m_painter.deviceScale())
        return;
    m_painter = PondPainter(deviceScale);
    if (m_snapshot)
        m_painter.setSnapshot(*m_snapshot);
}

} // namespace pond
