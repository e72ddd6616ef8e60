#pragma once

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "VelmoraCore/Instant.h"
#include "VelmoraCore/PracticeError.h"

namespace velmora::test {

// An instant given as a UTC wall-clock time (proleptic Gregorian).
inline Instant utc(int year, unsigned month, unsigned day, int hour = 0, int minute = 0, int second = 0)
{
    using namespace std::chrono;
    return time_point_cast<milliseconds>(
        sys_days(std::chrono::year(year) / std::chrono::month(month) / std::chrono::day(day)) + hours(hour)
        + minutes(minute) + seconds(second));
}

// Runs `body` and checks it throws exactly the PracticeError `kind`.
template <typename Body> void expectPracticeError(Body&& body, PracticeError::Kind kind)
{
    try {
        body();
        ADD_FAILURE() << "expected PracticeError " << PracticeError(kind).what() << ", nothing was thrown";
    } catch (const PracticeError& error) {
        EXPECT_EQ(error.kind(), kind) << error.what();
    }
}

inline std::string fileBytes(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

inline void writeFileBytes(const std::filesystem::path& path, const std::string& bytes)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << bytes;
}

} // namespace velmora::test
