#pragma once

#include <cstdint>

#include "VelmoraCore/Instant.h"
#include "VelmoraCore/PracticeState.h"

namespace velmora::bench {

// Three years of daily practice, a long-standing user.
constexpr std::int64_t threeYearsOfDays = 1095;

// The last day of practice in realisticPracticeState(), at midnight UTC.
Instant lastPracticeDay();

// A long-standing user's record: onboarded, every topic selected, a lotus
// for each topic at a different stage of growth (one of them an older record
// without a growth counter), a noticing on each of `practiceDayCount`
// consecutive days up to lastPracticeDay() (from 0001-01-01 on for more
// days than the calendar holds before it), a wilt week seen, a language
// chosen and the reminder on. It passes validated().
PracticeState realisticPracticeState(std::int64_t practiceDayCount);

} // namespace velmora::bench
