/*
 * up_vlan_failures_test.cpp: what is told when the chip refuses a VLAN, an SVI,
 * a virtual MAC or a private-VLAN pair, and when one of them doesn't go.
 */
#include "l3lif/l2_side.h"
#include "up_run.h"

#include "chip/vlans.h"
#include "rtifhal_trident.h"

#include <fmt/format.h>

#include <cstdint>
#include <string_view>
#include <vector>

namespace
{

using lab_test::UpTest;
using nlohmann::json;

constexpr const char *ONE = R"({"DEVICE_METADATA": {"localhost": {"mac": "02:00:00:00:00:09"}},
  "PORT": {"Ethernet0": {}}, "VLAN": {"Vlan10": {}, "Vlan11": {}},
  "VLAN_MEMBER": {"Vlan10|Ethernet0": {}}, "VLAN_INTERFACE": {"Vlan10|10.0.0.1/24": {}},
  "PVLAN": {"Vlan10|Vlan11": {}}, "VRRP": {"Vlan10|8": {}}})";

class UpVlanFailures : public UpTest
{
protected:
    simswitch::Switch hardware;
};

} // namespace

TEST_F(UpVlanFailures, VlanThatTheChipHasNoRoomFor)
{
    simswitch::Switch small({.limits = {.vlans = 2}});
    EXPECT_EQ(run_json(small, ONE), 1);
    EXPECT_EQ(object["vlans"][0]["result"], "up");
    EXPECT_EQ(object["vlans"][1]["result"], "failed");
    EXPECT_NE(object["vlans"][1]["error"].get<std::string>().find("2"), std::string::npos);
    EXPECT_EQ(object["private_vlan_pairs"][0]["error"],
              "bcm_vlan_control_vlan_set(11) failed: no such entry");
    EXPECT_EQ(object["interfaces"][0]["result"], "up");
}

TEST_F(UpVlanFailures, VlanThatTheChipHasNoRoomForIsTold)
{
    simswitch::Switch small({.limits = {.vlans = 2}});
    EXPECT_EQ(run(small, ONE, {.then_down = true}), 1);
    EXPECT_NE(text.find("\n2 VLANs: 1 up, 1 failed; 1 virtual MAC: 1 up, 0 failed; "
                        "1 private-VLAN pair: 0 up, 1 failed\n\nFailed:\n  Vlan11: code -6: "),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("  nothing left behind\n"), std::string::npos) << text;
}

TEST_F(UpVlanFailures, SviWithoutItsTie)
{
    // The first write opens the VLAN, the second one names the ingress object.
    hardware.journal.arm({.function = "fwmpd_bcm_vlan_control_vlan_set", .code = -1, .nth = 2});
    EXPECT_EQ(run_json(hardware, ONE), 1);
    EXPECT_EQ(object["interfaces"][0]["result"], "failed");
    EXPECT_EQ(object["interfaces"][0]["code"], -1);
    EXPECT_EQ(object["interfaces"][0]["iif"], nullptr);
    EXPECT_EQ(object["totals"]["failed"], 1);
}

TEST_F(UpVlanFailures, StationsThatTheChipRefuses)
{
    // The second station is that of the secondary, the third the SVI's own.
    for (const unsigned nth : {2U, 3U}) {
        rtifhal_test::reset_library();
        simswitch::Switch switched;
        switched.journal.arm({.function = "bcm_l2_station_add", .code = -6, .nth = nth});
        EXPECT_EQ(run_json(switched, ONE, {.then_down = true}), 1);
        const json &mac = object["virtual_macs"][0];
        EXPECT_EQ(mac["result"], "failed");
        EXPECT_EQ(mac["code"], 0);
        EXPECT_EQ(mac["station"].is_null(), nth == 3);
        EXPECT_EQ(mac["mirrored"].size(), nth == 2 ? 0U : 1U);
        EXPECT_EQ(mac["error"].get<std::string>().substr(0, 35),
                  "fhrp mac (00:00:5e:00:01:08) failed");
    }
}

TEST_F(UpVlanFailures, StationThatIsRefusedIsTold)
{
    hardware.journal.arm({.function = "bcm_l2_station_add", .code = -6, .nth = 3});
    EXPECT_EQ(run(hardware, ONE), 1);
    EXPECT_NE(text.find("\n00:00:5e:00:01:08  Vlan10     VRRP 8       -     -        -  failed"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("\nFailed:\n  virtual MAC 00:00:5e:00:01:08 of Vlan10: code 0: fhrp mac "),
              std::string::npos)
        << text;
}

TEST_F(UpVlanFailures, StationsThatTheChipKeeps)
{
    hardware.journal.arm({.function = "bcm_l2_station_delete", .code = -7, .forever = true});
    EXPECT_EQ(run_json(hardware, ONE, {.then_down = true}), 1);
    EXPECT_EQ(object["teardown"]["clean"], false);
    std::vector<std::string> left = object["teardown"]["left"];
    ASSERT_EQ(left.size(), 3U);
    EXPECT_EQ(left[0].substr(0, 12), "+ station 1:");
    EXPECT_EQ(left[1].substr(0, 12), "+ station 2:");
    EXPECT_EQ(left[2].substr(0, 12), "+ station 3:");
}

TEST_F(UpVlanFailures, PairThatIsNotMirrored)
{
    hardware.journal.arm({.function = "fwmpd_bcm_vlan_control_vlan_set",
                          .code = -1,
                          .when = [](std::string_view a) { return a.starts_with("0, 11, "); }});
    EXPECT_EQ(run(hardware, ONE), 1);
    EXPECT_NE(text.find("\n  pair 10, 11: bcm_vlan_control_vlan_set(11) failed\n"),
              std::string::npos)
        << text;
}

TEST_F(UpVlanFailures, VlanThatIsInUseStays)
{
    // The delete of the SVI stops before it touches anything.
    hardware.journal.arm({.function = "bcm_l3_intf_get", .code = -7, .forever = true});
    EXPECT_EQ(run_json(hardware, ONE, {.then_down = true}), 1);
    std::vector<std::string> left = object["teardown"]["left"];
    ASSERT_GE(left.size(), 5U) << text;
    EXPECT_EQ(left[0].substr(0, 17), "+ L3 interface 3:");
    EXPECT_EQ(left[1].substr(0, 15), "+ L3 ingress 3:");
    EXPECT_EQ(left[2].substr(0, 10), "+ VLAN 10:");
    EXPECT_EQ(left[3], "VLAN 10: the library counts uses of it: 0 ports, 1 SVI, 0 L2");
    EXPECT_EQ(left[4], "VLAN 10: its cached controls name ingress object 3");
    EXPECT_EQ(left.back(), "VLAN 10: the forwarding manager's record");
    EXPECT_EQ(run(hardware, R"({"PORT": {}})"), 0);
}

TEST_F(UpVlanFailures, VlanThatIsInUseIsNoCleanEndWhateverTheOthersDo)
{
    lab::l3lif::L2Side l2(hardware);
    for (const std::uint16_t vlan : std::vector<std::uint16_t>{10, 11, 12}) {
        l2.set_up({fmt::format("Vlan{}", vlan), vlan, lab::config::VlanRole::none, {}, {}});
    }
    rtifhal_set_svi(11);
    EXPECT_FALSE(l2.take_down());
    EXPECT_TRUE(l2.find(10)->down.ok());
    EXPECT_EQ(l2.find(11)->down.code, -1);
    EXPECT_TRUE(l2.find(12)->down.ok());
    EXPECT_EQ(l2.find(13), nullptr);
    EXPECT_NE(hardware.chip.vlans.find(11), nullptr);
    EXPECT_EQ(hardware.chip.vlans.find(12), nullptr);
}

TEST_F(UpVlanFailures, VlanThatStaysIsTold)
{
    hardware.journal.arm({.function = "bcm_l3_intf_get", .code = -7, .forever = true});
    EXPECT_EQ(run(hardware, ONE, {.then_down = true}), 1);
    EXPECT_NE(text.find("\n  VLAN 10: VLAN 10 has users yet, and stays in the chip\n"),
              std::string::npos)
        << text;
}
