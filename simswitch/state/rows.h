/*
 * rows.h: one table of a database, with a row for each record.
 */
#pragma once

#include "state/columns.h"
#include "state/file.h"
#include "state/record_columns.h"

#include <string>

namespace simswitch::state
{

/** The statement that makes a table of such records. */
template <class Key, class Record> std::string table_definition(const std::string &table)
{
    ColumnNames columns;
    Key key{};
    Record record{};
    each_key_column(key, columns);
    const std::string key_names = fmt::format("{}", fmt::join(columns.names, ", "));
    const bool is_one = columns.names.size() == 1;
    each_column(record, columns);
    return fmt::format("CREATE TABLE {} ({}, sum INTEGER NOT NULL, PRIMARY KEY ({})){}STRICT",
                       table, fmt::join(columns.definitions, ", "), key_names,
                       is_one ? " " : " WITHOUT ROWID, ");
}

/** A table that is open. What SQLite refuses is thrown as sqlite::Error. */
template <class Key, class Record> class Rows
{
public:
    Rows(File &file, std::string table)
        : file_(file), table_(std::move(table)), put_(file.prepare(put_text(table_))),
          erase_(file.prepare(erase_text(table_)))
    {
    }

    /** Writes a row, new or in place of the one of this key. */
    void put(const Key &key, const Record &record)
    {
        ColumnWriter writer(put_);
        each_key_column(key, writer);
        each_column(record, writer);
        put_.bind_sum().run();
    }
    /** Takes a row out, if it is there. */
    void erase(const Key &key)
    {
        ColumnWriter writer(erase_);
        each_key_column(key, writer);
        erase_.run();
    }
    /**
     * Reads all rows.
     *
     * @param take  called with key and record, gives an Outcome
     * @throws Error for a row that isn't what was written, or is refused
     */
    template <class Take> void read(Take take)
    {
        auto select =
            file_.prepare(fmt::format("SELECT {}, sum FROM {}", fmt::join(names(), ", "), table_));
        for (std::size_t row = 1; select.step(); ++row) {
            Key key{};
            Record record{};
            Outcome outcome;
            try {
                ColumnReader reader(select);
                each_key_column(key, reader);
                each_column(record, reader);
                outcome = select.sum_matches() ? take(key, record)
                                               : Outcome{-1, "is not what was written to it"};
            } catch (const BadValue &error) {
                outcome = {-1, error.what()};
            }
            if (!outcome.ok()) {
                throw file_.damaged(
                    fmt::format("table {}, row {}: {}", table_, row, outcome.reason));
            }
        }
    }

private:
    static std::vector<std::string> names()
    {
        ColumnNames columns;
        Key key{};
        Record record{};
        each_key_column(key, columns);
        each_column(record, columns);
        return columns.names;
    }
    static std::string put_text(const std::string &table)
    {
        const std::vector<std::string> marks(names().size() + 1, "?");
        return fmt::format("REPLACE INTO {} ({}, sum) VALUES ({})", table, fmt::join(names(), ", "),
                           fmt::join(marks, ", "));
    }
    static std::string erase_text(const std::string &table)
    {
        ColumnNames columns;
        Key key{};
        each_key_column(key, columns);
        return fmt::format("DELETE FROM {} WHERE {} = ?", table,
                           fmt::join(columns.names, " = ? AND "));
    }

    File &file_;
    std::string table_;
    sqlite::Statement put_;
    sqlite::Statement erase_;
};

} // namespace simswitch::state
