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
// How long a noticing's feedback (its ripple and the saved label) moves.
constexpr double feedbackSeconds = 2.5;

bool acted(const PondInput& input, const PondInput& last)
{
    const bool pointerMoved
        = input.interactive != 0 && (input.pointerX != last.pointerX || input.pointerY != last.pointerY);
    return pointerMoved || input.down != 0 || input.held != 0 || input.up != 0 || input.scrollX != 0
        || input.scrollY != 0 || input.navigationX != 0 || input.navigationY != 0
        || input.interactive != last.interactive || input.contentWidth != last.contentWidth;
}

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
    m_lastSnapshotWork = {};
    const std::size_t snapshotsBefore = m_snapshotsRead;
    if (const VelmoraLibrary::Event event = m_library->copyEvent()) {
        const auto takeStart = std::chrono::steady_clock::now();
        try {
            take(PondSnapshot::fromEvent(event.text()));
            m_lastSnapshotWork = std::chrono::steady_clock::now() - takeStart;
        } catch (const PondSnapshotError& error) {
            // The pond keeps the last snapshot it could read; the next
            // event carries the whole state again.
            std::fprintf(stderr, "pond: ignoring an event: %s\n", error.what());
        }
    }
    m_lastPoll = std::chrono::steady_clock::now() - pollStart;
    sound(input.visible != 0);

    const std::size_t count = m_snapshot ? m_snapshot->topics.size() : 0;
    const PondLayout::Size current = m_layout.view();
    if (m_layout.count() != count || current.width != view.width || current.height != view.height)
        m_layout = PondLayout(count, view);

    if (const auto noticed = m_controller.update(input, m_layout, seconds))
        notice(*noticed);

    bool changing = m_snapshotsRead != snapshotsBefore || acted(input, m_lastInput) || !m_controller.settled();
    for (std::size_t i = 0; i < count; ++i) {
        const double target = m_snapshot->topics[i].growthMoments;
        const double step = growthPace * elapsed;
        changing = changing || m_growth[i] != target;
        m_growth[i]
            = m_growth[i] < target ? std::min(target, m_growth[i] + step) : std::max(target, m_growth[i] - step);
        const auto noticedAt = m_controller.noticedAt(i);
        changing = changing || (noticedAt && seconds - *noticedAt < feedbackSeconds);
    }
    m_moving = changing;
    m_visible = input.visible != 0;
    m_lastInput = input;
}

void PondFrame::paint(cairo_t* cr)
{
    m_painter.paint(cr, m_layout, m_controller, m_growth, m_seconds);
}

void PondFrame::sound(bool visible)
{
    if (m_sound == nullptr)
        return;
    const PondSound::Water water
        = visible && m_snapshot && m_snapshot->waterSoundEnabled ? PondSound::Water::on : PondSound::Water::off;
    if (water != m_water)
        m_sound->setWater(water);
    m_water = water;
}

void PondFrame::take(PondSnapshot snapshot)
{
    ++m_snapshotsRead;
    // A saved noticing shows as a lotus with more moments than before; a
    // refused one sends no snapshot at all, and other changes (a topic
    // chosen, the language) add none.
    if (m_sound != nullptr && m_snapshot && snapshot.bellSoundEnabled) {
        const auto& before = m_snapshot->topics;
        const bool grew = std::any_of(snapshot.topics.begin(), snapshot.topics.end(), [&](const PondTopic& topic) {
            const auto found
                = std::find_if(before.begin(), before.end(), [&](const PondTopic& old) { return old.id == topic.id; });
            return found != before.end() && topic.moments > found->moments;
        });
        if (grew)
            m_sound->ringBell();
    }
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
            const auto found
                = std::find_if(before.begin(), before.end(), [&](const PondTopic& old) { return old.id == topic.id; });
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
