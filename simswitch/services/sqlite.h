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
    using std::runtime_error::runtime_error;
};

/** A database. All its functions throw Error. */
class Database
{
public:
    /** Opens a file, made when it isn't there; an empty path is a database in memory. */
    explicit Database(const std::filesystem::path &file);

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
    Statement &bind_null();

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

private:
    struct Finalize {
        void operator()(sqlite3_stmt *handle) const noexcept;
    };
    Database &database_;
    std::unique_ptr<sqlite3_stmt, Finalize> handle_;
    int next_ = 1;
};

/** A transaction: undone at its end unless it was committed. */
class Transaction
{
public:
    explicit Transaction(Database &database);
    ~Transaction();
    Transaction(const Transaction &) = delete;
    Transaction &operator=(const Transaction &) = delete;

    void commit();

private:
    Database &database_;
    bool open_ = true;
};

} // namespace simswitch::services::sqlite
