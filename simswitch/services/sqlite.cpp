/*
 * sqlite.cpp: SQLite's C interface behind owners.
 */
#include "services/sqlite.h"

#include <fmt/format.h>
#include <sqlite3.h>

namespace simswitch::services::sqlite
{

void Database::Close::operator()(sqlite3 *handle) const noexcept
{
    sqlite3_close_v2(handle);
}

Database::Database(const std::filesystem::path &file)
    : name_(file.empty() ? std::string(":memory:") : file.string())
{
    sqlite3 *handle = nullptr;
    const int code = sqlite3_open(name_.c_str(), &handle);
    handle_.reset(handle);
    if (code != SQLITE_OK) {
        fail("can't be opened");
    }
    // The kernel keeps what is written when the process dies.
    run("PRAGMA synchronous = OFF; PRAGMA journal_mode = TRUNCATE;");
}

void Database::run(const std::string &statements)
{
    if (sqlite3_exec(handle(), statements.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        fail("refuses a statement");
    }
}

Error Database::error(std::string_view what) const
{
    return Error(fmt::format("{}: {}: {}", name_, what, sqlite3_errmsg(handle())));
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
    if (sqlite3_bind_int64(handle_.get(), next_++, value) != SQLITE_OK) {
        database_.fail("refuses a value");
    }
    return *this;
}

Statement &Statement::bind(std::span<const unsigned char> bytes)
{
    // The bytes may be gone by the time the statement runs.
    if (sqlite3_bind_blob(handle_.get(), next_++, bytes.data(), static_cast<int>(bytes.size()),
                          SQLITE_TRANSIENT) != SQLITE_OK) {
        database_.fail("refuses a value");
    }
    return *this;
}

Statement &Statement::bind_null()
{
    if (sqlite3_bind_null(handle_.get(), next_++) != SQLITE_OK) {
        database_.fail("refuses a value");
    }
    return *this;
}

bool Statement::step()
{
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

Transaction::Transaction(Database &database) : database_(database)
{
    database_.run("BEGIN");
}

Transaction::~Transaction()
{
    if (open_) {
        (void)sqlite3_exec(database_.handle(), "ROLLBACK", nullptr, nullptr, nullptr);
    }
}

void Transaction::commit()
{
    database_.run("COMMIT");
    open_ = false;
}

} // namespace simswitch::services::sqlite
