/*
 * pss_folder.cpp: see pss_folder.h.
 */
#include "services/pss_folder.h"

#include <fmt/format.h>

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <utility>
#include <vector>

namespace simswitch::services
{

namespace
{

namespace fs = std::filesystem;

const char *const PARENT = "/mnt";
const char *const FOLDER = PSS_FOLDER;

std::string failed(std::string_view what)
{
    return fmt::format("{}: {}", what, std::strerror(errno));
}

bool write_whole(const char *file, const std::string &text)
{
    std::ofstream stream(file);
    return static_cast<bool>(stream << text << std::flush);
}

/** A mount namespace, inside a user namespace of its own where the process isn't root. */
std::string enter_namespace()
{
    const auto user = geteuid();
    const auto group = getegid();
    if (user == 0 && unshare(CLONE_NEWNS) == 0) {
        return {};
    }
    if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) {
        return failed("no mount namespace");
    }
    if (!write_whole("/proc/self/setgroups", "deny") ||
        !write_whole("/proc/self/uid_map", fmt::format("{0} {0} 1\n", user)) ||
        !write_whole("/proc/self/gid_map", fmt::format("{0} {0} 1\n", group))) {
        return failed("no user map in the new namespace");
    }
    // The leak checker looks at this process as a debugger does.
    prctl(PR_SET_DUMPABLE, 1);
    return {};
}

/** Opens the folders below /mnt, to bring them back once /mnt is covered. */
std::vector<std::pair<fs::path, int>> neighbours()
{
    std::vector<std::pair<fs::path, int>> open_folders;
    std::error_code error;
    for (const auto &entry : fs::directory_iterator(PARENT, error)) {
        if (entry.is_directory(error) && !entry.is_symlink(error)) {
            const int opened = open(entry.path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
            open_folders.emplace_back(entry.path(), opened);
        }
    }
    return open_folders;
}

/** Covers /mnt with memory, its other folders bound in again, and makes /mnt/pss in it. */
std::string cover_parent()
{
    const auto folders = neighbours();
    const bool covered = mount("none", PARENT, "tmpfs", 0, "mode=755") == 0;
    std::string obstacle = covered ? "" : failed("no file system in memory on /mnt");
    for (const auto &[path, opened] : folders) {
        const auto origin = fmt::format("/proc/self/fd/{}", opened);
        if (covered &&
            (mkdir(path.c_str(), 0755) != 0 ||
             mount(origin.c_str(), path.c_str(), "none", MS_BIND | MS_REC, nullptr) != 0)) {
            obstacle = failed("no bind mount of " + path.string());
        }
        close(opened);
    }
    if (obstacle.empty() && mkdir(FOLDER, 0755) != 0) {
        obstacle = failed("mkdir /mnt/pss");
    }
    return obstacle;
}

std::string make_private()
{
    if (auto obstacle = enter_namespace(); !obstacle.empty()) {
        return obstacle;
    }
    if (mount("none", "/", "none", MS_REC | MS_PRIVATE, nullptr) != 0) {
        return failed("mounts can't be made private");
    }
    std::error_code error;
    if (!fs::is_directory(FOLDER, error)) {
        return cover_parent();
    }
    return mount("none", FOLDER, "tmpfs", 0, "mode=755") == 0
               ? std::string()
               : failed("no file system in memory on /mnt/pss");
}

} // namespace

const std::string &make_pss_folder_private()
{
    static const std::string obstacle = make_private();
    return obstacle;
}

} // namespace simswitch::services
