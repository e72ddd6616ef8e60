#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "DriverProcess.h"
#include "VelmoraCore/PracticeState.h"
#include "tests/VelmoraCore/CoreTestSupport.h"
#include "tests/VelmoraCore/TemporaryFolder.h"

namespace velmora::test {

// A private data home for the driver's process, with a user who has finished
// onboarding, chosen "smoking" and "phone", and noticed "smoking" three
// times before. The child's locale is plain C, so its texts are English.
class ExportsFixture : public testing::Test {
protected:
    static constexpr std::int64_t seededSmokingMoments = 3;

    [[nodiscard]] std::filesystem::path dataHome() const { return m_folder / "data"; }
    [[nodiscard]] std::filesystem::path stateFile() const { return dataHome() / "app.velmora.mac" / "practice.json"; }

    static PracticeState onboardedState()
    {
        PracticeState state;
        state.onboarded = true;
        state.hintSeen = true;
        state.selected = {"smoking", "phone"};
        state.lotuses.emplace("smoking", LotusProgress(seededSmokingMoments, "2025-01-02", seededSmokingMoments));
        state.practiceDays = {"2025-01-02"};
        return state;
    }

    void seed(const PracticeState& state) const
    {
        std::filesystem::create_directories(stateFile().parent_path());
        writeFileBytes(stateFile(), state.toJSON());
    }

    [[nodiscard]] DriverProcess::Environment environment() const
    {
        return {
            {"XDG_DATA_HOME", dataHome().string()},
            {"HOME", (m_folder / "home").string()},
            {"LANG", "C"},
            {"LANGUAGE", std::nullopt},
            {"LC_ALL", std::nullopt},
            {"LC_MESSAGES", std::nullopt},
        };
    }

    [[nodiscard]] DriverProcess::Result drive(
        const std::string& scenario, const std::vector<std::string>& arguments = {}) const
    {
        return DriverProcess::run(DriverProcess::builtLibrary(), scenario, arguments, environment());
    }

    // The moments of `topic` in the snapshot an event envelope carries.
    static std::int64_t momentsInEvent(const std::string& envelopeText, const std::string& topic)
    {
        const nlohmann::json envelope = nlohmann::json::parse(envelopeText);
        EXPECT_EQ(envelope.at("version"), 1);
        EXPECT_EQ(envelope.at("kind"), "practice");
        const nlohmann::json snapshot = nlohmann::json::parse(envelope.at("payload").get<std::string>());
        for (const nlohmann::json& entry : snapshot.at("topics")) {
            if (entry.at("id") == topic)
                return entry.at("moments").get<std::int64_t>();
        }
        ADD_FAILURE() << topic << " is not in the snapshot " << snapshot;
        return -1;
    }

    [[nodiscard]] std::int64_t momentsInFile(const std::string& topic) const
    {
        const PracticeState state = PracticeState::fromJSON(fileBytes(stateFile()));
        const auto found = state.lotuses.find(topic);
        return found == state.lotuses.end() ? 0 : found->second.moments;
    }

    TemporaryFolder m_folder;
};

} // namespace velmora::test
