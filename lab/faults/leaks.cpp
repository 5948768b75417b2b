/*
 * leaks.cpp: see leaks.h.
 */
#include "faults/leaks.h"

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

namespace lab::faults
{

bool has_leaked()
{
#if defined(__SANITIZE_ADDRESS__)
    return __lsan_do_recoverable_leak_check() != 0;
#else
    return false;
#endif
}

} // namespace lab::faults
