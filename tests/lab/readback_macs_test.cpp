/*
 * readback_macs_test.cpp: a virtual MAC or a private-VLAN pair that the chip
 * has not, though nobody refused it: reading back finds out, and says what is
 * missing.
 *
 * up_vlan_failures_test.cpp has refusals, which the library reports.
 */
#include "l3lif/readback_macs.h"
#include "up_run.h"

#include "services/ifindex.h"

#include <string_view>
#include <vector>

namespace
{

using lab_test::UpTest;
using nlohmann::json;

constexpr const char *PRIMARY_AND_SECONDARY =
    R"({"DEVICE_METADATA": {"localhost": {"mac": "02:00:00:00:00:09"}},
  "VLAN": {"Vlan10": {}, "Vlan11": {}}, "VLAN_INTERFACE": {"Vlan10|10.0.0.1/24": {}},
  "PVLAN": {"Vlan10|Vlan11": {}}, "VRRP": {"Vlan10|8": {}}})";

/** What the lab finds by itself: nothing is reported by the library. */
class ReadbackMacs : public UpTest
{
protected:
    void expect_failed(const char *list, const std::string &error)
    {
        EXPECT_EQ(run_json(hardware, PRIMARY_AND_SECONDARY), 1);
        EXPECT_EQ(object[list][0]["result"], "failed") << text;
        EXPECT_EQ(object[list][0]["error"], error);
    }

    simswitch::Switch hardware;
};

} // namespace

TEST_F(ReadbackMacs, StationThatTheLibraryDoesntKeep)
{
    // Of the secondary, then of the interface itself.
    hardware.journal.arm({.function = "avl_insert", .code = -6, .nth = 2});
    expect_failed("virtual_macs", "the library keeps no station of it for VLAN 10");
    EXPECT_EQ(object["virtual_macs"][0]["station"], nullptr);
    EXPECT_EQ(object["virtual_macs"][0]["mirrored"],
              json::parse(R"([{"vlan": 11, "station": 2}])"));
}

TEST_F(ReadbackMacs, StationOfASecondaryThatTheLibraryDoesntKeep)
{
    hardware.journal.arm({.function = "avl_insert", .code = -6});
    expect_failed("virtual_macs", "the library keeps no station of it for VLAN 11");
    EXPECT_EQ(object["virtual_macs"][0]["station"], 3);
    EXPECT_EQ(object["virtual_macs"][0]["mirrored"], json::array());
}

TEST_F(ReadbackMacs, StationThatTheChipNeverGot)
{
    hardware.journal.arm({.function = "bcm_l2_station_add", .code = 0, .nth = 3});
    expect_failed("virtual_macs", "the chip's station 0 is not of this MAC");
}

TEST_F(ReadbackMacs, StationThatHasBecomeAnothers)
{
    EXPECT_EQ(run(hardware, PRIMARY_AND_SECONDARY), 0) << text;
    lab::l3lif::VirtualMacPlan plan;
    plan.ifindex = simswitch::if_index::svi(10);
    plan.vlan = 10;
    plan.mac = {0x00, 0x00, 0x5e, 0x00, 0x01, 0x08};
    EXPECT_EQ(lab::l3lif::read_back(hardware, plan, {11}).missing, "");
    auto station = *hardware.chip.stations.find(3);
    station.mac = {0x02, 0x00, 0x00, 0x00, 0x00, 0x77};
    EXPECT_TRUE(hardware.chip.stations.set(3, station).ok());
    const auto view = lab::l3lif::read_back(hardware, plan, {11});
    EXPECT_EQ(view.missing, "the chip's station 3 is not of this MAC");
    ASSERT_EQ(view.stations.size(), 1U);
    EXPECT_EQ(view.stations[0].vlan, 11);
}

TEST_F(ReadbackMacs, StationOfAPortChannelMatchesInAnyVlanAndOnAnyPort)
{
    constexpr const char *CHANNEL = R"({"PORT": {"Ethernet0": {}, "Ethernet1": {}},
        "PORTCHANNEL_MEMBER": {"PortChannel1|Ethernet0": {}},
        "PORTCHANNEL_INTERFACE": {"PortChannel1|10.0.0.1/24": {}}, "VRRP": {"PortChannel1|8": {}}})";
    EXPECT_EQ(run(hardware, CHANNEL), 0);
    EXPECT_NE(text.find("\n00:00:5e:00:01:08  PortChannel1  VRRP 8   any   any        2  up"),
              std::string::npos)
        << text;
    rtifhal_test::reset_library();
    simswitch::Switch other;
    EXPECT_EQ(run_json(other, CHANNEL), 0);
    EXPECT_EQ(object["virtual_macs"][0]["vlan"], nullptr);
    EXPECT_EQ(object["virtual_macs"][0]["port"], nullptr);
}

TEST_F(ReadbackMacs, SecondaryThatTheChipNeverTied)
{
    const auto of_the_secondary = [](std::string_view arguments) {
        return arguments.starts_with("0, 11, ");
    };
    for (const char *function : {"fwmpd_bcm_vlan_control_vlan_set", "bcm_vlan_control_vlan_set"}) {
        hardware.journal.arm(
            {.function = function, .code = 0, .forever = true, .when = of_the_secondary});
    }
    expect_failed("private_vlan_pairs", "the chip's VLAN 11 names ingress object 0, not 3");
    EXPECT_EQ(object["virtual_macs"][0]["result"], "up");
}

TEST_F(ReadbackMacs, FamiliesOfASecondaryAreThoseThatItsVlanRoutes)
{
    using Families = std::vector<std::string_view>;
    EXPECT_EQ(run(hardware, PRIMARY_AND_SECONDARY), 0) << text;
    const lab::l3lif::PairPlan pair{10, 11};
    EXPECT_EQ(lab::l3lif::read_back(hardware, pair, 3).families, (Families{"ipv4", "ipv6"}));
    auto controls = *hardware.wrappers.vlan_controls(11);
    controls.vc_flags |= 0x10; // IPv6 routing off
    hardware.wrappers.set_vlan_controls(11, controls);
    hardware.end_request();
    const auto view = lab::l3lif::read_back(hardware, pair, 3);
    EXPECT_EQ(view.families, Families{"ipv4"});
    EXPECT_EQ(view.missing, "");
    EXPECT_EQ(view.macs, 1);
}

TEST_F(ReadbackMacs, SecondaryThatTheChipDoesntHave)
{
    const auto view = lab::l3lif::read_back(hardware, lab::l3lif::PairPlan{10, 11}, 3);
    EXPECT_EQ(view.missing, "the chip has no VLAN 11");
    EXPECT_EQ(view.iif, 0);
}
