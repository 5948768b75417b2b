/*
 * page.h: rows of a sweep as a page of the documentation, and such a page held
 * against what was seen.
 */
#pragma once

#include "faults/rows.h"
#include "faults/sweep.h"

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace lab::faults
{

/**
 * Prints the page: a heading for each kind of request, a table below it.
 *
 * @param file  the configuration's name, as the page tells it
 */
void print_page(const SweepResult &result, std::string_view file, std::ostream &out);

/** The tables alone, as the page has them. */
std::vector<std::string> page_lines(const std::vector<Row> &rows);

/**
 * The outcomes that a page doesn't tell, a line each; empty when it tells all.
 *
 * @param page  the text of a page that print_page has made
 */
std::vector<std::string> untold(std::string_view page, const std::vector<Outcome> &outcomes);

} // namespace lab::faults
