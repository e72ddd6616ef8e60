#pragma once

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <vector>

namespace pond {

// Durations of many frames, reserved up front so that recording allocates
// nothing while the frames run.
class FrameStatistics {
public:
    using Duration = std::chrono::duration<double, std::milli>;

    explicit FrameStatistics(std::size_t capacity) { m_samples.reserve(capacity); }

    void add(Duration sample)
    {
        if (m_samples.size() < m_samples.capacity())
            m_samples.push_back(sample.count());
    }
    [[nodiscard]] std::size_t count() const { return m_samples.size(); }
    [[nodiscard]] double total() const
    {
        double sum = 0;
        for (const double sample : m_samples)
            sum += sample;
        return sum;
    }
    // The sample below which `fraction` of them lie (nearest rank), in
    // milliseconds; 0 without samples.
    [[nodiscard]] double percentile(double fraction) const
    {
        if (m_samples.empty())
            return 0;
        std::vector<double> sorted = m_samples;
        std::sort(sorted.begin(), sorted.end());
        const auto rank = static_cast<std::size_t>(std::lround(fraction * static_cast<double>(sorted.size() - 1)));
        return sorted[std::min(rank, sorted.size() - 1)];
    }
    [[nodiscard]] double maximum() const { return m_samples.empty() ? 0 : *std::max_element(m_samples.begin(), m_samples.end()); }

private:
    std::vector<double> m_samples;
};

} // namespace pond
