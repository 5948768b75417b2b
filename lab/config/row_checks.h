/*
 * row_checks.h: what the readers of rows share: how a row is refused, and
 * fields that must have one of a few values. Beside it: device_rows.h,
 * interface_rows.h.
 */
#pragma once

#include "config/description.h"
#include "config/tables.h"

#include <fmt/format.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace lab::config
{

/** Why a row can't be taken: part of a sentence. */
class BadRow : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/** Ends the reading of a row with a formatted reason. */
template <class... Args>
[[noreturn]] void refuse(fmt::format_string<Args...> format, Args &&...args)
{
    throw BadRow(fmt::format(format, std::forward<Args>(args)...));
}

/** Refuses what stands in place of a row's object. */
void need_object(const Row &row);

/** A field that must be a text or a number; null when the row doesn't have it. */
const std::string *scalar(const Row &row, std::string_view name);

/** A number in a range; nothing when the row doesn't have the field. */
std::optional<std::uint32_t> number(const Row &row, std::string_view name, std::uint32_t low,
                                    std::uint32_t high);

/** Whether a field says "enable"; "disable" and no field are false, anything else is refused. */
bool enabled(const Row &row, std::string_view name);

/** Whether a field says "true"; "false" and no field are false, anything else is refused. */
bool is_true(const Row &row, std::string_view name);

/** The items of a list, or of a text like "Ethernet0,Ethernet4", as they are written; mostly none.
 */
std::vector<std::string> listed(const Row &row, std::string_view name);

/** Refuses a port that the configuration doesn't have, or that was refused itself. */
void need_port(const std::string &name, const Description &description);

/** A VLAN in 1..4094. */
std::uint16_t need_vlan(std::string_view digits);

/** A VLAN in 1..4093: one that isn't the switch's own. */
std::uint16_t need_free_vlan(std::string_view digits);

/** The number in the name of a VLAN, in 1..4093. */
std::uint16_t need_vlan_name(std::string_view name);

/** A VLAN of the configuration; refuses one that it doesn't have, or that was refused itself. */
const Vlan &need_known_vlan(std::string_view name, const Description &description);

/** An address of one interface. */
IpAddress need_unicast(std::string_view field, std::string_view text);

/** Reads each row of a table; one that is refused is listed with its reason. */
template <class Read>
void for_each_row(const Tables &tables, std::string_view table, Description &description, Read read)
{
    for (const auto &[key, row] : tables.table(table)) {
        try {
            read(key, row);
        } catch (const BadRow &bad) {
            description.skipped.push_back({std::string(table), key, bad.what()});
        }
    }
}

} // namespace lab::config
