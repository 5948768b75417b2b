/*
 * allocations.cpp: the program's own `operator new`, which counts. A sanitizer has
 * its own operators, and needs them.
 */
#include "allocations.h"

#include <cstdlib>
#include <new>

namespace
{

std::size_t count = 0;

} // namespace

#ifndef __SANITIZE_ADDRESS__

void *operator new(std::size_t size)
{
    ++count;
    if (void *memory = std::malloc(size == 0 ? 1 : size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void *memory) noexcept
{
    std::free(memory);
}

void operator delete(void *memory, std::size_t) noexcept
{
    std::free(memory);
}

#endif

namespace simswitch::chip::pipeline
{

std::size_t allocations()
{
    return count;
}

} // namespace simswitch::chip::pipeline
