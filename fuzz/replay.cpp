/*
 * replay.cpp: gives a fuzzer's target the files of a corpus, one by one: what was found once stays
 * mended, with any compiler. Without libFuzzer; tests run it.
 *
 *     fuzz_replay TARGET FILE-OR-FOLDER...
 */
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

// Each target's LLVMFuzzerTestOneInput has the target's name in this program.
#define TARGET(name) extern "C" int fuzz_##name(const std::uint8_t *data, std::size_t size);
#include "targets.inc"
#undef TARGET

namespace
{

namespace fs = std::filesystem;

struct Target {
    std::string_view name;
    int (*run)(const std::uint8_t *data, std::size_t size);
};

constexpr Target TARGETS[] = {
#define TARGET(name) {#name, fuzz_##name},
#include "targets.inc"
#undef TARGET
};

/** A file, or the files of a folder in the order of their names. */
std::vector<fs::path> files_of(const fs::path &path)
{
    if (!fs::is_directory(path)) {
        return {path};
    }
    std::vector<fs::path> files;
    for (const auto &entry : fs::directory_iterator(path)) {
        files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

int replay(const Target &target, const std::vector<fs::path> &paths)
{
    std::size_t count = 0;
    for (const fs::path &path : paths) {
        for (const fs::path &file : files_of(path)) {
            std::ifstream in(file, std::ios::binary);
            if (!in) {
                std::fprintf(stderr, "fuzz_replay: %s can't be read\n", file.c_str());
                return 1;
            }
            const std::string bytes{std::istreambuf_iterator<char>(in), {}};
            // Told first: what fails may end the process.
            std::fprintf(stderr, "%s\n", file.c_str());
            target.run(reinterpret_cast<const std::uint8_t *>(bytes.data()), bytes.size());
            ++count;
        }
    }
    std::printf("%zu inputs\n", count);
    return count == 0 ? 1 : 0;
}

} // namespace

int main(int argc, char **argv)
{
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    const auto *const target =
        std::find_if(std::begin(TARGETS), std::end(TARGETS), [&arguments](const Target &known) {
            return !arguments.empty() && known.name == arguments.front();
        });
    if (target == std::end(TARGETS) || arguments.size() < 2) {
        std::fputs("usage: fuzz_replay TARGET FILE-OR-FOLDER...; the targets are", stderr);
        for (const Target &known : TARGETS) {
            std::fprintf(stderr, " %s", std::string(known.name).c_str());
        }
        std::fputs("\n", stderr);
        return 2;
    }
    try {
        return replay(*target, {arguments.begin() + 1, arguments.end()});
    } catch (const std::exception &error) {
        std::fprintf(stderr, "fuzz_replay: an exception came out of %s: %s\n",
                     arguments.front().c_str(), error.what());
    }
    return 1;
}
