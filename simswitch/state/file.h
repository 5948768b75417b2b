/*
 * file.h: one database of the state folder, or one in memory: what is common
 * to chip.db and store.sqlite.
 *
 * Each has a table meta with its version and what it was made for, and a table
 * commits with one row, the number of transactions that it has taken. Each row
 * of meta and of the tables that others add ends with a checksum.
 *
 * A file is either new, or what it holds has been checked as a whole: SQLite's
 * own check, the tables' definitions, the version, the count of transactions.
 * Rows are checked by who reads them.
 */
#pragma once

#include "services/sqlite.h"
#include "state/folder.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace simswitch::state
{

namespace sqlite = services::sqlite;

/** A database. What SQLite refuses is thrown as sqlite::Error. */
class File
{
public:
    /**
     * @param folder    where the file is; null: in memory
     * @param database  which one
     * @param version   version of its tables
     * @param tables    the statements that make the tables
     * @throws Error when the file can't be used
     */
    File(Folder *folder, Database database, int version, std::vector<std::string> tables);

    /** Whether nothing was ever committed to it. */
    bool is_new() const { return commits_ == 0; }
    sqlite::Statement prepare(const std::string &text) { return {database_, text}; }
    /** What meta holds under a name. @throws Error when it isn't there or was changed */
    std::string meta(const std::string &name);
    /** Puts a word into meta. */
    void set_meta(const std::string &name, const std::string &value);

    /**
     * Runs a body as one transaction. When it fails, nothing of it is there and
     * the folder takes no more writes.
     */
    template <class Body> void commit(Body &&body)
    {
        begin();
        try {
            body();
            end();
        } catch (const std::exception &error) {
            undo(error.what());
            throw;
        }
    }
    /** The error for a row or table that can't be right. */
    Error damaged(std::string_view what) const;
    /** The contents are good: what the log holds may be brought into the file. */
    void accept();

private:
    void make(const std::vector<std::string> &tables);
    void check(const std::vector<std::string> &tables);
    void check_integrity();
    void check_commits();
    void begin();
    void end();
    void undo(std::string_view reason);

    Folder *folder_;
    Database which_;
    int version_;
    sqlite::Database database_;
    std::uint64_t commits_ = 0;
    std::optional<sqlite::Statement> begin_;
    std::optional<sqlite::Statement> count_;
    std::optional<sqlite::Statement> commit_;
    std::optional<sqlite::Statement> rollback_;
};

} // namespace simswitch::state
