/*
 * restart_state.cpp: see restart_state.h.
 */
#include "l3lif/restart_state.h"

#include "config/default_route_file.h"
#include "config/json_tree.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <system_error>

namespace lab::l3lif
{

namespace
{

namespace fs = std::filesystem;

// What there may be of a state folder; the lock is each process's own.
constexpr std::array FILES = {"commits",      "chip.db",          "chip.db-wal",
                              "store.sqlite", "store.sqlite-wal", KEPT_CONFIG};

std::string content_of(const fs::path &file)
{
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

void require_state(const fs::path &state_dir)
{
    std::error_code error;
    if (!fs::is_directory(state_dir, error)) {
        throw std::runtime_error(
            fmt::format("{}: is no folder; name the state folder of a 'rtif up --state DIR'",
                        state_dir.string()));
    }
    if (!fs::exists(state_dir / "chip.db", error)) {
        throw std::runtime_error(fmt::format(
            "{}: holds no state of a switch; 'rtif up --state DIR' makes one", state_dir.string()));
    }
}

/** Holds the lock of a state folder, without a mark of this process in it. */
class Lock
{
public:
    explicit Lock(const fs::path &state_dir)
        : number_(open((state_dir / "lock").c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW))
    {
        if (number_ >= 0 && flock(number_, LOCK_SH | LOCK_NB) != 0) {
            const std::string holder = content_of(state_dir / "lock");
            close(number_);
            throw std::runtime_error(
                fmt::format("{}: in use by process {}; wait until it has ended", state_dir.string(),
                            holder.empty() ? "unknown" : holder));
        }
    }
    ~Lock()
    {
        if (number_ >= 0) {
            close(number_);
        }
    }
    Lock(const Lock &) = delete;
    Lock &operator=(const Lock &) = delete;

private:
    int number_;
};

void copy_files(const fs::path &from, const fs::path &to)
{
    std::error_code error;
    for (const char *name : FILES) {
        if (!fs::exists(from / name, error)) {
            continue;
        }
        fs::copy_file(from / name, to / name, error);
        if (error) {
            throw std::runtime_error(fmt::format("{}: can't be copied to {}: {}",
                                                 (from / name).string(), to.string(),
                                                 error.message()));
        }
        // The copy of a file that only can be read is to be written.
        fs::permissions(to / name, fs::perms::owner_read | fs::perms::owner_write, error);
    }
}

} // namespace

void keep_config(const fs::path &state_dir, const fs::path &config)
{
    if (state_dir.empty()) {
        return;
    }
    std::error_code error;
    if (fs::equivalent(config, state_dir / KEPT_CONFIG, error)) {
        return;
    }
    config::put_in_place(state_dir / KEPT_CONFIG, content_of(config), true);
}

fs::path kept_config(const fs::path &state_dir)
{
    std::error_code error;
    fs::path file = state_dir / KEPT_CONFIG;
    return fs::exists(file, error) ? file : fs::path();
}

std::unique_ptr<simswitch::Switch> open_saved(const fs::path &state_dir)
{
    require_state(state_dir);
    try {
        return std::make_unique<simswitch::Switch>(simswitch::Options{.state_dir = state_dir});
    } catch (const simswitch::state::OtherChip &other) {
        return std::make_unique<simswitch::Switch>(
            simswitch::Options{.chip = other.kind(), .state_dir = state_dir});
    }
}

SavedCopy::SavedCopy(const fs::path &state_dir) : original_(state_dir)
{
    require_state(state_dir);
    const Lock lock(state_dir);
    std::error_code error;
    std::string name = (fs::temp_directory_path(error) / "rtif-check-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error(fmt::format("{}: can't be made: {}; set TMPDIR to a folder that "
                                             "can be written",
                                             name, std::generic_category().message(errno)));
    }
    copy_ = name;
    try {
        copy_files(state_dir, copy_);
    } catch (...) {
        fs::remove_all(copy_, error);
        throw;
    }
}

SavedCopy::~SavedCopy()
{
    std::error_code error;
    fs::remove_all(copy_, error);
}

std::unique_ptr<simswitch::Switch> SavedCopy::open() const
{
    try {
        return open_saved(copy_);
    } catch (const simswitch::state::Error &refused) {
        std::string text = refused.what();
        const std::string copy = copy_.string();
        for (std::size_t at = text.find(copy); at != std::string::npos; at = text.find(copy)) {
            text.replace(at, copy.size(), original_.string());
        }
        throw std::runtime_error(text);
    }
}

} // namespace lab::l3lif
