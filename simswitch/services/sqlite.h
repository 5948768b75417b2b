/*
 * sqlite.h: a database file and its statements, with their ends tied to their
 * owners. What is committed survives the end of the process at any point; only
 * a fall of the whole machine may lose it, so nothing waits for the disk.
 */
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace simswitch::services::sqlite
{

/** What SQLite refused, with file and reason in the text. */
class Error : public std::runtime_error
{
public:
    /** @param is_damage  the file is at fault, not the room on the disk or the right to write */
    explicit Error(const std::string &text, bool is_damage = false)
        : std::runtime_error(text), is_damage(is_damage)
    {
    }
    bool is_damage;
};

/** What a damaged file says, for a message: in one line, what isn't printable ASCII as "?". */
std::string printable(std::string_view text);

/** A database. All its functions throw Error. */
class Database
{
public:
    /**
     * Opens a file, made when it isn't there; an empty path is a database in
     * memory. A file that was not closed stays as it is, its log beside it,
     * until tidy_at_close.
     */
    explicit Database(const std::filesystem::path &file);

    /** Has the log brought into the file at the end: what it holds was looked at. */
    void tidy_at_close();
    /** Whether it can only be read. */
    bool is_read_only() const;

    /** Runs statements that give nothing back. */
    void run(const std::string &statements);
    /** The error of what was just tried. */
    Error error(std::string_view what) const;
    /** Throws it. */
    [[noreturn]] void fail(std::string_view what) const;
    sqlite3 *handle() const { return handle_.get(); }

private:
    struct Close {
        void operator()(sqlite3 *handle) const noexcept;
    };
    std::string name_;
    std::unique_ptr<sqlite3, Close> handle_;
};

/** A prepared statement. It must end before its database. All its functions throw Error. */
class Statement
{
public:
    Statement(Database &database, std::string_view text);

    // Binds the next parameter, from the first one on.
    Statement &bind(std::int64_t value);
    Statement &bind(std::span<const unsigned char> bytes);
    Statement &bind(std::string_view text);
    Statement &bind_null();
    /** Binds the checksum of all that was bound before, for sum_matches. */
    Statement &bind_sum();

    /** Goes to the next row. Returns false after the last. On a failure it is ready for new
     * parameters. */
    bool step();
    /** Runs it to its end and makes it ready for new parameters. */
    void run();
    /** Makes it ready for new parameters. */
    void reset();

    // Reads a column of the present row, from 0.
    bool is_null(int column) const;
    std::int64_t integer(int column) const;
    std::vector<unsigned char> bytes(int column) const;
    std::string text(int column) const;
    /** Whether the last column is the checksum of those before it. SQLite itself doesn't see a
     * changed byte in a row. */
    bool sum_matches() const;

private:
    static constexpr std::uint64_t SUM_START = 0xcbf29ce484222325U;
    struct Finalize {
        void operator()(sqlite3_stmt *handle) const noexcept;
    };
    Database &database_;
    std::unique_ptr<sqlite3_stmt, Finalize> handle_;
    int next_ = 1;
    std::uint64_t sum_ = SUM_START;
};

} // namespace simswitch::services::sqlite
