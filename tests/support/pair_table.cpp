/*
 * pair_table.cpp: see pair_table.h. The linker leads the library's calls of
 * GLib here (--wrap in tests/CMakeLists.txt).
 */
#include "support/pair_table.h"

#include "journal/call.h"
#include "rtifhal_kelvo_trident/station/pvlan_svi.h"
#include "switch.h"

#include <fmt/format.h>
#include <string>

using simswitch::Call;
using simswitch::Layer;
using simswitch::Word;

namespace
{

GHashFunc given_hash = nullptr;
GEqualFunc given_equal = nullptr;

/** A pair as the journal prints it. */
std::string text_of(gconstpointer key)
{
    if (key == nullptr) {
        return "null";
    }
    const auto &pair = *static_cast<const pvlan_svi_pair *>(key);
    return fmt::format("{{{},{}}}", pair.primary, pair.secondary);
}

/** Between two tests, when a table is emptied, there may be no switch. */
bool is_watched()
{
    return simswitch::Switch::find_current() != nullptr;
}

} // namespace

extern "C" {

GHashTable *__real_g_hash_table_new(GHashFunc hash, GEqualFunc equal);
gpointer __real_g_hash_table_lookup(GHashTable *table, gconstpointer key);
gboolean __real_g_hash_table_insert(GHashTable *table, gpointer key, gpointer value);
gboolean __real_g_hash_table_remove(GHashTable *table, gconstpointer key);
void __real_g_hash_table_foreach(GHashTable *table, GHFunc visit, gpointer data);

GHashTable *__wrap_g_hash_table_new(GHashFunc hash, GEqualFunc equal)
{
    if (!is_watched()) {
        return __real_g_hash_table_new(hash, equal);
    }
    given_hash = hash;
    given_equal = equal;
    Call call(Layer::service, "g_hash_table_new");
    return call.run_pointer([&] { return __real_g_hash_table_new(hash, equal); });
}

gpointer __wrap_g_hash_table_lookup(GHashTable *table, gconstpointer key)
{
    if (!is_watched()) {
        return __real_g_hash_table_lookup(table, key);
    }
    const std::string pair = text_of(key);
    Call call(Layer::service, "g_hash_table_lookup", table, Word{pair});
    return call.run_pointer(
        [&] { return table == nullptr ? nullptr : __real_g_hash_table_lookup(table, key); });
}

gboolean __wrap_g_hash_table_insert(GHashTable *table, gpointer key, gpointer value)
{
    if (!is_watched()) {
        return __real_g_hash_table_insert(table, key, value);
    }
    const std::string pair = text_of(key);
    Call call(Layer::service, "g_hash_table_insert", table, Word{pair});
    return call.run(
        [&] { return table == nullptr ? FALSE : __real_g_hash_table_insert(table, key, value); });
}

gboolean __wrap_g_hash_table_remove(GHashTable *table, gconstpointer key)
{
    if (!is_watched()) {
        return __real_g_hash_table_remove(table, key);
    }
    const std::string pair = text_of(key);
    Call call(Layer::service, "g_hash_table_remove", table, Word{pair});
    return call.run(
        [&] { return table == nullptr ? FALSE : __real_g_hash_table_remove(table, key); });
}

void __wrap_g_hash_table_foreach(GHashTable *table, GHFunc visit, gpointer data)
{
    if (!is_watched()) {
        __real_g_hash_table_foreach(table, visit, data);
        return;
    }
    Call call(Layer::service, "g_hash_table_foreach", table);
    call.run_void([&] {
        if (table != nullptr) {
            __real_g_hash_table_foreach(table, visit, data);
        }
    });
}

} // extern "C"

namespace rtifhal_test
{

GHashFunc pair_hash()
{
    return given_hash;
}

GEqualFunc pair_equal()
{
    return given_equal;
}

void forget_pair_functions()
{
    given_hash = nullptr;
    given_equal = nullptr;
}

} // namespace rtifhal_test
