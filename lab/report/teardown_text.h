/*
 * teardown_text.h: how taking everything down again went, for people. table.h
 * has the rest of a run.
 */
#pragma once

#include "report/up_result.h"

#include <iosfwd>

namespace lab::report
{

/** Prints what went wrong, what was left behind, and what stays; nothing without a teardown. */
void print_teardown(const UpResult &result, const View &view, std::ostream &out);

} // namespace lab::report
