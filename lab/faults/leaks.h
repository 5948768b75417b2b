/*
 * leaks.h: whether this process has lost memory, where it is built with a
 * sanitizer that knows.
 */
#pragma once

namespace lab::faults
{

/** Looks now; the report goes to the error stream. False without such a sanitizer. */
bool has_leaked();

} // namespace lab::faults
