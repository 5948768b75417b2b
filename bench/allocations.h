/*
 * allocations.h: how often the program has allocated, so that a benchmark can
 * tell that forwarding a frame never does.
 */
#pragma once

#include <cstddef>

namespace bench
{

/** How often `operator new` was called since the program began. */
std::size_t allocations();

} // namespace bench
