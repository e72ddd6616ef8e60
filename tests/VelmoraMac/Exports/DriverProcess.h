#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace velmora::test {

// A child process run to its end, with the environment of this process
// changed as asked: the exports driver (ExportsDriver.cpp), or any program.
class DriverProcess {
public:
    // Variable → value; an empty optional removes the variable.
    using Environment = std::map<std::string, std::optional<std::string>>;

    struct Result {
        // The exit status, or 128 + the signal that ended the child.
        int status = -1;
        std::string output;
        std::string errors;

        // The words after `key` on the first output line that starts with
        // it, as one string; none when no line does.
        [[nodiscard]] std::optional<std::string> value(const std::string& key) const;
        // Every line of the output that starts with `prefix`, the prefix
        // removed, in order.
        [[nodiscard]] std::vector<std::string> linesStartingWith(const std::string& prefix) const;
        // The standard error output as lines.
        [[nodiscard]] std::vector<std::string> errorLines() const;
    };

    // The library as built.
    static std::filesystem::path builtLibrary();

    // Runs `scenario` of the driver against `library`.
    static Result run(const std::filesystem::path& library, const std::string& scenario,
        const std::vector<std::string>& arguments, const Environment& environment);
    // Runs `command`, its program looked up on PATH. Throws
    // std::runtime_error when it cannot be started.
    static Result runProgram(std::vector<std::string> command, const Environment& environment = {});
};

} // namespace velmora::test
