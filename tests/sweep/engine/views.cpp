/*
 * views.cpp: see views.h.
 */
#include "sweep/engine/views.h"

#include "rtifhal_kelvo_trident/vlan/accounting.h"

#include <fmt/format.h>

#include <algorithm>

namespace sweep
{

Lines library_tables(simswitch::Switch &hardware)
{
    Lines lines = lab::faults::library_tables(hardware);
    lines.push_back(fmt::format("group {}, allocated {}", l3_stg, l3_stg_allocated));
    std::ranges::sort(lines);
    return lines;
}

} // namespace sweep
