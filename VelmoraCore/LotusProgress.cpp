#include "LotusProgress.h"

#include <algorithm>

namespace velmora {

std::int64_t LotusProgress::baseGrowthMoments() const
{
    return std::clamp(growthMoments.value_or(moments), std::int64_t{0}, fullGrowth);
}

double LotusProgress::growth() const
{
    return static_cast<double>(baseGrowthMoments()) / static_cast<double>(fullGrowth);
}

} // namespace velmora
