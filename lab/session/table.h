/*
 * table.h: a table as a session shows it, and as expectations look things up in
 * it: the same rows for both, so that what can be seen can be expected.
 *
 * tables.h makes the tables of the chip.
 */
#pragma once

#include <cstddef>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lab::session
{

/** A column. Its field is its title in small letters. */
struct Column {
    std::string_view title;
    bool right = false; ///< numbers stand at the right
    bool shown = true;  ///< false: only expectations see it
};

/** A row. */
struct Row {
    std::vector<std::string> keys;  ///< what names it: its number, the interface's name
    std::vector<std::string> cells; ///< one for each column; empty where there is nothing
    bool shown = true;              ///< false: only expectations see it
};

/** A table. */
struct Table {
    std::string_view name;    ///< "vlans"
    std::string_view subject; ///< "vlan": what one row is
    std::vector<Column> columns;
    std::vector<Row> rows;
    /** Names that may stand as a key though no row has them, e.g. those of all interfaces. */
    std::vector<std::string> known_keys;
    bool single = false; ///< it has one row at most, which needs no key

    /** The place of a column by its field; nothing for an unknown one. */
    std::optional<std::size_t> column(std::string_view field) const;
    /** The fields of all columns. */
    std::vector<std::string> fields() const;
    /** The rows that a key names. */
    std::vector<const Row *> find(std::string_view key) const;
    /** Number of rows that are shown. */
    std::size_t count() const;

    /** Adds a row that also goes by a name, unless that is empty. */
    void add(Row row, const std::string &name)
    {
        if (!name.empty()) {
            row.keys.push_back(name);
        }
        rows.push_back(std::move(row));
    }
};

/** The columns of a terminal, or 0 for an output that has none. */
using Width = std::size_t;

/**
 * Prints a table: a heading, one line a row. In a terminal that is too narrow
 * the columns that have no room stand in lines of their own below the row.
 *
 * @param table  the table; "no vlans" is printed for one without rows
 * @param width  of the terminal
 * @param out    receives it
 */
void print(const Table &table, Width width, std::ostream &out);

} // namespace lab::session
