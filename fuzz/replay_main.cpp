// Feeds stored inputs to a fuzz target, so that every build checks what a search once found.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

namespace {

/// Number of files that were fed.
int replay(const std::filesystem::path &folder)
{
    std::set<std::filesystem::path> paths; // in the same order everywhere
    for (const auto &entry : std::filesystem::directory_iterator(folder)) {
        if (entry.is_regular_file())
            paths.insert(entry.path());
    }
    for (const auto &path : paths) {
        // Said before, because a violation ends the program.
        std::printf("%s\n", path.c_str());
        std::fflush(stdout);
        std::ifstream file(path, std::ios::binary);
        if (!file.is_open()) {
            std::fprintf(stderr, "Cannot read %s\n", path.c_str());
            std::exit(1);
        }
        // Of exactly this size, so that a checker of memory knows where the input ends.
        const std::vector<std::uint8_t> input(std::istreambuf_iterator<char>(file), {});
        LLVMFuzzerTestOneInput(input.data(), input.size());
    }
    return static_cast<int>(paths.size());
}

} // namespace

/// Arguments: the folder of seeds, which must hold some, and further folders, which need not exist.
int main(int argc, char **argv)
{
    if (argc < 2) {
        std::fprintf(stderr, "Usage: %s SEEDS [FOLDER...]\n", argv[0]);
        return 2;
    }
    if (!std::filesystem::is_directory(argv[1])) {
        std::fprintf(stderr, "%s is no folder\n", argv[1]);
        return 1;
    }
    int count = replay(argv[1]);
    if (count == 0) {
        std::fprintf(stderr, "%s holds no inputs\n", argv[1]);
        return 1;
    }
    for (int i = 2; i < argc; ++i) {
        if (std::filesystem::is_directory(argv[i]))
            count += replay(argv[i]);
    }
    std::printf("%d inputs\n", count);
    return 0;
}
