/*
 * interface_numbers.h: the library's tables of interface numbers, read bit by
 * bit.
 */
#pragma once

#include "rtifhal_types.h"

namespace lab::l3lif
{

/** The numbers below are taken when the tables are set up, and never given back. */
inline constexpr int FIRST_IIF = 3;

/** Whether a number, 0 to 8191, is in a table. */
inline bool is_set(const l3iif_bitmap_t &table, int number)
{
    const auto n = static_cast<unsigned>(number);
    return (table.bits[n / 8] & (0x80U >> (n % 8))) != 0;
}

} // namespace lab::l3lif
