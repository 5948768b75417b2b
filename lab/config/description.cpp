/*
 * description.cpp: see description.h.
 */
#include "config/description.h"

#include "config/names.h"
#include "config/natural_order.h"

#include <fmt/format.h>

#include <algorithm>

namespace lab::config
{

std::string_view kind_name(Kind kind)
{
    switch (kind) {
    case Kind::port:
        return "port";
    case Kind::port_channel:
        return "port-channel";
    case Kind::svi:
        return "svi";
    case Kind::subinterface:
        return "subinterface";
    case Kind::tunnel:
        break;
    }
    return "tunnel";
}

bool RoutedInterface::routes(bool ipv6) const
{
    return (ipv6 && link_local_only) ||
           std::any_of(addresses.begin(), addresses.end(),
                       [ipv6](const Prefix &prefix) { return prefix.address.ipv6 == ipv6; });
}

std::string Description::message(const SkippedRow &row) const
{
    return fmt::format("{}: {} {}: {}; the row is skipped", file, row.table, in_quotes(row.row),
                       row.reason);
}

void Description::sort_skipped()
{
    std::stable_sort(skipped.begin(), skipped.end(),
                     [](const SkippedRow &left, const SkippedRow &right) {
                         const int tables = left.table.compare(right.table);
                         return tables != 0 ? tables < 0 : natural_compare(left.row, right.row) < 0;
                     });
}

} // namespace lab::config
