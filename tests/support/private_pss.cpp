/*
 * private_pss.cpp: see private_pss.h.
 */
#include "support/private_pss.h"

#include "services/pss_folder.h"

#include <fmt/format.h>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string_view>

namespace rtifhal_test
{

namespace
{

namespace fs = std::filesystem;

const char *const FOLDER = simswitch::services::PSS_FOLDER;

std::string failed(std::string_view what)
{
    return fmt::format("{}: {}", what, std::strerror(errno));
}

/** Whether the process has its own folder. */
const std::string &private_obstacle()
{
    return simswitch::services::make_pss_folder_private();
}

/** An opened folder that still is the one of that name: another test may have removed it. */
bool still_there(int opened)
{
    struct stat mine = {};
    struct stat named = {};
    return fstat(opened, &mine) == 0 && stat(FOLDER, &named) == 0 && mine.st_ino == named.st_ino &&
           mine.st_dev == named.st_dev;
}

} // namespace

PrivatePss::PrivatePss()
{
    if (!private_obstacle().empty()) {
        borrow_the_real_folder();
    }
}

PrivatePss::~PrivatePss()
{
    if (!obstacle_.empty()) {
        return;
    }
    empty();
    if (made_) {
        rmdir(FOLDER);
    }
    if (lock_ >= 0) {
        close(lock_);
    }
}

fs::path PrivatePss::folder()
{
    return FOLDER;
}

void PrivatePss::borrow_the_real_folder()
{
    do {
        if (lock_ >= 0) {
            close(lock_);
        }
        made_ = mkdir(FOLDER, 0755) == 0;
        lock_ = open(FOLDER, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (lock_ < 0) {
            obstacle_ = fmt::format("{}, and {}", private_obstacle(), failed("/mnt/pss"));
            return;
        }
        flock(lock_, LOCK_EX);
    } while (!still_there(lock_));

    std::error_code error;
    if (!fs::is_empty(FOLDER, error) || access(FOLDER, W_OK) != 0) {
        obstacle_ = fmt::format("{}, and /mnt/pss is in use", private_obstacle());
        close(lock_);
    }
}

void PrivatePss::empty() const
{
    std::error_code error;
    for (const auto &entry : fs::directory_iterator(FOLDER, error)) {
        fs::remove_all(entry.path(), error);
    }
}

} // namespace rtifhal_test
