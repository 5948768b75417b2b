/*
 * vlan_records_test.cpp: the VLANs of the forwarding manager and what each is
 * in a private VLAN.
 */
#include "outcome_matchers.h"
#include "switch.h"

#include <fwm/vlan.h>

#include <gtest/gtest.h>

namespace simswitch
{

namespace
{

using fwm::PrivateVlan;
using Calls = std::vector<std::string>;

struct VlanRecords : testing::Test {
    Switch sw;
    fwm::VlanDirectory &vlans = sw.host.vlans;

    std::string last_reason() const { return sw.journal.records().back().reason; }
    /** The three answers, as far as they can be asked. */
    static bool is_primary(std::uint16_t vlan)
    {
        fwm_fwim_vlan *record = FWM_FWIM_FIND_VLAN(1, vlan);
        fwm_fwim_pvlan *pvlan = record == nullptr ? nullptr : FWM_FWIM_VLAN_PVLAN(record);
        return pvlan != nullptr && FWM_FWIM_PVLAN_IS_PRIMARY(pvlan) != 0;
    }
};

} // namespace

TEST_F(VlanRecords, NoneAtFirst)
{
    EXPECT_EQ(vlans.size(), 0U);
    EXPECT_EQ(FWM_FWIM_FIND_VLAN(1, 1), nullptr);
    EXPECT_EQ(FWM_FWIM_FIND_VLAN(1, 4095), nullptr);
    EXPECT_EQ(vlans.role(1), PrivateVlan::none);
}

TEST_F(VlanRecords, PrimaryIsTold)
{
    vlans.add(100, PrivateVlan::primary);
    EXPECT_TRUE(is_primary(100));
    EXPECT_EQ(sw.journal.calls(),
              (Calls{"FWM_FWIM_FIND_VLAN(1, 100) = record", "FWM_FWIM_VLAN_PVLAN(record) = record",
                     "FWM_FWIM_PVLAN_IS_PRIMARY(record) = 1"}));
}

TEST_F(VlanRecords, SecondaryIsNoPrimary)
{
    vlans.add(101, PrivateVlan::secondary);
    EXPECT_FALSE(is_primary(101));
    EXPECT_EQ(sw.journal.calls().back(), "FWM_FWIM_PVLAN_IS_PRIMARY(record) = 0");
}

TEST_F(VlanRecords, PlainVlanIsInNoPrivateVlan)
{
    vlans.add(100);
    EXPECT_FALSE(is_primary(100));
    EXPECT_FALSE(is_primary(200));
    EXPECT_EQ(sw.journal.calls(),
              (Calls{"FWM_FWIM_FIND_VLAN(1, 100) = record", "FWM_FWIM_VLAN_PVLAN(record) = null",
                     "FWM_FWIM_FIND_VLAN(1, 200) = null"}));
}

TEST_F(VlanRecords, RecordStaysWhileTheRoleChanges)
{
    vlans.add(100, PrivateVlan::primary);
    fwm_fwim_vlan *record = FWM_FWIM_FIND_VLAN(1, 100);
    fwm_fwim_pvlan *pvlan = FWM_FWIM_VLAN_PVLAN(record);
    for (int vlan = 1; vlan < 100; ++vlan) {
        vlans.add(vlan);
    }
    EXPECT_THAT(vlans.set_role(100, PrivateVlan::secondary), Done());
    EXPECT_EQ(FWM_FWIM_FIND_VLAN(1, 100), record);
    EXPECT_EQ(FWM_FWIM_VLAN_PVLAN(record), pvlan);
    EXPECT_EQ(FWM_FWIM_PVLAN_IS_PRIMARY(pvlan), 0);
    vlans.set_role(100, PrivateVlan::none);
    EXPECT_EQ(FWM_FWIM_VLAN_PVLAN(record), nullptr);
}

TEST_F(VlanRecords, RemovedVlanIsUnknown)
{
    vlans.add(100, PrivateVlan::primary);
    EXPECT_THAT(vlans.remove(100), Done());
    EXPECT_EQ(FWM_FWIM_FIND_VLAN(1, 100), nullptr);
    EXPECT_THAT(vlans.add(100), Done());
    EXPECT_EQ(vlans.role(100), PrivateVlan::none);
}

TEST_F(VlanRecords, AllAreListedInOrder)
{
    vlans.add(200, PrivateVlan::secondary);
    vlans.add(100, PrivateVlan::primary);
    vlans.add(150);
    EXPECT_EQ(vlans.all(), (std::map<int, PrivateVlan>{{100, PrivateVlan::primary},
                                                       {150, PrivateVlan::none},
                                                       {200, PrivateVlan::secondary}}));
}

TEST_F(VlanRecords, Refusals)
{
    EXPECT_THAT(vlans.add(0), Refused(-4, "VLAN record 0 is not in 1..4095"));
    EXPECT_THAT(vlans.add(4096), Refused(-4, "VLAN record 4096 is not in 1..4095"));
    vlans.add(100, PrivateVlan::primary);
    EXPECT_THAT(vlans.add(100), Refused(-8, "VLAN record 100 exists already"));
    EXPECT_EQ(vlans.role(100), PrivateVlan::primary);
    EXPECT_THAT(vlans.remove(101), Refused(-7, "VLAN record 101 does not exist"));
    EXPECT_THAT(vlans.set_role(101, PrivateVlan::none),
                Refused(-7, "VLAN record 101 does not exist"));
}

TEST_F(VlanRecords, ThereIsOneInstance)
{
    vlans.add(100);
    EXPECT_EQ(FWM_FWIM_FIND_VLAN(2, 100), nullptr);
    EXPECT_EQ(last_reason(), "instance 2 does not exist");
}

TEST_F(VlanRecords, NullRecordHasNoAnswer)
{
    EXPECT_EQ(FWM_FWIM_VLAN_PVLAN(nullptr), nullptr);
    EXPECT_EQ(FWM_FWIM_PVLAN_IS_PRIMARY(nullptr), 0);
}

TEST_F(VlanRecords, FaultsMakeThemUnknown)
{
    vlans.add(100, PrivateVlan::primary);
    for (const char *function :
         {"FWM_FWIM_FIND_VLAN", "FWM_FWIM_VLAN_PVLAN", "FWM_FWIM_PVLAN_IS_PRIMARY"}) {
        sw.journal.arm({.function = function, .code = 0});
        EXPECT_FALSE(is_primary(100)) << function;
        EXPECT_EQ(last_reason(), "injected");
        EXPECT_TRUE(is_primary(100)) << function;
    }
}

} // namespace simswitch
