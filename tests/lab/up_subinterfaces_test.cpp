/*
 * up_subinterfaces_test.cpp: port-channels and subinterfaces come up on a
 * switch and go down again.
 */
#include "up_run.h"

#include "config_text.h"
#include "l3lif/leftovers.h"
#include "l3lif/plans.h"
#include "l3lif/readback.h"

#include <algorithm>
#include <set>

namespace
{

using lab_test::UpTest;
using nlohmann::json;
using simswitch::chip::Kind;

constexpr const char *MIXED = R"({
  "DEVICE_METADATA": {"localhost": {"mac": "02:00:00:00:00:09"}},
  "PORT": {"Ethernet0": {"mtu": "9100"}, "Ethernet1": {}, "Ethernet2": {}, "Ethernet3": {},
           "Ethernet4": {}},
  "VRF": {"Vrf_blue": {}},
  "INTERFACE": {"Ethernet0|10.0.0.1/31": {}},
  "PORTCHANNEL": {"PortChannel7": {"mtu": "9000"}},
  "PORTCHANNEL_MEMBER": {"PortChannel7|Ethernet2": {}, "PortChannel7|Ethernet3": {},
                         "PortChannel7|Ethernet4": {}},
  "PORTCHANNEL_INTERFACE": {"PortChannel7|10.0.1.1/31": {}},
  "VLAN_SUB_INTERFACE": {"Ethernet0.10|10.0.2.1/24": {}, "Ethernet1.10|10.0.3.1/24": {},
      "Po7.1": {"vlan": "10", "vrf_name": "Vrf_blue", "mtu": "2000"}, "Po7.1|10.0.4.1/24": {},
      "Po7.2": {"vlan": "20"}, "Po7.2|fc00::1/64": {}}})";

/** On both chips. */
class UpSubinterfaces : public UpTest, public ::testing::WithParamInterface<Kind>
{
protected:
    simswitch::Switch hardware{{.chip = GetParam()}};
};

INSTANTIATE_TEST_SUITE_P(Chips, UpSubinterfaces, ::testing::Values(Kind::trident, Kind::trident2));

} // namespace

TEST_P(UpSubinterfaces, ValuesAreThoseOfTheChip)
{
    EXPECT_EQ(run_json(hardware, MIXED), 0) << text;
    std::vector<std::string> rows;
    std::set<int> iifs;
    for (const json &row : object["interfaces"]) {
        rows.push_back(row["name"].get<std::string>() + " " + row["kind"].get<std::string>() + " " +
                       row["vlan"].dump() + " " + row["vrf"].dump() + " " + row["mtu"].dump() +
                       " " + row["ports"].dump() + " " + row["result"].get<std::string>());
        iifs.insert(row["iif"].get<int>());
    }
    EXPECT_EQ(rows, (std::vector<std::string>{
                        "Ethernet0 port 4094 1 9100 [1] up",
                        "PortChannel7 port-channel 4094 1 9000 [3,4,5] up",
                        "Ethernet0.10 subinterface 10 1 9100 [1] up",
                        "Ethernet1.10 subinterface 10 1 1500 [2] up",
                        "Po7.1 subinterface 10 2 2000 [3,4,5] up",
                        "Po7.2 subinterface 20 1 9000 [3,4,5] up",
                    }));
    EXPECT_EQ(iifs.size(), 6U);
    EXPECT_EQ(object["skipped"], json::array());
    EXPECT_EQ(hardware.chip.vlans.find(10)->members.text(), "{0-5}");
    EXPECT_EQ(hardware.chip.vlan_translations.size(), 4U);
}

TEST_P(UpSubinterfaces, JsonHasTheCallsOfAllMembers)
{
    EXPECT_EQ(run_json(hardware, MIXED, {.view = {.calls = true}}), 0);
    const json &channel = object["interfaces"][1];
    EXPECT_EQ(channel["ifindex"], 0x20007000);
    EXPECT_EQ(channel["calls"], channel["call_list"].size());
    const std::vector<std::string> calls = channel["call_list"];
    EXPECT_EQ(std::count_if(calls.begin(), calls.end(),
                            [](const std::string &call) {
                                return call.starts_with("fwmpd_bcm_trunk_member_add(");
                            }),
              3);
    EXPECT_EQ(object["interfaces"][2]["ifindex"], 0x1000000a);
    EXPECT_EQ(object["interfaces"][4]["ifindex"], 0x20007001);
}

TEST_P(UpSubinterfaces, ThenDownLeavesTheEmptyTrunkOnly)
{
    EXPECT_EQ(run(hardware, MIXED, {.then_down = true}), 0) << text;
    EXPECT_NE(text.find("6 interfaces and the router MAC\n  nothing left behind\n  stays by "
                        "design: interface numbers held back: 6; VLAN 4094 and spanning tree "
                        "group 2; trunks without members: 1;"),
              std::string::npos)
        << text;
    EXPECT_EQ(hardware.chip.vlans.find(10), nullptr);
    EXPECT_EQ(hardware.chip.vlan_translations.size(), 0U);
    ASSERT_NE(hardware.chip.trunks.find(1), nullptr);
    EXPECT_EQ(hardware.chip.trunks.find(1)->members.size(), 0U);
}

TEST_P(UpSubinterfaces, MemberThatTheTrunkDoesntTakeFailsThePortChannel)
{
    hardware.journal.arm({.function = "fwmpd_bcm_trunk_member_add", .code = -6, .nth = 2});
    EXPECT_EQ(run_json(hardware, MIXED), 1);
    const json &channel = object["interfaces"][1];
    EXPECT_EQ(channel["result"], "failed");
    EXPECT_EQ(channel["ports"], json({3, 5}));
    EXPECT_EQ(channel["error"].get<std::string>().substr(0, 49),
              "bcm_trunk_member_add failed for TRUNK 1 PORT 4: t");
}

TEST_P(UpSubinterfaces, TranslationThatIsMissingFailsTheSubinterface)
{
    hardware.journal.arm({.function = "fwmpd_bcm_vlan_translate_action_add", .code = -6, .nth = 2});
    EXPECT_EQ(run_json(hardware, MIXED), 1);
    const json &failed = object["interfaces"][3];
    EXPECT_EQ(failed["result"], "failed");
    EXPECT_EQ(failed["iif"], nullptr);
    EXPECT_EQ(failed["ports"], json::array());
    EXPECT_EQ(object["totals"]["failed"], 1);
}

TEST_P(UpSubinterfaces, BeforeTheMembersHasNoNumberYet)
{
    const auto config = lab_test::read(MIXED);
    auto plans = lab::l3lif::plans_of(config);
    std::reverse(plans.begin() + 1, plans.end()); // all but the routed port
    const lab::l3lif::Moment before = lab::l3lif::look(hardware);
    lab::l3lif::Layer layer(hardware);
    std::vector<std::string> up;
    for (auto &plan : plans) {
        const auto &interface = layer.bring_up(std::move(plan));
        if (lab::l3lif::read_back(hardware, *interface.lif).missing.empty()) {
            up.push_back(interface.lif->plan().name);
        }
    }
    // The two on the port-channel find no member; those on ports need no main interface.
    EXPECT_EQ(up, (std::vector<std::string>{"Ethernet0", "Ethernet1.10", "Ethernet0.10",
                                            "PortChannel7"}));
    layer.take_down();
    EXPECT_EQ(lab::l3lif::left_behind(before, hardware), std::vector<std::string>{});
}

TEST_P(UpSubinterfaces, AloneInAFileComeUpBehindOnePort)
{
    EXPECT_EQ(run_json(hardware, R"({"PORT": {"Ethernet0": {}, "Ethernet1": {}},
        "VLAN_SUB_INTERFACE": {"Ethernet0.10|10.0.0.1/24": {}, "Ethernet1.10|10.0.1.1/24": {}}})",
                       {.then_down = true}),
              0)
        << text;
    EXPECT_EQ(object["interfaces"][0]["name"], "Ethernet1");
    EXPECT_EQ(object["totals"]["up"], 3);
    EXPECT_EQ(object["notes"][1], "leaf.json: no row makes Ethernet1 routed; up without addresses, "
                                  "for the subinterfaces");
    EXPECT_EQ(object["teardown"]["left"], json::array());
}
