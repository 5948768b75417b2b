/*
 * member_port.cpp: see member_port.h.
 */
#include "support/member_port.h"

#include "support/l3_objects.h"

#include <sdk/vlan.h>

#include <fmt/format.h>

#include <stdexcept>

namespace rtifhal_test::member_port
{

namespace
{

constexpr int TYPE_PORT = 26;

} // namespace

Calls begins(const Lif &lif, int sdk_port)
{
    return join({begins_without_port(lif, TYPE_PORT), Calls{called::port_of(lif, sdk_port)}});
}

Calls begins_without_port(const Lif &lif, int type)
{
    return {called::unit(), called::inband_init(), called::type(lif, type)};
}

Calls brings_group_up(int group)
{
    return {
        FLUSH,
        fmt::format("fwmpd_allocate_stg(4094) = 0 [stg={}]", group),
        FLUSH,
        fmt::format("bcm_stg_vlan_add(0, {}, 4094) = 0", group),
    };
}

Calls goes_in(int port)
{
    return {
        fmt::format("fwmpd_bcm_vlan_port_add(0, 4094, {{0,{0}}}, {{{0}}}) = 0", port),
        fmt::format("fwmpd_bcm_port_stp_set(0, {}, 4) = 0", port),
        fmt::format("fwmpd_bcm_port_untagged_vlan_set(0, {}, 4094) = 0", port),
    };
}

Calls goes_out(int port)
{
    return {
        fmt::format("fwmpd_bcm_vlan_port_remove(0, 4094, {{{}}}) = 0", port),
        fmt::format("fwmpd_bcm_port_stp_set(0, {}, 0) = 0", port),
        "fwmpd_get_vlan_stg(1) = 1",
        fmt::format("fwmpd_bcm_stg_stp_set(0, 1, {}, 1) = 0", port),
    };
}

Message entered(const Lif &lif, int port, int clear)
{
    return trace(INIT,
                 fmt::format(" ifindex = {} port {} vlan 4094 clear {}\n", lif.hex(), port, clear));
}

Messages group_is_up(int port, int group)
{
    return {
        trace(INIT,
              fmt::format("fwmpd_allocate_stg allocated stg: {} vlan 4094 port {}\n", group, port)),
        trace(INIT,
              fmt::format("bcm_stg_vlan_add Added stg: {} to vlan 4094 port {}\n", group, port)),
    };
}

Message done(const std::string &flags)
{
    return trace(INIT, fmt::format(" Set vlan control for vid: 4094, flags: {}\n", flags));
}

MemberPortTest::MemberPortTest(const simswitch::Options &options) : LibraryTest(options)
{
    if (bcm_vlan_create(0, ROUTED) != 0) {
        throw std::runtime_error("there is no VLAN 4094 to start from");
    }
    start();
}

void MemberPortTest::group_was_up()
{
    const auto other = port(9);
    if (rtifhal_init_member_port(other->lif.ifindex, 0) != 0) {
        throw std::runtime_error("the group to start from was not brought up");
    }
    sw.end_request();
    start();
}

} // namespace rtifhal_test::member_port
