/*
 * expect.h: what must hold for any input. A target that finds it broken says so
 * and ends the process, which the fuzzer counts as a finding.
 */
#pragma once

#include <string_view>

namespace fuzz
{

/** Ends the process with a sentence unless something holds. */
void expect(bool holds, std::string_view sentence);

/** Ends the process unless a text could be shown on a terminal as it stands, line ends apart. */
void expect_harmless(std::string_view text);

/** The same, of one line that ends nowhere: what an exception says. */
void expect_one_line(std::string_view text);

} // namespace fuzz
