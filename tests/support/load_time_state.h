/*
 * load_time_state.h: the library as it is after loading, for who needs it more than once in a
 * process: tests and fuzzers.
 */
#pragma once

namespace rtifhal_test
{

/** Puts all of the library's data, private data included, into its load-time state. */
void reset_library();

} // namespace rtifhal_test
