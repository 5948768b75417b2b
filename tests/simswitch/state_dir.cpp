/*
 * state_dir.cpp: see state_dir.h.
 */
#include "state_dir.h"

#include "services/sqlite.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace simswitch
{

StateDir::StateDir()
{
    std::string name = (std::filesystem::temp_directory_path() / "simswitch-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("no temporary folder");
    }
    path_ = name;
}

StateDir::~StateDir()
{
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

void StateDir::sql(const std::string &file, const std::string &statements) const
{
    services::sqlite::Database database(path_ / file);
    database.run(statements);
    database.tidy_at_close();
}

void die()
{
    (void)raise(SIGKILL);
    std::abort();
}

void killed_after(const std::function<void()> &body)
{
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        body();
        die();
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
}

std::string said_by_child(const std::function<std::string()> &body)
{
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) {
        throw std::runtime_error("no pipe");
    }
    const pid_t child = fork();
    if (child == 0) {
        std::string said;
        try {
            said = body();
        } catch (const std::exception &error) {
            said = error.what();
        }
        const ssize_t written = write(ends[1], said.data(), said.size());
        _exit(written == static_cast<ssize_t>(said.size()) ? 0 : 1);
    }
    close(ends[1]);
    std::string said;
    std::array<char, 4096> buffer{};
    for (ssize_t size = 0; (size = read(ends[0], buffer.data(), buffer.size())) > 0;) {
        said.append(buffer.data(), static_cast<std::size_t>(size));
    }
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    return said;
}

} // namespace simswitch
