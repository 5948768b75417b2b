/*
 * pair_table.h: the library's table of private-VLAN pairs, as far as tests see
 * it beside pvlan_svi_map: GLib's calls stand in the journal, and the two
 * functions that the table was made with can be asked.
 *
 *     g_hash_table_new() = record
 *     g_hash_table_lookup(record, {100,101}) = null
 *     g_hash_table_insert(record, {100,101}) = 1
 *     g_hash_table_remove(record, {100,101}) = 0
 *     g_hash_table_foreach(record)
 *
 * A table that is null prints null, and GLib isn't troubled with it: it would
 * complain on stderr and do nothing. Faults hit these calls as all others.
 */
#pragma once

#include <glib.h>

namespace rtifhal_test
{

/** The hash function that the last g_hash_table_new was given; null before the first. */
GHashFunc pair_hash();

/** Its equality function; null before the first. */
GEqualFunc pair_equal();

/** Forgets both. */
void forget_pair_functions();

} // namespace rtifhal_test
