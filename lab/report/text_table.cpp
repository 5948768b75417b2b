/*
 * text_table.cpp: see text_table.h.
 */
#include "report/text_table.h"

#include "config/shown.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace lab::report
{

TextTable::TextTable(std::vector<Column> columns, std::size_t coloured)
    : columns_(std::move(columns)), coloured_(coloured)
{
    for (const Column &column : columns_) {
        widths_.push_back(column.title.size());
    }
}

void TextTable::add(std::vector<std::string> cells)
{
    for (std::size_t i = 0; i < widths_.size(); ++i) {
        cells.at(i) = config::harmless(cells[i]);
        widths_[i] = std::max(widths_[i], cells[i].size());
    }
    lines_.push_back(std::move(cells));
}

std::string TextTable::titles() const
{
    std::vector<std::string> cells;
    for (const Column &column : columns_) {
        cells.emplace_back(column.title);
    }
    return text(cells, "");
}

std::string TextTable::line(std::size_t number, std::string_view colour) const
{
    return text(lines_.at(number), colour);
}

/** A colour doesn't count for the width. */
std::string TextTable::text(const std::vector<std::string> &cells, std::string_view colour) const
{
    std::string text;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const std::string padding(widths_[i] - cells[i].size(), ' ');
        const bool coloured = i == coloured_ && !colour.empty();
        text += i == 0 ? "" : "  ";
        text += columns_[i].right ? padding : "";
        text += coloured ? fmt::format("{}{}\x1b[0m", colour, cells[i]) : cells[i];
        text += columns_[i].right ? "" : padding;
    }
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

} // namespace lab::report
