// The program that people start. It loads nothing but the C library, and turns into one of two others: into
// orbitledge-desktop where the panel is asked for and there is a desktop, else into orbitledge-command, which
// also tells what is wrong.

#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace {

using Path = std::array<char, PATH_MAX + 64>;

bool isSet(const char *name)
{
    // NOLINTNEXTLINE(concurrency-mt-unsafe): there is one thread
    const char *const value = std::getenv(name);
    return value != nullptr && *value != '\0';
}

bool wantsPanel(int argc, char **argv)
{
    constexpr std::array<std::string_view, 4> options{"--background", "--quick-add", "--settings", "--quit"};
    if (argc > 2 || (argc == 2 && std::ranges::find(options, argv[1]) == options.end()))
        return false;
    return isSet("DISPLAY") || isSet("WAYLAND_DISPLAY") || isSet("QT_QPA_PLATFORM");
}

/// Does not return where there is such a program, in this folder of the one that remains where so many parts
/// are left off this program's own path. It is told its path as the first word, as the windows' class is made
/// from it.
void tryToBecome(int partsOff, std::string_view folder, std::string_view name, char **argv)
{
    Path path{};
    const ssize_t length = ::readlink("/proc/self/exe", path.data(), PATH_MAX);
    if (length <= 0 || length >= PATH_MAX)
        return;
    char *slash = nullptr;
    for (; partsOff > 0; --partsOff) {
        slash = std::strrchr(path.data(), '/');
        if (slash == nullptr)
            return;
        *slash = '\0';
    }
    const auto room = static_cast<std::size_t>(path.data() + path.size() - slash);
    if (folder.size() + name.size() >= room)
        return;
    *std::ranges::copy(name, std::ranges::copy(folder, slash).out).out = '\0';
    argv[0] = path.data();
    ::execv(path.data(), argv);
}

/// Beside each other where they were built, in bin and libexec where they were installed.
void become(std::string_view name, char **argv)
{
    tryToBecome(1, "/", name, argv);
    tryToBecome(2, "/libexec/orbitledge/", name, argv);
}

} // namespace

int main(int argc, char **argv)
{
    if (wantsPanel(argc, argv))
        become("orbitledge-desktop", argv);
    become("orbitledge-command", argv);
    constexpr std::string_view sentence
        = "orbitledge: the program is not whole: orbitledge-command is missing\n";
    (void)!::write(STDERR_FILENO, sentence.data(), sentence.size());
    return EXIT_FAILURE;
}
