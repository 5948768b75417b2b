/*
 * text_table.h: lines of cells under titles, as wide as they need to be. table.h
 * fills them.
 */
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace lab::report
{

/** A column. */
struct Column {
    std::string_view title;
    bool right = false; ///< numbers stand at the right
};

/** A table of text. */
class TextTable
{
public:
    /**
     * @param columns   the columns
     * @param coloured  the column whose cells are coloured
     */
    TextTable(std::vector<Column> columns, std::size_t coloured);

    /** Adds a line. @param cells  as many as there are columns; shown such that none stirs a
     * terminal */
    void add(std::vector<std::string> cells);
    /** The titles as a line, without blanks and a line end at its end. */
    std::string titles() const;
    /**
     * A line that was added, without blanks and a line end at its end.
     *
     * @param number  0 for the first one
     * @param colour  the terminal's sequence for the coloured cell; empty: none
     */
    std::string line(std::size_t number, std::string_view colour) const;
    std::size_t size() const { return lines_.size(); }

private:
    std::string text(const std::vector<std::string> &cells, std::string_view colour) const;

    std::vector<Column> columns_;
    std::size_t coloured_;
    std::vector<std::size_t> widths_;
    std::vector<std::vector<std::string>> lines_;
};

} // namespace lab::report
