/*
 * restarted.cpp: see restarted.h.
 */
#include "commands/restarted.h"

#include "commands/run.h"

#include <fmt/format.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <iterator>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace lab::commands
{

namespace
{

using l3lif::RestartMode;

constexpr std::array ALL_MODES = {RestartMode::restore, RestartMode::fast, RestartMode::cold};
constexpr std::size_t PARTS = 5;
constexpr std::size_t BLOCK = 65536;

[[noreturn]] void fail(const char *what)
{
    throw std::runtime_error(
        fmt::format("the next process can't be started: {}: {}", what, std::strerror(errno)));
}

template <typename Number> Number number(std::string_view text)
{
    Number value{};
    if (std::from_chars(text.data(), text.data() + text.size(), value).ec != std::errc{}) {
        throw std::runtime_error(fmt::format("'{}' is no number", text));
    }
    return value;
}

void write_all(int file, const char *data, std::size_t size)
{
    while (size > 0) {
        const ssize_t written = write(file, data, size);
        if (written < 0) {
            fail("write");
        }
        data += written;
        size -= static_cast<std::size_t>(written);
    }
}

/** A file in memory with what is left of a stream, at its begin; it outlives this program. */
int rest_in_memory(std::istream &rest)
{
    const int file = memfd_create("script", 0);
    if (file < 0) {
        fail("memfd_create");
    }
    std::vector<char> block(BLOCK);
    while (rest.read(block.data(), static_cast<std::streamsize>(block.size())), rest.gcount() > 0) {
        write_all(file, block.data(), static_cast<std::size_t>(rest.gcount()));
    }
    return file;
}

} // namespace

std::string Restarted::word() const
{
    return fmt::format("{}\n{}\n{}\n{}\n{}", l3lif::mode_name(mode), line, code, name,
                       folder.string());
}

Restarted Restarted::parse(const std::string &word)
{
    std::vector<std::string> parts;
    std::size_t begin = 0;
    while (parts.size() + 1 < PARTS) {
        const std::size_t end = word.find('\n', begin);
        if (end == std::string::npos) {
            throw std::runtime_error("this is no restart of a script");
        }
        parts.push_back(word.substr(begin, end - begin));
        begin = end + 1;
    }
    Restarted restarted{.line = number<std::size_t>(parts[1]),
                        .code = number<int>(parts[2]),
                        .name = parts[3],
                        .folder = word.substr(begin)};
    for (const RestartMode mode : ALL_MODES) {
        if (l3lif::mode_name(mode) == parts[0]) {
            restarted.mode = mode;
        }
    }
    return restarted;
}

void go_on_in_another_process(const RunOptions &options, const Restarted &restarted,
                              std::istream &rest)
{
    const int file = rest_in_memory(rest);
    std::vector<std::string> words = {
        "rtif",        "run",
        "--chip",      options.chip == simswitch::chip::Kind::trident2 ? "trident2" : "trident",
        "--state",     options.state_dir.string(),
        "--restarted", restarted.word()};
    if (options.quiet) {
        words.emplace_back("--quiet");
    }
    words.push_back(fmt::format("/proc/self/fd/{}", file));
    std::vector<char *> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string &word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    execv("/proc/self/exe", arguments.data());
    fail("execv");
}

} // namespace lab::commands
