// The pond: the reference rendering program of libVelmoraNative, installed
// as the user's application `velmora`.
//
//   pond [--library PATH] [--screenshot FILE [--after N]] [--frames N]
//   pond [--library PATH] --benchmark [--frames N] [--size WIDTHxHEIGHT] [--scale N]
//   pond --seed-demo DATA_HOME
//
// The library reads the practice from $XDG_DATA_HOME; --seed-demo writes a
// practice to look at into an empty data folder (see run.sh).

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include <gtk/gtk.h>
#include <velmora/velmora.h>

#include "PondBenchmark.h"
#include "PondDemoState.h"
#include "PondWindow.h"
#include "VelmoraLibrary.h"

namespace {

// The desktop entry this program is installed under (app.velmora.mac.desktop):
// its windows carry this class (StartupWMClass) and application id, and
// the icon of that name.
constexpr const char* applicationID = "app.velmora.mac";

constexpr const char* usage
    = "usage: pond [--library PATH] [--screenshot FILE [--after N]] [--frames N]\n"
      "       pond [--library PATH] --benchmark [--frames N] [--size WIDTHxHEIGHT] [--scale N]\n"
      "       pond --seed-demo DATA_HOME\n";

struct Arguments {
    std::string library;
    bool benchmark = false;
    pond::PondBenchmarkOptions benchmarkOptions;
    std::optional<std::string> seedDemo;
    pond::PondWindow::Options window;
};

// The library this program was built with: the build tree's for the pond
// of a build (POND_VELMORA_LIBRARY, an absolute path), the installed one
// for an installed program (POND_INSTALLED_LIBRARY, a path from the
// program's own folder, so that any installation prefix works), else
// the one the dynamic loader finds.
std::string defaultLibrary()
{
    // A failed look is the same as no file there.
    std::error_code ignored;
#ifdef POND_VELMORA_LIBRARY
    if (std::filesystem::exists(POND_VELMORA_LIBRARY, ignored))
        return POND_VELMORA_LIBRARY;
#endif
#ifdef POND_INSTALLED_LIBRARY
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", ignored);
    if (!program.empty()) {
        const std::filesystem::path installed = (program.parent_path() / POND_INSTALLED_LIBRARY).lexically_normal();
        if (std::filesystem::exists(installed, ignored))
            return installed.string();
    }
#endif
    return VELMORA_LIBRARY_SONAME;
}

std::optional<std::size_t> count(const char* text)
{
    char* end = nullptr;
    const unsigned long long value = std::strtoull(text, &end, 10);
    if (end == text || *end != '\0' || text[0] == '-' || value == 0)
        return std::nullopt;
    return static_cast<std::size_t>(value);
}

std::optional<Arguments> parse(int argc, char** argv)
{
    Arguments parsed;
    parsed.library = defaultLibrary();
    for (int i = 1; i < argc; ++i) {
        const std::string_view option = argv[i];
        const char* value = i + 1 < argc ? argv[i + 1] : nullptr;
        if (option == "--benchmark") {
            parsed.benchmark = true;
            continue;
        }
        if (value == nullptr) {
            std::fprintf(stderr, "pond: %s needs a value\n", argv[i]);
            return std::nullopt;
        }
        ++i;
        if (option == "--library") {
            parsed.library = value;
        } else if (option == "--seed-demo") {
            parsed.seedDemo = value;
        } else if (option == "--screenshot") {
            parsed.window.screenshot = value;
        } else if (option == "--size") {
            // Device pixels, as a screen's size is given.
            unsigned width = 0;
            unsigned height = 0;
            char end = 0;
            if (std::sscanf(value, "%ux%u%c", &width, &height, &end) != 2 || width == 0 || height == 0) {
                std::fprintf(stderr, "pond: --size wants WIDTHxHEIGHT in pixels, not \"%s\"\n", value);
                return std::nullopt;
            }
            parsed.benchmarkOptions.view = {static_cast<double>(width), static_cast<double>(height)};
        } else if (option == "--scale") {
            const std::optional<std::size_t> scale = count(value);
            if (!scale || *scale > 4) {
                std::fprintf(stderr, "pond: --scale wants 1 to 4, not \"%s\"\n", value);
                return std::nullopt;
            }
            parsed.benchmarkOptions.scale = static_cast<int>(*scale);
        } else if (option == "--after" || option == "--frames") {
            const std::optional<std::size_t> frames = count(value);
            if (!frames) {
                std::fprintf(stderr, "pond: %s wants a number of frames, not \"%s\"\n", argv[i - 1], value);
                return std::nullopt;
            }
            if (option == "--after")
                parsed.window.screenshotFrame = *frames;
            else
                parsed.window.frames = frames;
        } else {
            std::fprintf(stderr, "pond: unknown option %s\n", argv[i - 1]);
            return std::nullopt;
        }
    }
    return parsed;
}

int seed(const std::string& dataHome)
{
    try {
        const std::filesystem::path file = pond::PondDemoState::write(dataHome);
        std::printf("pond: wrote a demo practice to %s\n", file.c_str());
        return EXIT_SUCCESS;
    } catch (const std::filesystem::filesystem_error& error) {
        std::fprintf(stderr, "pond: %s\n", error.what());
        return EXIT_FAILURE;
    }
}

int showPond(int argc, char** argv, const Arguments& arguments)
{
    // The windows' class (WM_CLASS on X11, the application id on Wayland)
    // comes from these, so both are set before GTK makes any window: the
    // program's name before GTK starts, the class once it has (starting
    // sets it from the name, capitalised).
    g_set_prgname(applicationID);
    if (gtk_init_check(&argc, &argv) == FALSE) {
        std::fprintf(stderr, "pond: no display to show the pond on (pond --benchmark needs none)\n");
        return EXIT_FAILURE;
    }
    gdk_set_program_class(applicationID);
    g_set_application_name("Velmora");
    // The pond's and the library's panel alike, where the icon theme has it.
    gtk_window_set_default_icon_name(applicationID);
    try {
        // The window first: the library adopts it when it starts.
        pond::PondWindow window(arguments.window);
        const pond::VelmoraLibrary library(arguments.library);
        library.start();
        window.attach(library);
        gtk_main();
        return window.status();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "pond: %s\n", error.what());
        return EXIT_FAILURE;
    }
}

} // namespace

int main(int argc, char** argv)
{
    const std::optional<Arguments> arguments = parse(argc, argv);
    if (!arguments) {
        std::fputs(usage, stderr);
        return 2;
    }
    if (arguments->seedDemo)
        return seed(*arguments->seedDemo);
    if (arguments->benchmark) {
        pond::PondBenchmarkOptions options = arguments->benchmarkOptions;
        // The screen's pixels at its scale are this many points.
        options.view = {options.view.width / options.scale, options.view.height / options.scale};
        if (arguments->window.frames)
            options.frames = *arguments->window.frames;
        return pond::runBenchmark(arguments->library, options);
    }
    return showPond(argc, argv, *arguments);
}
