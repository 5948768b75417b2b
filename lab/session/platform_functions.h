/*
 * platform_functions.h: the names of the platform's functions that the library
 * calls, as the build finds them in both archives.
 */
#pragma once

#include <string>
#include <vector>

namespace lab::session
{

/** The names, sorted. */
const std::vector<std::string> &platform_functions();

/** Checks a function's name. @throws UsageError for an unknown one, with the nearest */
void check_function(const std::string &name);

} // namespace lab::session
