// Runs a fuzz target over saved inputs without libFuzzer, so that every test
// build, with any compiler and sanitizer, replays the committed corpus.
//
//     <target>Replay <file or folder>...
//
// A folder's files run in name order, each announced before it runs, so
// that the input behind an abort is the last one named.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

// NOLINTNEXTLINE(readability-identifier-naming): the name libFuzzer calls
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace velmora {
namespace {

namespace fs = std::filesystem;

std::vector<fs::path> inputsIn(const fs::path& argument)
{
    if (!fs::is_directory(argument))
        return {argument};
    std::vector<fs::path> inputs;
    for (const fs::directory_entry& entry : fs::directory_iterator(argument))
        if (entry.is_regular_file())
            inputs.push_back(entry.path());
    std::sort(inputs.begin(), inputs.end());
    return inputs;
}

void replay(const fs::path& input)
{
    std::ifstream file(input, std::ios::binary);
    if (!file)
        throw std::runtime_error("cannot read " + input.string());
    const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    // A buffer of exactly the input's size, as libFuzzer gives, so that the
    // address sanitizer catches a read past its end.
    const auto copy = std::make_unique<std::uint8_t[]>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), copy.get());
    std::cerr << "replaying " << input.string() << '\n';
    LLVMFuzzerTestOneInput(copy.get(), bytes.size());
}

} // namespace
} // namespace velmora

int main(int argc, char** argv)
{
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.empty()) {
        std::cerr << "usage: " << (argc > 0 ? argv[0] : "replay") << " <file or folder>...\n";
        return 2;
    }
    std::size_t count = 0;
    try {
        for (const std::string& argument : arguments)
            for (const std::filesystem::path& input : velmora::inputsIn(argument)) {
                velmora::replay(input);
                ++count;
            }
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
    std::cout << "replayed " << count << " inputs\n";
    // No inputs at all means a wrong path, not a clean corpus.
    return count == 0 ? 1 : 0;
}
