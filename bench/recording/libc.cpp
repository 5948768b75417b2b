/*
 * libc.cpp: what the library calls of libc and of GLib, noted and then done. The linker puts
 * these in the place of the functions (--wrap).
 */
#include "recording.h"

#include <glib.h>

#include <cstddef>

using recording::code;
using recording::gives;
using recording::handle;
using recording::in;
using recording::note;
using recording::out;

namespace
{

/** A private-VLAN pair, which is key and value of the one hash table: two words. */
constexpr std::size_t PAIR_SIZE = 2 * sizeof(guint);

/** mtrack_free releases what was malloc's: the call behind it is the platform's own. */
bool is_released_by_platform(const void *memory)
{
    const recording::NotedCall *const last = recording::last_call();
    return last != nullptr && last->function == "mtrack_free" &&
           last->arguments.front().pointer == memory;
}

} // namespace

extern "C" {

void *__real_malloc(std::size_t size);
void *__real_calloc(std::size_t count, std::size_t size);
void __real_free(void *memory);
gpointer __real_g_hash_table_lookup(GHashTable *table, gconstpointer key);
gboolean __real_g_hash_table_insert(GHashTable *table, gpointer key, gpointer value);
gboolean __real_g_hash_table_remove(GHashTable *table, gconstpointer key);
void __real_g_hash_table_foreach(GHashTable *table, GHFunc visit, gpointer context);

void *__wrap_malloc(std::size_t size)
{
    note("malloc", size);
    return gives(__real_malloc(size));
}

void *__wrap_calloc(std::size_t count, std::size_t size)
{
    note("calloc", count, size);
    return gives(__real_calloc(count, size));
}

void __wrap_free(void *memory)
{
    if (!is_released_by_platform(memory)) {
        note("free", handle(memory));
    }
    __real_free(memory);
}

gpointer __wrap_g_hash_table_lookup(GHashTable *table, gconstpointer key)
{
    note("g_hash_table_lookup", handle(table), in(key, PAIR_SIZE));
    return gives(__real_g_hash_table_lookup(table, key));
}

gboolean __wrap_g_hash_table_insert(GHashTable *table, gpointer key, gpointer value)
{
    note("g_hash_table_insert", handle(table), in(key, PAIR_SIZE), handle(value));
    return __real_g_hash_table_insert(table, key, value);
}

gboolean __wrap_g_hash_table_remove(GHashTable *table, gconstpointer key)
{
    note("g_hash_table_remove", handle(table), in(key, PAIR_SIZE));
    return __real_g_hash_table_remove(table, key);
}

void __wrap_g_hash_table_foreach(GHashTable *table, GHFunc visit, gpointer context)
{
    note("g_hash_table_foreach", handle(table), code(visit), out(context, 0));
    __real_g_hash_table_foreach(table, visit, context);
}
}
