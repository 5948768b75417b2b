/*
 * table.cpp: see table.h.
 */
#include "session/table.h"

#include "report/text_table.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>
#include <iterator>
#include <ostream>
#include <utility>

namespace lab::session
{

namespace
{

constexpr std::size_t GAP = 2;
// A key and a value stand in a line, however narrow the terminal is.
constexpr std::size_t IN_LINE_MIN = 2;

char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string lower(std::string_view text)
{
    std::string result;
    std::transform(text.begin(), text.end(), std::back_inserter(result),
                   [](char c) { return lower(c); });
    return result;
}

std::string cell(const Row &row, std::size_t column)
{
    return row.cells[column].empty() ? "-" : row.cells[column];
}

/** How wide a column is with a gap before it. */
std::size_t widest(const Table &table, std::size_t column)
{
    std::size_t wide = table.columns[column].title.size();
    for (const Row &row : table.rows) {
        if (row.shown) {
            wide = std::max(wide, cell(row, column).size());
        }
    }
    return GAP + wide;
}

/** The columns as a terminal has room for them. */
struct Layout {
    std::vector<std::size_t> in_line;
    std::vector<std::size_t> below;
};

Layout lay_out(const Table &table, Width width)
{
    Layout layout;
    std::size_t used = 0;
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
        if (!table.columns[i].shown) {
            continue;
        }
        used += widest(table, i);
        const bool fits = width == 0 || used <= width + GAP || layout.in_line.size() < IN_LINE_MIN;
        (fits && layout.below.empty() ? layout.in_line : layout.below).push_back(i);
    }
    return layout;
}

/** The columns without room, as "field value", where there is a value. */
std::string text_below(const Table &table, const Layout &layout, const Row &row)
{
    std::string text;
    for (const std::size_t column : layout.below) {
        if (!row.cells[column].empty()) {
            text += fmt::format("{}{} {}", text.empty() ? "" : ", ",
                                lower(table.columns[column].title), row.cells[column]);
        }
    }
    return text;
}

} // namespace

std::optional<std::size_t> Table::column(std::string_view field) const
{
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (lower(columns[i].title) == field) {
            return i;
        }
    }
    return std::nullopt;
}

std::vector<std::string> Table::fields() const
{
    std::vector<std::string> names;
    for (const Column &column : columns) {
        names.push_back(lower(column.title));
    }
    return names;
}

std::vector<const Row *> Table::find(std::string_view key) const
{
    std::vector<const Row *> found;
    for (const Row &row : rows) {
        if (std::find(row.keys.begin(), row.keys.end(), key) != row.keys.end()) {
            found.push_back(&row);
        }
    }
    return found;
}

std::size_t Table::count() const
{
    return static_cast<std::size_t>(
        std::count_if(rows.begin(), rows.end(), [](const Row &row) { return row.shown; }));
}

void print(const Table &table, Width width, std::ostream &out)
{
    if (table.count() == 0) {
        fmt::print(out, "no {}\n", table.name);
        return;
    }
    const Layout layout = lay_out(table, width);
    std::vector<report::Column> columns;
    for (const std::size_t column : layout.in_line) {
        columns.push_back({table.columns[column].title, table.columns[column].right});
    }
    report::TextTable text(columns, columns.size());
    std::vector<std::string> below;
    for (const Row &row : table.rows) {
        if (!row.shown) {
            continue;
        }
        std::vector<std::string> cells;
        for (const std::size_t column : layout.in_line) {
            cells.push_back(cell(row, column));
        }
        text.add(std::move(cells));
        below.push_back(text_below(table, layout, row));
    }
    fmt::print(out, "{}\n", text.titles());
    for (std::size_t i = 0; i < text.size(); ++i) {
        fmt::print(out, "{}\n", text.line(i, ""));
        if (!below[i].empty()) {
            fmt::print(out, "    {}\n", below[i]);
        }
    }
}

} // namespace lab::session
