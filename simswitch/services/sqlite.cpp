/*
 * sqlite.cpp: SQLite's C interface behind owners.
 */
#include "services/sqlite.h"

#include <algorithm>
#include <cerrno>
#include <fmt/format.h>
#include <sqlite3.h>
#include <system_error>

namespace simswitch::services::sqlite
{

namespace
{

constexpr int BUSY_WAIT_MS = 2000; ///< how long a reader beside us may hold a write up

/** Checksum of a row: FNV-1a over its values, each with its kind before it. */
class Sum
{
public:
    explicit Sum(std::uint64_t start) : value_(start) {}
    Sum &add(int kind, std::string_view bytes)
    {
        step(static_cast<unsigned char>(kind));
        add_word(bytes.size());
        for (const char byte : bytes) {
            step(static_cast<unsigned char>(byte));
        }
        return *this;
    }
    Sum &add(std::int64_t number)
    {
        step(SQLITE_INTEGER);
        add_word(static_cast<std::uint64_t>(number));
        return *this;
    }
    std::uint64_t value() const { return value_; }

private:
    void step(unsigned char byte) { value_ = (value_ ^ byte) * 0x100000001b3U; }
    /** A whole word in one step and a second for its upper bytes: most are small numbers. */
    void add_word(std::uint64_t word)
    {
        value_ = (value_ ^ word) * 0x100000001b3U;
        value_ = (value_ ^ (value_ >> 32U)) * 0x100000001b3U;
    }

    std::uint64_t value_;
};

std::string_view as_text(std::span<const unsigned char> bytes)
{
    return {reinterpret_cast<const char *>(bytes.data()), bytes.size()};
}

} // namespace

void Database::Close::operator()(sqlite3 *handle) const noexcept
{
    sqlite3_close_v2(handle);
}

Database::Database(const std::filesystem::path &file)
    : name_(file.empty() ? std::string(":memory:") : file.string())
{
    sqlite3 *handle = nullptr;
    errno = 0;
    const int code = sqlite3_open(name_.c_str(), &handle);
    handle_.reset(handle);
    if (code != SQLITE_OK) {
        fail("can't be opened");
    }
    sqlite3_extended_result_codes(handle, 1);
    sqlite3_busy_timeout(handle, BUSY_WAIT_MS);
    sqlite3_db_config(handle, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    // The kernel keeps what is written when the process dies. A call changes a row or two: small
    // pages make for short entries in the log.
    run("PRAGMA synchronous = OFF; PRAGMA page_size = 1024");
    if (!file.empty()) {
        run("PRAGMA journal_mode = WAL");
    }
}

void Database::tidy_at_close()
{
    sqlite3_db_config(handle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 0, nullptr);
}

bool Database::is_read_only() const
{
    return sqlite3_db_readonly(handle(), "main") == 1;
}

void Database::run(const std::string &statements)
{
    errno = 0;
    if (sqlite3_exec(handle(), statements.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        fail("can't be read or written");
    }
}

std::string printable(std::string_view text)
{
    std::string shown(text);
    std::replace_if(
        shown.begin(), shown.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    return shown;
}

Error Database::error(std::string_view what) const
{
    const int code = sqlite3_errcode(handle()) & 0xff;
    const int cause = errno;
    std::string text = fmt::format("{}: {}: {}", name_, what, printable(sqlite3_errmsg(handle())));
    if ((code == SQLITE_IOERR || code == SQLITE_CANTOPEN) && cause != 0) {
        text += fmt::format(" ({})", std::generic_category().message(cause));
    }
    // Tables and columns that are missing are damage too, hence SQLITE_ERROR.
    return Error(text, code == SQLITE_CORRUPT || code == SQLITE_NOTADB || code == SQLITE_ERROR);
}

void Database::fail(std::string_view what) const
{
    throw error(what);
}

void Statement::Finalize::operator()(sqlite3_stmt *handle) const noexcept
{
    sqlite3_finalize(handle);
}

Statement::Statement(Database &database, std::string_view text) : database_(database)
{
    sqlite3_stmt *handle = nullptr;
    const int code = sqlite3_prepare_v2(database.handle(), text.data(),
                                        static_cast<int>(text.size()), &handle, nullptr);
    handle_.reset(handle);
    if (code != SQLITE_OK) {
        database_.fail("refuses a statement");
    }
}

Statement &Statement::bind(std::int64_t value)
{
    sum_ = Sum(sum_).add(value).value();
    if (sqlite3_bind_int64(handle_.get(), next_++, value) != SQLITE_OK) {
        database_.fail("refuses a value");
    }
    return *this;
}

Statement &Statement::bind(std::span<const unsigned char> bytes)
{
    sum_ = Sum(sum_).add(SQLITE_BLOB, as_text(bytes)).value();
    // The bytes may be gone by the time the statement runs.
    if (sqlite3_bind_blob(handle_.get(), next_++, bytes.data(), static_cast<int>(bytes.size()),
                          SQLITE_TRANSIENT) != SQLITE_OK) {
        database_.fail("refuses a value");
    }
    return *this;
}

Statement &Statement::bind(std::string_view text)
{
    sum_ = Sum(sum_).add(SQLITE_TEXT, text).value();
    if (sqlite3_bind_text(handle_.get(), next_++, text.data(), static_cast<int>(text.size()),
                          SQLITE_TRANSIENT) != SQLITE_OK) {
        database_.fail("refuses a value");
    }
    return *this;
}

Statement &Statement::bind_sum()
{
    return bind(static_cast<std::int64_t>(sum_));
}

Statement &Statement::bind_null()
{
    sum_ = Sum(sum_).add(SQLITE_NULL, {}).value();
    if (sqlite3_bind_null(handle_.get(), next_++) != SQLITE_OK) {
        database_.fail("refuses a value");
    }
    return *this;
}

bool Statement::step()
{
    // SQLite tells of the system's error only when a file is opened.
    errno = 0;
    const int code = sqlite3_step(handle_.get());
    if (code != SQLITE_ROW && code != SQLITE_DONE) {
        const Error error = database_.error("can't be read or written");
        reset();
        throw Error(error);
    }
    return code == SQLITE_ROW;
}

void Statement::run()
{
    while (step()) {
    }
    reset();
}

void Statement::reset()
{
    // The reset repeats the error of the step before, which is thrown there.
    (void)sqlite3_reset(handle_.get());
    (void)sqlite3_clear_bindings(handle_.get());
    next_ = 1;
    sum_ = SUM_START;
}

bool Statement::is_null(int column) const
{
    return sqlite3_column_type(handle_.get(), column) == SQLITE_NULL;
}

std::int64_t Statement::integer(int column) const
{
    return sqlite3_column_int64(handle_.get(), column);
}

std::vector<unsigned char> Statement::bytes(int column) const
{
    const auto *data =
        static_cast<const unsigned char *>(sqlite3_column_blob(handle_.get(), column));
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(handle_.get(), column));
    return {data, data + size};
}

std::string Statement::text(int column) const
{
    const auto *data = reinterpret_cast<const char *>(sqlite3_column_text(handle_.get(), column));
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(handle_.get(), column));
    return data == nullptr ? std::string() : std::string(data, size);
}

bool Statement::sum_matches() const
{
    const int last = sqlite3_column_count(handle_.get()) - 1;
    Sum sum(SUM_START);
    for (int column = 0; column < last; ++column) {
        const int kind = sqlite3_column_type(handle_.get(), column);
        if (kind == SQLITE_INTEGER) {
            sum.add(integer(column));
        } else {
            const auto content = bytes(column);
            sum.add(kind, as_text(content));
        }
    }
    return sqlite3_column_type(handle_.get(), last) == SQLITE_INTEGER &&
           integer(last) == static_cast<std::int64_t>(sum.value());
}

} // namespace simswitch::services::sqlite
