/*
 * drop_rule.cpp: see drop_rule.h.
 */
#include "support/drop_rule.h"

#include <fmt/format.h>

#include <stdexcept>

namespace rtifhal_test::drop_rule
{

Calls made()
{
    return {
        "fwmpd_trident_batch_flush() = 0",
        fmt::format("bcm_field_group_create_id(0, qualifiers {{13 82}}, 0, {}) = 0", GROUP),
        fmt::format("bcm_field_entry_create(0, {}) = 0 [entry={}]", GROUP, ENTRY),
        fmt::format("bcm_field_qualify_L3Routable(0, {}, 0, 1) = 0", ENTRY),
        fmt::format("bcm_field_action_add(0, {}, 39, 0x0, 0x0) = 0", ENTRY),
    };
}

Calls read(const std::string &data, const std::string &mask)
{
    return {
        "fwmpd_trident_batch_flush() = 0",
        fmt::format("bcm_field_qualify_InPorts_get(0, {}) = 0 [data={} mask={}]", ENTRY, data,
                    mask),
    };
}

Calls rewritten(const std::string &data, const std::string &mask)
{
    return {
        fmt::format("bcm_field_qualify_InPorts(0, {}, {}, {}) = 0", ENTRY, data, mask),
        fmt::format("bcm_field_entry_install(0, {}) = 0", ENTRY),
    };
}

void DropRuleTest::stands_for(std::initializer_list<int> ports)
{
    for (const int port : ports) {
        if (rtifhal_install_ifp_drop(0, port) != 0) {
            throw std::runtime_error("the rule to start from was not made");
        }
    }
    start();
}

std::string DropRuleTest::rule() const
{
    const auto *const entry = sw.chip.field_entries.find(ENTRY);
    return entry == nullptr ? "none" : simswitch::chip::text(*entry);
}

const simswitch::chip::InPorts &DropRuleTest::in_ports() const
{
    return *sw.chip.field_entries.find(ENTRY)->installed->in_ports;
}

} // namespace rtifhal_test::drop_rule
