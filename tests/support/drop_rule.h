/*
 * drop_rule.h: what the tests of the drop rule share: the stretches of calls
 * that a call consists of, and the rule as the chip has it.
 */
#pragma once

#include "support/vlan_roads.h"

#include <initializer_list>
#include <string>

namespace rtifhal_test::drop_rule
{

inline constexpr int GROUP = 11;
/** The entry's handle: the first that the chip gives. */
inline constexpr int ENTRY = 8192;

inline constexpr const char *FIELD_CALLS[] = {
    "bcm_field_group_create_id", "bcm_field_entry_create",        "bcm_field_qualify_L3Routable",
    "bcm_field_action_add",      "bcm_field_qualify_InPorts_get", "bcm_field_qualify_InPorts",
    "bcm_field_entry_install",
};

/** The rule is made, up to the drop action. */
Calls made();
/** The rule is read for a port that joins it. */
Calls read(const std::string &data, const std::string &mask);
/** The ports are set, and the rule is written. */
Calls rewritten(const std::string &data, const std::string &mask);

/** A test of the drop rule; each begins without one. */
class DropRuleTest : public LibraryTest
{
protected:
    explicit DropRuleTest(const simswitch::Options &options = {}) : LibraryTest(options) {}

    /** These ports are in the rule, the first one first. */
    void stands_for(std::initializer_list<int> ports);
    /** The rule's entry; "none" without one. */
    std::string rule() const;
    /** The ports that the chip goes by. */
    const simswitch::chip::InPorts &in_ports() const;
};

} // namespace rtifhal_test::drop_rule
