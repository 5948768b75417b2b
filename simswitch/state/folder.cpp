/*
 * folder.cpp: the folder, its lock and its count of transactions.
 */
#include "state/folder.h"

#include <cerrno>
#include <charconv>
#include <cstring>
#include <fcntl.h>
#include <fmt/format.h>
#include <fstream>
#include <iterator>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace simswitch::state
{

namespace
{

namespace fs = std::filesystem;

constexpr mode_t OWNER_ONLY_FILE = 0600;
constexpr mode_t OWNER_ONLY_FOLDER = 0700;
constexpr mode_t OTHERS = 0077;
constexpr std::size_t COMMAND_MAX = 200; ///< bytes of the command line in the lock file

constexpr std::array<const char *, 2> FILE_NAMES = {"chip.db", "store.sqlite"};
/** A line of the file commits: "store.sqlite 00000000000000000007". */
constexpr std::size_t NAME_WIDTH = 13;
constexpr std::size_t COUNT_WIDTH = 20;
constexpr std::size_t LINE_WIDTH = NAME_WIDTH + COUNT_WIDTH + 1;

std::string system_text()
{
    return std::generic_category().message(errno);
}

std::string count_line(std::size_t slot, std::uint64_t count)
{
    return fmt::format("{:<13}{:020}\n", FILE_NAMES.at(slot), count);
}

/** A folder of our own or a new one is the owner's alone; any other's mode is its owner's affair.
 */
fs::path make_folder(fs::path path)
{
    std::error_code error;
    if (!fs::exists(path, error)) {
        fs::create_directories(path.parent_path(), error);
        if (mkdir(path.c_str(), OWNER_ONLY_FOLDER) != 0) {
            throw Error(fmt::format("{}: can't make the state folder: {}; name a folder that can "
                                    "be written",
                                    path.string(), system_text()));
        }
    }
    struct stat found {
    };
    if (stat(path.c_str(), &found) != 0 || !S_ISDIR(found.st_mode)) {
        throw Error(fmt::format("{}: is no folder; name another for the state", path.string()));
    }
    const bool is_ours = fs::is_empty(path, error) || fs::exists(path / FILE_NAMES.front(), error);
    if (is_ours && (found.st_mode & OTHERS) != 0) {
        (void)chmod(path.c_str(), OWNER_ONLY_FOLDER);
    }
    return path;
}

int open_own(const fs::path &file)
{
    const int number =
        open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, OWNER_ONLY_FILE);
    struct stat found {
    };
    if (number < 0 || fstat(number, &found) != 0) {
        throw Error(fmt::format("{}: can't be written: {}; make the folder writable, or name "
                                "another",
                                file.string(), system_text()));
    }
    if ((found.st_mode & OTHERS) != 0) {
        (void)fchmod(number, OWNER_ONLY_FILE);
    }
    return number;
}

std::string content_of(const fs::path &file)
{
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

/** This process for people: "4711 (rtif up leaf.json)". */
std::string own_name()
{
    std::string command = content_of("/proc/self/cmdline").substr(0, COMMAND_MAX);
    for (char &letter : command) {
        letter = static_cast<unsigned char>(letter) < ' ' ? ' ' : letter;
    }
    command.erase(command.find_last_not_of(' ') + 1);
    return fmt::format("{} ({})", getpid(), command);
}

bool put(int number, std::string_view text, std::size_t place)
{
    const ssize_t written = pwrite(number, text.data(), text.size(), static_cast<off_t>(place));
    return written == static_cast<ssize_t>(text.size());
}

int take_lock(const fs::path &path)
{
    const fs::path file = path / "lock";
    const int number = open_own(file);
    if (flock(number, LOCK_EX | LOCK_NB) != 0) {
        const std::string holder = content_of(file);
        close(number);
        throw Error(fmt::format("{}: in use by process {}; wait until it has ended, or name "
                                "another folder",
                                path.string(),
                                holder.empty() ? "unknown" : services::sqlite::printable(holder)));
    }
    const std::string name = own_name();
    if (ftruncate(number, 0) != 0 || !put(number, name, 0)) {
        const std::string reason = system_text();
        close(number);
        throw Error(fmt::format("{}: can't be written: {}; make room, or name another folder",
                                file.string(), reason));
    }
    return number;
}

std::uint64_t count_in(std::string_view line, std::size_t slot, bool &good)
{
    std::uint64_t count = 0;
    const std::string_view digits = line.substr(NAME_WIDTH, COUNT_WIDTH);
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), count);
    good = good && error == std::errc() && end == digits.data() + digits.size() &&
           line == count_line(slot, count);
    return count;
}

} // namespace

Descriptor::~Descriptor()
{
    close(number_);
}

Folder::Folder(fs::path path)
    : path_(make_folder(std::move(path))), lock_(take_lock(path_)),
      counts_file_(open_own(path_ / "commits"))
{
    const std::string text = content_of(path_ / "commits");
    if (text.empty()) {
        for (const Database database : {Database::chip, Database::store}) {
            note_commits(database, 0);
        }
        return;
    }
    bool good = text.size() == counts_.size() * LINE_WIDTH;
    for (std::size_t slot = 0; good && slot < counts_.size(); ++slot) {
        const auto line = std::string_view(text).substr(slot * LINE_WIDTH, LINE_WIDTH);
        counts_.at(slot) = count_in(line, slot, good);
    }
    if (!good) {
        throw damaged("commits: is not what was written to it");
    }
}

fs::path Folder::file(Database database) const
{
    return path_ / FILE_NAMES.at(static_cast<std::size_t>(database));
}

void Folder::secure(Database database) const
{
    const Descriptor made(open_own(file(database)));
}

std::uint64_t Folder::commits(Database database) const
{
    return counts_.at(static_cast<std::size_t>(database));
}

void Folder::note_commits(Database database, std::uint64_t count)
{
    const auto slot = static_cast<std::size_t>(database);
    if (!put(counts_file_.get(), count_line(slot, count), slot * LINE_WIDTH)) {
        throw Error(
            fmt::format("{}: can't be written: {}", (path_ / "commits").string(), system_text()));
    }
    counts_.at(slot) = count;
}

Error Folder::damaged(std::string_view what) const
{
    return Error(fmt::format("{}: {}; the state is damaged: put a copy of the folder in its place, "
                             "or remove the folder to begin with an empty switch",
                             path_.string(), what));
}

Error Folder::unusable(const services::sqlite::Error &error) const
{
    if (error.is_damage) {
        return damaged(error.what());
    }
    return Error(
        fmt::format("{}; make room and make the folder writable, or name another", error.what()));
}

void Folder::fail(std::string_view reason)
{
    if (failure_.empty()) {
        failure_ = fmt::format("{}; the state folder keeps the moment before and takes nothing "
                               "more: make room or make it writable, and start again",
                               reason);
    }
}

} // namespace simswitch::state
