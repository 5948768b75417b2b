/*
 * page_file.cpp: see page_file.h.
 */
#include "page/page_file.h"

#include "config/json_tree.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <system_error>

namespace lab::page
{

namespace fs = std::filesystem;

namespace
{

constexpr int LINKS_FOLLOWED = 40;

[[noreturn]] void page_not_written(const fs::path &out, int error)
{
    throw config::UnusableFile(
        fmt::format("{}: cannot be written: {}", out.string(), std::strerror(error)));
}

/** A file that grows beyond a limit is a failed write here, not the end of the process. */
class SizeSignalIgnored
{
public:
    SizeSignalIgnored()
    {
        struct sigaction ignored = {};
        ignored.sa_handler = SIG_IGN;
        sigaction(SIGXFSZ, &ignored, &before_);
    }
    ~SizeSignalIgnored() { sigaction(SIGXFSZ, &before_, nullptr); }
    SizeSignalIgnored(const SizeSignalIgnored &) = delete;
    SizeSignalIgnored &operator=(const SizeSignalIgnored &) = delete;

private:
    struct sigaction before_ = {};
};

/** The page beside its place; it goes when this goes, unless it was renamed. */
class PageDraft
{
public:
    PageDraft(const fs::path &shown, const fs::path &place)
        : shown_(shown), place_(place),
          name_((place.parent_path() / ("." + place.filename().string() + "-XXXXXX")).string()),
          file_(mkstemp(name_.data()))
    {
        if (file_ < 0) {
            page_not_written(shown_, errno);
        }
    }
    ~PageDraft()
    {
        close(file_);
        if (!name_.empty()) {
            unlink(name_.c_str());
        }
    }
    PageDraft(const PageDraft &) = delete;
    PageDraft &operator=(const PageDraft &) = delete;

    void write_whole(std::string_view bytes) const
    {
        while (!bytes.empty()) {
            const ssize_t done = write(file_, bytes.data(), bytes.size());
            if (done < 0 && errno != EINTR) {
                page_not_written(shown_, errno);
            }
            bytes.remove_prefix(done > 0 ? static_cast<std::size_t>(done) : 0);
        }
        // It lies open to others as any file that is made, not to its owner only.
        constexpr mode_t FILE_MODE = 0666;
        const mode_t mask = umask(0);
        umask(mask);
        if (fchmod(file_, FILE_MODE & ~mask) != 0 || fsync(file_) != 0) {
            page_not_written(shown_, errno);
        }
    }

    void take_place()
    {
        if (std::rename(name_.c_str(), place_.c_str()) != 0) {
            page_not_written(shown_, errno);
        }
        name_.clear();
    }

private:
    const fs::path &shown_; ///< as the user named it
    const fs::path &place_;
    std::string name_; ///< empty once it was renamed
    int file_;
};

} // namespace

fs::path page_place(const fs::path &out)
{
    fs::path place = out;
    for (int i = 0; i < LINKS_FOLLOWED; ++i) {
        std::error_code error;
        if (!fs::is_symlink(fs::symlink_status(place, error))) {
            return place;
        }
        // An absolute target takes the place of the folder.
        place = place.parent_path() / fs::read_symlink(place, error);
    }
    return out;
}

void write_page(const fs::path &out, std::string_view document)
{
    const fs::path place = page_place(out);
    std::error_code error;
    const auto status = fs::symlink_status(place, error);
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        throw config::UnusableFile(fmt::format(
            "{}: is {}; name a file", out.string(),
            fs::is_directory(status) ? "a folder" : "no regular file, and is left alone"));
    }
    const SizeSignalIgnored quiet;
    PageDraft draft(out, place);
    draft.write_whole(document);
    draft.take_place();
}

} // namespace lab::page
