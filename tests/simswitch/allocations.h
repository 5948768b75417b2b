/*
 * allocations.h: how often the program has allocated, so that tests
 * and benchmarks can tell that forwarding a frame never does.
 */
#pragma once

#include <cstddef>

namespace simswitch::chip::pipeline
{

/** How often `operator new` was called since the program began; always 0 under a sanitizer. */
std::size_t allocations();

} // namespace simswitch::chip::pipeline
