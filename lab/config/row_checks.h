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

/** Refuses a port that the configuration doesn't have, or that was refused itself. */
void need_port(const std::string &name, const Description &description);

/** A VLAN in 1..4094. */
std::uint16_t need_vlan(std::string_view digits);

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
