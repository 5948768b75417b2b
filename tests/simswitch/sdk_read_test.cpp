/*
 * sdk_read_test.cpp: what the SDK reads back from the chip, and the switching
 * on and off of field groups. sdk_test.cpp has the rest of the SDK.
 */
#include "journal/format.h"
#include "switch.h"

#include <sdk/field.h>
#include <sdk/l2.h>
#include <sdk/l3.h>

#include <algorithm>
#include <iterator>

namespace simswitch
{

namespace
{

using Calls = std::vector<std::string>;

struct SdkRead : testing::Test {
    Switch host;

    std::string last_reason() const { return host.journal.records().back().reason; }
};

} // namespace

TEST_F(SdkRead, StationReadBack)
{
    bcm_l2_station_t station{};
    station.flags = 0x3c;
    std::fill(std::begin(station.dst_mac_mask), std::end(station.dst_mac_mask), std::uint8_t{0xff});
    station.dst_mac[5] = 9;
    station.vlan = 4094;
    station.vlan_mask = 4095;
    station.src_port = 5;
    station.src_port_mask = 127;
    int id = 0;
    bcm_l2_station_add(0, &id, &station);
    bcm_l2_station_t read{};
    EXPECT_EQ(bcm_l2_station_get(0, id, &read), 0);
    EXPECT_EQ(format_value(read), format_value(station));
    EXPECT_EQ(host.journal.calls().at(1),
              "bcm_l2_station_get(0, 1) = 0 [station={flags=0x3c "
              "mac=00:00:00:00:00:09/ff:ff:ff:ff:ff:ff vlan=4094/4095 port=5/127}]");
    EXPECT_EQ(host.chip.writes, 1U) << "reading isn't writing";
}

TEST_F(SdkRead, StationThatTheChipHasLostCantBeRead)
{
    bcm_l2_station_t station{};
    int id = 0;
    bcm_l2_station_add(0, &id, &station);
    host.chip.stations.remove(id);
    station.flags = 0x77;
    EXPECT_EQ(bcm_l2_station_get(0, id, &station), -7);
    EXPECT_EQ(last_reason(), "station 1 does not exist");
    EXPECT_EQ(bcm_l2_station_get(1, id, &station), -3);
    EXPECT_EQ(station.flags, 0x77U);
}

TEST_F(SdkRead, IngressObjectReadBack)
{
    host.chip.l3_ingresses.set(3, {.flags = 6, .vrf = 1, .intf_class = 64});
    bcm_l3_ingress_t ingress{};
    EXPECT_EQ(bcm_l3_ingress_get(0, 3, &ingress), 0);
    EXPECT_EQ(ingress.vrf, 1);
    EXPECT_EQ(host.journal.calls(),
              (Calls{"bcm_l3_ingress_get(0, 3) = 0 "
                     "[ingress={flags=0x6 vrf=1 urpf=0 class=64 ipmc=0 qos=0}]"}));
}

TEST_F(SdkRead, UnknownIngressObjectLeavesTheRecordAlone)
{
    bcm_l3_ingress_t ingress{};
    ingress.vrf = 77;
    EXPECT_EQ(bcm_l3_ingress_get(0, 3, &ingress), -7);
    EXPECT_EQ(last_reason(), "L3 ingress object 3 does not exist");
    EXPECT_EQ(ingress.vrf, 77);
}

TEST_F(SdkRead, FieldGroupOfNeighbourDiscoveryIsThereAndOff)
{
    int enable = 77;
    EXPECT_EQ(bcm_field_group_enable_get(0, chip::ND_GROUP, &enable), 0);
    EXPECT_EQ(enable, 0);
    EXPECT_EQ(bcm_field_group_enable_set(0, chip::ND_GROUP, 1), 0);
    EXPECT_EQ(bcm_field_group_enable_get(0, chip::ND_GROUP, &enable), 0);
    EXPECT_EQ(enable, 1);
    EXPECT_EQ(host.journal.calls(), (Calls{"bcm_field_group_enable_get(0, 13) = 0 [enable=0]",
                                           "bcm_field_group_enable_set(0, 13, 1) = 0",
                                           "bcm_field_group_enable_get(0, 13) = 0 [enable=1]"}));
    EXPECT_EQ(host.chip.writes, 1U);
}

TEST_F(SdkRead, SwitchingAFieldGroupLeavesTheRestOfItAlone)
{
    host.chip.field_groups.create(11, {.priority = 3, .qualifiers = {13}});
    bcm_field_group_enable_set(0, 11, 0);
    EXPECT_EQ(text(*host.chip.field_groups.find(11)), "priority 3 qualifiers 13 off");
    bcm_field_group_enable_set(0, 11, 1);
    EXPECT_EQ(text(*host.chip.field_groups.find(11)), "priority 3 qualifiers 13");
}

TEST_F(SdkRead, UnknownFieldGroupIsRefused)
{
    int enable = 77;
    EXPECT_EQ(bcm_field_group_enable_get(0, 99, &enable), -7);
    EXPECT_EQ(enable, 77);
    EXPECT_EQ(bcm_field_group_enable_set(0, 99, 1), -7);
    EXPECT_EQ(last_reason(), "field group 99 does not exist");
}

} // namespace simswitch
