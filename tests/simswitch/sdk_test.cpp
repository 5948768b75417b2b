/*
 * sdk_test.cpp: the SDK's functions: what each does to the chip, and the line
 * that each leaves in the journal.
 */
#include "sdk/convert.h"
#include "switch.h"

#include <gmock/gmock.h>
#include <sdk/error.h>
#include <sdk/field.h>
#include <sdk/l2.h>
#include <sdk/l3.h>
#include <sdk/pbmp.h>
#include <sdk/port.h>
#include <sdk/stg.h>
#include <sdk/switch.h>
#include <sdk/trunk.h>
#include <sdk/tunnel.h>
#include <sdk/vlan.h>

namespace simswitch
{

namespace
{

using Calls = std::vector<std::string>;

struct Sdk : testing::Test {
    Switch host;

    std::string last_reason() const { return host.journal.records().back().reason; }
};

} // namespace

TEST_F(Sdk, ErrorTexts)
{
    EXPECT_STREQ(_shr_errmsg[0], "no error");
    EXPECT_STREQ(_shr_errmsg[4], "value out of range");
    EXPECT_STREQ(_shr_errmsg[6], "table full");
    EXPECT_STREQ(_shr_errmsg[16], "not available");
    EXPECT_STREQ(_shr_errmsg[19], "unknown error");
}

TEST_F(Sdk, PortSetHelpers)
{
    const bcm_pbmp_t five = sdk::to_sdk(chip::PortSet{5});
    const bcm_pbmp_t none{};
    EXPECT_EQ(_shr_popcount(0x21), 2);
    EXPECT_EQ(_shr_pbmp_bmnull(&five), 0);
    EXPECT_EQ(_shr_pbmp_bmnull(&none), 1);
    EXPECT_EQ(host.journal.calls(), (Calls{"_shr_popcount(0x21) = 2", "_shr_pbmp_bmnull({5}) = 0",
                                           "_shr_pbmp_bmnull({}) = 1"}));
}

TEST_F(Sdk, InitFunctionsClearAndTakeNoArguments)
{
    bcm_l3_intf_t intf;
    bcm_vlan_control_vlan_t control;
    bcm_trunk_info_t info;
    bcm_trunk_member_t member;
    bcm_vlan_action_set_t action;
    intf.l3a_intf_id = 7;
    control.reserved[32] = 7;
    info.psc = 7;
    member.gport = 7;
    action.ot_outer = 7;
    bcm_l3_intf_t_init(&intf);
    bcm_vlan_control_vlan_t_init(&control);
    bcm_trunk_info_t_init(&info);
    bcm_trunk_member_t_init(&member);
    bcm_vlan_action_set_t_init(&action);
    EXPECT_EQ(intf.l3a_intf_id, 0);
    EXPECT_EQ(control.reserved[32], 0U);
    EXPECT_EQ(info.psc, 0);
    EXPECT_EQ(member.gport, 0);
    EXPECT_EQ(action.ot_outer, 0);
    EXPECT_EQ(host.journal.calls(), (Calls{"bcm_l3_intf_t_init()", "bcm_vlan_control_vlan_t_init()",
                                           "bcm_trunk_info_t_init()", "bcm_trunk_member_t_init()",
                                           "bcm_vlan_action_set_t_init()"}));
}

TEST_F(Sdk, StationAddAndDelete)
{
    bcm_l2_station_t station{};
    station.flags = 0x1c;
    station.dst_mac[5] = 9;
    int id = 0xffff;
    EXPECT_EQ(bcm_l2_station_add(0, &id, &station), 0);
    EXPECT_EQ(host.chip.stations.find(id)->mac.at(5), 9);
    EXPECT_EQ(bcm_l2_station_delete(0, id), 0);
    EXPECT_EQ(bcm_l2_station_delete(0, id), -7);
    EXPECT_EQ(host.journal.calls().at(0),
              "bcm_l2_station_add(0, {flags=0x1c mac=00:00:00:00:00:09/00:00:00:00:00:00 vlan=0/0 "
              "port=0/0}) = 0 [id=1]");
    EXPECT_EQ(host.journal.calls().at(2), "bcm_l2_station_delete(0, 1) = -7");
    EXPECT_EQ(last_reason(), "station 1 does not exist");
}

TEST_F(Sdk, UnitOtherThan0DoesNotExist)
{
    EXPECT_EQ(bcm_vlan_create(1, 100), -3);
    EXPECT_EQ(last_reason(), "unit 1 does not exist; the switch has unit 0");
    EXPECT_EQ(host.chip.vlans.find(100), nullptr);
}

TEST_F(Sdk, InjectedFaultLeavesChipAndOutputsAlone)
{
    host.journal.arm({.function = "bcm_vlan_create", .code = -9, .when = {}});
    EXPECT_EQ(bcm_vlan_create(0, 100), -9);
    EXPECT_EQ(last_reason(), "injected");
    EXPECT_EQ(host.chip.vlans.find(100), nullptr);
    EXPECT_EQ(bcm_vlan_create(0, 100), 0);
}

TEST_F(Sdk, L3InterfaceReadBack)
{
    host.chip.l3_interfaces.create(3, {.vrf = 1, .mac = {0, 1, 2, 3, 4, 5}, .vlan = 4094});
    bcm_l3_intf_t intf{};
    intf.l3a_intf_id = 3;
    EXPECT_EQ(bcm_l3_intf_get(0, &intf), 0);
    EXPECT_EQ(intf.l3a_vid, 4094);
    EXPECT_EQ(intf.l3a_mac_addr[5], 5);
    EXPECT_EQ(host.journal.calls(),
              (Calls{"bcm_l3_intf_get(0, 3) = 0 [intf={flags=0x0 id=3 mac=00:01:02:03:04:05 "
                     "vid=4094 vrf=1 mtu=0 ttl=0 tunnel=0}]"}));
}

TEST_F(Sdk, UnknownL3InterfaceLeavesTheRecordAlone)
{
    bcm_l3_intf_t intf{};
    intf.l3a_intf_id = 3;
    intf.l3a_mtu = 77;
    EXPECT_EQ(bcm_l3_intf_get(0, &intf), -7);
    EXPECT_EQ(intf.l3a_mtu, 77);
    intf.l3a_intf_id = 8192;
    EXPECT_EQ(bcm_l3_intf_get(0, &intf), -4);
}

TEST_F(Sdk, NextHopsGroupsAndRoutes)
{
    bcm_l3_egress_t egress{};
    int ids[2] = {0, 0};
    int group = 0;
    EXPECT_EQ(bcm_l3_egress_create(0, 0, &egress, &ids[0]), 0);
    EXPECT_EQ(bcm_l3_egress_create(0, 0, &egress, &ids[1]), 0);
    EXPECT_EQ(bcm_l3_egress_multipath_create(0, 0, 2, ids, &group), 0);
    bcm_l3_route_t route{};
    route.l3a_flags = 0x4100;
    route.l3a_vrf = 1;
    route.l3a_intf = group;
    EXPECT_EQ(bcm_l3_route_add(0, &route), 0);
    EXPECT_TRUE(host.chip.routes.find(chip::ip4_key(1, 0, 0))->multipath);
    const Calls calls = host.journal.calls();
    EXPECT_THAT(calls.at(0), testing::EndsWith(") = 0 [id=100000]"));
    EXPECT_EQ(calls.at(2),
              "bcm_l3_egress_multipath_create(0, 0x0, 2, [100000,100001]) = 0 [id=200000]");
    EXPECT_EQ(calls.at(3), "bcm_l3_route_add(0, {flags=0x4100 vrf=1 net=0.0.0.0/0 intf=200000}) "
                           "= 0");
}

TEST_F(Sdk, Ip6RouteIsAnother)
{
    bcm_l3_egress_t egress{};
    int id = 0;
    bcm_l3_egress_create(0, 0, &egress, &id);
    bcm_l3_route_t route{};
    route.l3a_flags = 0x20100;
    route.l3a_vrf = 1;
    route.l3a_intf = id;
    EXPECT_EQ(bcm_l3_route_add(0, &route), 0);
    EXPECT_EQ(host.chip.routes.find(chip::ip4_key(1, 0, 0)), nullptr);
    EXPECT_EQ(text(host.chip.routes.all().begin()->first), "vrf 1 ::/0");
}

TEST_F(Sdk, GroupAndItsMembersAreDestroyed)
{
    bcm_l3_egress_t egress{};
    int id = 0;
    int group = 0;
    bcm_l3_egress_create(0, 0, &egress, &id);
    bcm_l3_egress_multipath_create(0, 0, 1, &id, &group);
    bcm_l3_egress_ecmp_t ecmp{};
    ecmp.ecmp_intf = group;
    EXPECT_EQ(bcm_l3_egress_ecmp_destroy(0, &ecmp), 0);
    EXPECT_EQ(bcm_l3_egress_ecmp_destroy(0, &ecmp), -7);
    EXPECT_EQ(bcm_l3_egress_destroy(0, id), 0);
    EXPECT_EQ(bcm_l3_egress_destroy(0, id), -7);
    EXPECT_EQ(host.journal.calls().at(2),
              "bcm_l3_egress_ecmp_destroy(0, {flags=0x0 id=200000}) = 0");
}

TEST_F(Sdk, GroupCountOutOfRange)
{
    int id = 100000;
    int group = -1;
    EXPECT_EQ(bcm_l3_egress_multipath_create(0, 0, 0, &id, &group), -4);
    EXPECT_EQ(bcm_l3_egress_multipath_create(0, 0, 65, &id, &group), -4);
    EXPECT_EQ(last_reason(), "number of group members 65 is not in 1..64");
    EXPECT_EQ(bcm_l3_egress_multipath_create(0, 0, 1, &id, &group), -7);
    EXPECT_EQ(group, -1);
}

TEST_F(Sdk, VlanCreateAndControls)
{
    bcm_vlan_control_vlan_t control{};
    control.vc_flags = 0x278;
    control.reserved[32] = 9;
    EXPECT_EQ(bcm_vlan_create(0, 100), 0);
    EXPECT_EQ(bcm_vlan_create(0, 100), -8);
    EXPECT_EQ(bcm_vlan_create(0, 4096), -4);
    EXPECT_EQ(bcm_vlan_control_vlan_set(0, 100, control), 0);
    bcm_vlan_control_vlan_t read{};
    EXPECT_EQ(bcm_vlan_control_vlan_get(0, 100, &read), 0);
    EXPECT_EQ(read.reserved[32], 9U);
    EXPECT_EQ(host.journal.calls().back(), "bcm_vlan_control_vlan_get(0, 100) = 0 "
                                           "[control={vrf=0 iif=0 flags=0x278 class=0 urpf=0}]");
    EXPECT_EQ(bcm_vlan_control_vlan_get(0, 101, &read), -7);
}

TEST_F(Sdk, GroupsPortsAndSwitchControls)
{
    bcm_vlan_create(0, 100);
    EXPECT_EQ(bcm_stg_vlan_add(0, 9, 100), -7);
    EXPECT_EQ(bcm_stg_vlan_add(0, 1, 100), 0);
    EXPECT_EQ(bcm_port_control_set(0, 0, 8, 1), 0);
    EXPECT_EQ(bcm_port_control_set(0, 5, 187, 1), -16);
    EXPECT_EQ(bcm_vlan_control_port_set(0, 5, 2, 1), 0);
    EXPECT_EQ(bcm_switch_control_set(0, 232, 1), 0);
    EXPECT_EQ(host.chip.ports.control(0, chip::PORT_CONTROL_IP4), 1);
    EXPECT_EQ(host.chip.ports.vlan_control(5, 2), 1);
    EXPECT_EQ(host.chip.switch_controls.get(232), 1);
}

TEST_F(Sdk, TrunkCreatedUnderTheCallersId)
{
    int tid = 8;
    EXPECT_EQ(bcm_trunk_create(0, 16, &tid), 0);
    EXPECT_EQ(bcm_trunk_create(0, 16, &tid), -8);
    EXPECT_EQ(last_reason(), "trunk 8 exists already");
    tid = 65536;
    EXPECT_EQ(bcm_trunk_create(0, 16, &tid), -4);
    EXPECT_EQ(host.journal.calls(),
              (Calls{"bcm_trunk_create(0, 0x10, 8) = 0", "bcm_trunk_create(0, 0x10, 8) = -8",
                     "bcm_trunk_create(0, 0x10, 65536) = -4"}));
    EXPECT_TRUE(host.chip.trunks.find(8)->members.empty());
    EXPECT_EQ(host.wrappers.chip_writes(), 1U);
}

TEST_F(Sdk, TrunkCreatedUnderTheLowestFreeId)
{
    host.chip.trunks.create(0, {});
    int tid = 77;
    EXPECT_EQ(bcm_trunk_create(0, 0, &tid), 0);
    EXPECT_EQ(tid, 1);
    EXPECT_EQ(host.journal.calls().back(), "bcm_trunk_create(0, 0x0) = 0 [tid=1]");
}

TEST_F(Sdk, TridentHasRoomFor128Trunks)
{
    for (int tid = 65408; tid <= 65535; ++tid) {
        ASSERT_EQ(bcm_trunk_create(0, 16, &tid), 0);
    }
    int tid = 0;
    EXPECT_EQ(bcm_trunk_create(0, 16, &tid), -6);
    tid = 77;
    EXPECT_EQ(bcm_trunk_create(0, 0, &tid), -6);
    EXPECT_EQ(tid, 77);
}

TEST_F(Sdk, TrunkReadBack)
{
    chip::Trunk trunk{.psc = 9};
    trunk.members = {{.gport = 0x8000005}, {.gport = 0x8000006}};
    host.chip.trunks.create(42, trunk);
    bcm_trunk_info_t info{};
    bcm_trunk_member_t members[32] = {};
    int count = 0;
    EXPECT_EQ(bcm_trunk_get(0, 42, &info, 32, members, &count), 0);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(members[1].gport, 0x8000006);
    EXPECT_EQ(host.journal.calls().back(),
              "bcm_trunk_get(0, 42, 32) = 0 [info={flags=0x0 psc=9 ipmc_psc=0 dlf=-1 mc=-1 ipmc=-1 "
              "size=0} count=2 members=[{flags=0x0 gport=0x8000005},{flags=0x0 "
              "gport=0x8000006}]]");
}

TEST_F(Sdk, TrunkReadStoresOnlyWhatThereIsRoomFor)
{
    host.chip.trunks.create(42, {.members = std::vector<chip::TrunkMember>(3, {.gport = 7})});
    bcm_trunk_info_t info{};
    bcm_trunk_member_t members[3] = {};
    int count = 0;
    EXPECT_EQ(bcm_trunk_get(0, 42, &info, 2, members, &count), 0);
    EXPECT_EQ(count, 3);
    EXPECT_EQ(members[1].gport, 7);
    EXPECT_EQ(members[2].gport, 0);
    count = -1;
    EXPECT_EQ(bcm_trunk_get(0, 43, &info, 2, members, &count), -7);
    EXPECT_EQ(count, -1);
}

TEST_F(Sdk, FieldEntryEditedAndReinstalled)
{
    bcm_pbmp_t ports{};
    EXPECT_EQ(bcm_field_action_ports_get(0, 127, 32, &ports), 0);
    ports.pbits[0] &= ~(1U << 5);
    EXPECT_EQ(bcm_field_action_ports_add(0, 127, 32, ports), -8);
    EXPECT_EQ(bcm_field_action_remove(0, 127, 32), 0);
    EXPECT_EQ(bcm_field_action_ports_add(0, 127, 32, ports), 0);
    EXPECT_TRUE(host.chip.field_entries.find(127)->installed->port_actions.at(32).has(5));
    EXPECT_EQ(host.wrappers.chip_writes(), 0U);
    EXPECT_EQ(bcm_field_entry_reinstall(0, 127), 0);
    EXPECT_FALSE(host.chip.field_entries.find(127)->installed->port_actions.at(32).has(5));
    EXPECT_EQ(host.wrappers.chip_writes(), 1U);
    EXPECT_EQ(host.journal.calls().at(0),
              "bcm_field_action_ports_get(0, 127, 32) = 0 [ports={1-104}]");
}

TEST_F(Sdk, FieldQualifierEdited)
{
    bcm_pbmp_t data{};
    bcm_pbmp_t mask{};
    EXPECT_EQ(bcm_field_qualify_InPorts_get(0, 127, &data, &mask), -7);
    EXPECT_EQ(bcm_field_qualify_InPorts_get(0, 120, &data, &mask), 0);
    EXPECT_EQ(bcm_field_qualifier_delete(0, 120, 13), 0);
    EXPECT_EQ(bcm_field_qualifier_delete(0, 120, 13), -7);
    EXPECT_EQ(bcm_field_qualify_InPorts(0, 120, sdk::to_sdk(chip::PortSet{7}), mask), 0);
    EXPECT_EQ(bcm_field_entry_reinstall(0, 120), 0);
    EXPECT_EQ(bcm_field_entry_reinstall(0, 9), -7);
    EXPECT_EQ(host.journal.calls().at(1), "bcm_field_qualify_InPorts_get(0, 120) = 0 "
                                          "[data={1-104} mask={0-255}]");
    EXPECT_EQ(host.chip.field_entries.find(120)->installed->in_ports->data, chip::PortSet{7});
}

TEST_F(Sdk, TunnelInitiatorCleared)
{
    host.chip.l3_interfaces.create(3, {});
    host.chip.tunnels.create(3, {.index = 5});
    bcm_l3_intf_t intf{};
    intf.l3a_intf_id = 3;
    EXPECT_EQ(bcm_tunnel_initiator_clear(0, &intf), 0);
    EXPECT_EQ(host.chip.l3_interfaces.find(3)->tunnel, 0);
    EXPECT_EQ(bcm_tunnel_initiator_clear(0, &intf), -7);
    EXPECT_EQ(last_reason(), "no tunnel initiator is bound to L3 interface 3");
}

TEST_F(Sdk, OnlyTakenWritesAreCounted)
{
    bcm_vlan_create(0, 100);
    bcm_vlan_create(0, 100);
    bcm_vlan_control_vlan_t control{};
    bcm_vlan_control_vlan_get(0, 100, &control);
    EXPECT_EQ(host.wrappers.chip_writes(), 1U);
}

} // namespace simswitch
