/*
 * processes.cpp: see processes.h.
 */
#include "faults/processes.h"

#include <fmt/format.h>

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <sstream>
#include <stdexcept>
#include <utility>

#if defined(RTIFHAL_WITH_COVERAGE)
extern "C" {
#include <gcov.h>
}
#endif

namespace lab::faults
{

namespace
{

/** What a process that ends by _exit would not write: how often its lines have run. */
void write_coverage()
{
#if defined(RTIFHAL_WITH_COVERAGE)
    __gcov_dump();
#endif
}

/** The child's part; it never returns into the parent's code. */
[[noreturn]] void run_body(const std::function<Lines()> &body, int out)
{
    std::string said;
    bool well = true;
    try {
        for (const std::string &line : body()) {
            said += line + "\n";
        }
    } catch (const std::exception &error) {
        said = fmt::format("{}\n", error.what());
        well = false;
    }
    std::size_t written = 0;
    while (written < said.size()) {
        const ssize_t part = write(out, said.data() + written, said.size() - written);
        if (part <= 0) {
            well = false;
            break;
        }
        written += static_cast<std::size_t>(part);
    }
    write_coverage();
    _exit(well ? 0 : 1);
}

Lines read_lines(int in)
{
    std::string said;
    std::array<char, 65536> buffer{};
    for (ssize_t size = 0; (size = read(in, buffer.data(), buffer.size())) > 0;) {
        said.append(buffer.data(), static_cast<std::size_t>(size));
    }
    Lines lines;
    std::istringstream stream(said);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

} // namespace

Process::Process(const std::function<Lines()> &body)
{
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) {
        throw std::runtime_error("no pipe");
    }
    child_ = fork();
    if (child_ < 0) {
        close(ends[0]);
        close(ends[1]);
        throw std::runtime_error("no process");
    }
    if (child_ == 0) {
        close(ends[0]);
        run_body(body, ends[1]);
    }
    close(ends[1]);
    in_ = ends[0];
}

Process::Process(Process &&other) noexcept
    : child_(std::exchange(other.child_, 0)), in_(std::exchange(other.in_, -1))
{
}

Process::~Process()
{
    if (child_ > 0) {
        close(in_);
        waitpid(child_, nullptr, 0);
    }
}

Ended Process::wait()
{
    Ended ended;
    ended.lines = read_lines(in_);
    close(in_);
    int status = 0;
    waitpid(std::exchange(child_, 0), &status, 0);
    ended.by_kill = WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
    ended.well = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    ended.how = WIFSIGNALED(status) ? fmt::format("signal {}", WTERMSIG(status))
                                    : fmt::format("exit code {}", WEXITSTATUS(status));
    return ended;
}

Ended in_process(const std::function<Lines()> &body)
{
    return Process(body).wait();
}

void die()
{
    (void)raise(SIGKILL);
    std::abort();
}

Folder::Folder()
{
    const std::filesystem::path in_memory = "/dev/shm";
    const bool has_memory = access(in_memory.c_str(), W_OK | X_OK) == 0;
    std::string name =
        ((has_memory ? in_memory : std::filesystem::temp_directory_path()) / "rtif-sweep-XXXXXX")
            .string();
    if (mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("no temporary folder");
    }
    path_ = name;
}

Folder::~Folder()
{
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

} // namespace lab::faults
