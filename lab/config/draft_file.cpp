/*
 * draft_file.cpp: see draft_file.h.
 */
#include "config/draft_file.h"

#include "config/json_tree.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace lab::config
{

DraftFile::DraftFile(std::filesystem::path place, std::string shown)
    : place_(std::move(place)), shown_(std::move(shown)),
      name_((place_.parent_path() / ".rtif-XXXXXX").string()),
      file_(mkostemp(name_.data(), O_CLOEXEC))
{
    if (file_ < 0) {
        fail();
    }
    // A file that grows beyond a limit would end the process.
    struct sigaction ignored = {};
    ignored.sa_handler = SIG_IGN;
    sigaction(SIGXFSZ, &ignored, &before_);
}

DraftFile::~DraftFile()
{
    sigaction(SIGXFSZ, &before_, nullptr);
    close(file_);
    if (!name_.empty()) {
        unlink(name_.c_str());
    }
}

void DraftFile::fail() const
{
    const int error = errno;
    throw UnusableFile(fmt::format("{}: cannot be written: {}", shown_, std::strerror(error)));
}

void DraftFile::write_whole(std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t done = write(file_, bytes.data(), bytes.size());
        if (done < 0 && errno != EINTR) {
            fail();
        }
        bytes.remove_prefix(done > 0 ? static_cast<std::size_t>(done) : 0);
    }
    if (fsync(file_) != 0) {
        fail();
    }
}

void DraftFile::open_to_others()
{
    constexpr mode_t FILE_MODE = 0666;
    const mode_t mask = umask(0);
    umask(mask);
    if (fchmod(file_, FILE_MODE & ~mask) != 0) {
        fail();
    }
}

void DraftFile::take_place(bool replace)
{
    // Somebody else may have put a file there meanwhile.
    const unsigned flags = replace ? 0U : RENAME_NOREPLACE;
    int refused = renameat2(AT_FDCWD, name_.c_str(), AT_FDCWD, place_.c_str(), flags);
    if (refused != 0 && errno == EINVAL) {
        // Not every file system knows the flag.
        refused = std::rename(name_.c_str(), place_.c_str());
    }
    if (refused != 0) {
        fail();
    }
    name_.clear();
}

} // namespace lab::config
