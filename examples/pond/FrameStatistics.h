#pragma once

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <vector>

namespace pond {

// Durations of many frames, stored in a buffer filled up front: recording
// then neither allocates nor touches a new page while the frames run, so the
// resident memory the benchmark reports is the renderer's and the library's,
// not its own sample storage growing by eight bytes a frame.
class FrameStatistics {
public:
    using Duration = std::chrono::duration<double, std::milli>;

    explicit FrameStatistics(std::size_t capacity)
        : m_samples(capacity)
    {
    }

    void add(Duration sample)
    {
        if (m_count < m_samples.size())
            m_samples[m_count++] = sample.count();
    }
    [[nodiscard]] std::size_t count() const { return m_count; }
    [[nodiscard]] double total() const
    {
        double sum = 0;
        for (std::size_t i = 0; i < m_count; ++i)
            sum += m_samples[i];
        return sum;
    }
    // The sample below which `fraction` of them lie (nearest rank), in
    // milliseconds; 0 without samples.
    [[nodiscard]] double percentile(double fraction) const
    {
        if (m_count == 0)
            return 0;
        std::vector<double> sorted(m_samples.begin(), m_samples.begin() + static_cast<std::ptrdiff_t>(m_count));
        std::sort(sorted.begin(), sorted.end());
        const auto rank = static_cast<std::size_t>(std::lround(fraction * static_cast<double>(sorted.size() - 1)));
        return sorted[std::min(rank, sorted.size() - 1)];
    }
    [[nodiscard]] double maximum() const
    {
        return m_count == 0
            ? 0
            : *std::max_element(m_samples.begin(), m_samples.begin() + static_cast<std::ptrdiff_t>(m_count));
    }

private:
    std::vector<double> m_samples;
    std::size_t m_count = 0;
};

} // namespace pond
