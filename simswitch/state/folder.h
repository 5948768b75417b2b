/*
 * folder.h: the state folder: what of the switch outlives the process.
 *
 *   lock          who holds the folder, one process at a time
 *   commits       how many transactions each database has taken
 *   chip.db       the chip's tables and the forwarding manager's own (chip_file.h)
 *   store.sqlite  the persistent store (services/store.h)
 *
 * What a finished call has written is there however the process ends; only a
 * fall of the whole machine may take it away. SQLite drops a damaged end of its
 * log in silence, which would set the switch back to an earlier moment; the
 * file commits, kept apart from it, tells.
 *
 * The first failure ends all writing, so that the folder keeps one moment: the
 * last at which all was well. file.h has the databases.
 */
#pragma once

#include "services/sqlite.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>

namespace simswitch::state
{

/** Why a state folder can't be used: what, where, and what to do. */
class Error : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/** The databases of a folder. */
enum class Database : std::uint8_t { chip, store };

/** A file descriptor that is closed with its owner. */
class Descriptor
{
public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor();
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    int get() const { return number_; }

private:
    int number_;
};

/** A state folder that this process holds. */
class Folder
{
public:
    /**
     * Makes the folder where there is none, and takes it.
     *
     * @param path  the folder; the owner alone can read it and its files
     * @throws Error when it can't be made or written, another process holds
     *         it, or its file commits is damaged
     */
    explicit Folder(std::filesystem::path path);

    const std::filesystem::path &path() const { return path_; }
    /** The file of a database. */
    std::filesystem::path file(Database database) const;
    /** Makes a database's file where there is none, readable by its owner alone. */
    void secure(Database database) const;

    /** The number of transactions that a database was last known to have taken. */
    std::uint64_t commits(Database database) const;
    /** Notes that a database has taken so many. @throws Error when it can't be written */
    void note_commits(Database database, std::uint64_t count);

    /** The error for a folder whose files can't be trusted, with what to do about it. */
    Error damaged(std::string_view what) const;

    /** The same for what SQLite refused while the folder was opened. */
    Error unusable(const services::sqlite::Error &error) const;

    /** Remembers the first failure. */
    void fail(std::string_view reason);
    /** The first failure, empty while all is well. */
    const std::string &failure() const { return failure_; }

private:
    std::filesystem::path path_;
    Descriptor lock_;
    Descriptor counts_file_;
    std::array<std::uint64_t, 2> counts_{};
    std::string failure_;
};

} // namespace simswitch::state
