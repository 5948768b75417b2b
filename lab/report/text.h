/*
 * text.h: how values are shown to people. table.h and teardown_text.h use it.
 */
#pragma once

#include "l3lif/request.h"
#include "report/up_result.h"

#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace lab::report
{

/** "1 row", "2 rows". */
std::string counted(std::size_t number, std::string_view what);

/** A name of the file, harmless for a terminal. */
std::string plain(std::string_view name);

/** "7", or "-" for what isn't there. */
std::string number_or_dash(bool there, int number);

/** "3,5,9-12": three and more in a row as a range; "-" for none. */
std::string port_list(const std::vector<int> &ports);

/** Prints the calls and messages of a request, as far as they are wanted. */
void print_request(const l3lif::Request &request, const View &view, std::ostream &out);

} // namespace lab::report
