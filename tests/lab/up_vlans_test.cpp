/*
 * up_vlans_test.cpp: SVIs, virtual MACs and private-VLAN pairs come up on a
 * switch and go down again.
 */
#include "up_run.h"

#include "chip/stgs.h"
#include "chip/vlans.h"
#include "rtifhal_trident.h"

#include <fmt/format.h>

#include <algorithm>
#include <fstream>
#include <iterator>

namespace
{

using lab_test::UpTest;
using nlohmann::json;
using simswitch::chip::Kind;

constexpr const char *CAMPUS = R"({
  "DEVICE_METADATA": {"localhost": {"mac": "02:00:00:00:00:09"}},
  "PORT": {"Ethernet0": {}, "Ethernet1": {}, "Ethernet2": {}, "Ethernet3": {}, "Ethernet4": {}},
  "VRF": {"Vrf_a": {}},
  "PORTCHANNEL_MEMBER": {"PortChannel1|Ethernet2": {}, "PortChannel1|Ethernet3": {}},
  "INTERFACE": {"Ethernet4|10.9.0.1/24": {}},
  "VLAN": {"Vlan100": {"mtu": "9000"}, "Vlan101": {}, "Vlan102": {}, "Vlan200": {}, "Vlan300": {},
           "Vlan301": {}},
  "VLAN_MEMBER": {"Vlan100|PortChannel1": {"tagging_mode": "tagged"}, "Vlan101|Ethernet0": {},
                  "Vlan102|Ethernet1": {}, "Vlan200|PortChannel1": {}},
  "VLAN_INTERFACE": {"Vlan100": {"static_anycast_gateway": "true"}, "Vlan100|10.1.0.1/24": {},
                     "Vlan200": {"vrf_name": "Vrf_a", "mac_addr": "02:00:00:00:00:88"},
                     "Vlan200|10.2.0.1/24": {}, "Vlan200|fc00::1/64": {}},
  "PVLAN": {"Vlan100|Vlan101": {}, "Vlan100|Vlan102": {}, "Vlan300|Vlan301": {}},
  "SAG": {"GLOBAL": {"gateway_mac": "00:11:22:33:44:55"}},
  "VRRP": {"Vlan200|8": {"vip": ["10.2.0.254", "fc00::254"]}, "Ethernet4|7": {}}})";

/** One SVI, so that numbers are few. */
constexpr const char *ONE = R"({"DEVICE_METADATA": {"localhost": {"mac": "02:00:00:00:00:09"}},
  "PORT": {"Ethernet0": {}}, "VLAN": {"Vlan10": {}, "Vlan11": {}},
  "VLAN_MEMBER": {"Vlan10|Ethernet0": {}}, "VLAN_INTERFACE": {"Vlan10|10.0.0.1/24": {}},
  "PVLAN": {"Vlan10|Vlan11": {}}, "VRRP": {"Vlan10|8": {}}})";

/** On both chips. */
class UpVlans : public UpTest, public ::testing::WithParamInterface<Kind>
{
protected:
    simswitch::Switch hardware{{.chip = GetParam()}};
};

/** On a Trident2. */
class UpVlansText : public UpTest
{
protected:
    simswitch::Switch hardware{{.chip = Kind::trident2}};
};

INSTANTIATE_TEST_SUITE_P(Chips, UpVlans, ::testing::Values(Kind::trident, Kind::trident2));

std::string source_file(const std::string &name)
{
    std::ifstream file(std::string(RTIFHAL_SOURCE_DIR) + "/" + name);
    return {std::istreambuf_iterator<char>(file), {}};
}

/** The blocks of JSON in a text of Markdown. */
std::vector<std::string> json_blocks(const std::string &markdown)
{
    static const std::string OPENING = "```json\n";
    std::vector<std::string> blocks;
    for (std::size_t at = markdown.find(OPENING); at != std::string::npos;
         at = markdown.find(OPENING, at)) {
        at += OPENING.size();
        const std::size_t end = std::min(markdown.find("```", at), markdown.size());
        blocks.push_back(markdown.substr(at, end - at));
    }
    return blocks;
}

/** The part of a run's text from one word to another. */
std::string between(const std::string &text, const std::string &from, const std::string &to)
{
    const std::size_t start = text.find(from);
    return start == std::string::npos ? "" : text.substr(start, text.find(to, start) - start);
}

} // namespace

TEST_F(UpVlansText, Tables)
{
    EXPECT_EQ(run(hardware, CAMPUS), 0);
    EXPECT_EQ(between(text, "INTERFACE", "\nNotes"),
              R"(INTERFACE  KIND  IIF  VLAN  VRF   MTU  FAMILIES   PORTS  RESULT  CALLS
Ethernet4  port    3  4094    1  1500  ipv4           5  up         92
Vlan100    svi     4   100    1  9000  ipv4         3,4  up         36
Vlan200    svi     5   200    2  1500  ipv4 ipv6    3,4  up         35

VIRTUAL MAC        INTERFACE  SOURCE    VLAN  PORT  STATION  RESULT  CALLS
00:00:5e:00:01:07  Ethernet4  VRRP 7    4094     5        2  up         11
00:11:22:33:44:55  Vlan100    SAG        100   any        5  up         23
00:11:22:33:44:55  Vlan100    mirrored   101   any        3  up
00:11:22:33:44:55  Vlan100    mirrored   102   any        4  up
00:00:5e:00:01:08  Vlan200    VRRP 8     200   any        6  up         11
00:00:5e:00:02:08  Vlan200    VRRP 8     200   any        7  up         11

PRIMARY  SECONDARY  IIF  FAMILIES  VIRTUAL MACS  RESULT  CALLS
    100        101    4  ipv4                 1  up          8
    100        102    4  ipv4                 1  up          8
    300        301    -  -                    0  up          1

3 interfaces: 3 up, 0 failed; 242 platform calls; 0 rows not taken
6 VLANs: 6 up, 0 failed; 4 virtual MACs: 4 up, 0 failed; 3 private-VLAN pairs: 3 up, 0 failed
)");
}

TEST_P(UpVlans, ValuesAreThoseOfTheChip)
{
    EXPECT_EQ(run_json(hardware, CAMPUS), 0) << text;
    const json &svi = object["interfaces"][2];
    EXPECT_EQ(svi["name"], "Vlan200");
    EXPECT_EQ(svi["ifindex"], 0x300000c8);
    EXPECT_EQ(svi["families"], json({"ipv4", "ipv6"}));
    EXPECT_EQ(svi["ports"], json({3, 4}));
    const auto *vlan = hardware.chip.vlans.find(200);
    EXPECT_EQ(svi["iif"], vlan->controls.ingress_if);
    EXPECT_EQ(simswitch::chip::text(hardware.chip.l3_interfaces.find(svi["iif"])->mac),
              "02:00:00:00:00:88");
    EXPECT_EQ(vlan->members.text(), "{0,3,4}");
    EXPECT_EQ(vlan->untagged.text(), "{3,4}");
    EXPECT_EQ(hardware.chip.ports.get(3).untagged_vlan, 200);
    EXPECT_EQ(hardware.chip.vlans.find(100)->untagged.text(), "{}");
    EXPECT_EQ(hardware.host.vlans.role(100), simswitch::fwm::PrivateVlan::primary);
    EXPECT_EQ(hardware.host.vlans.role(301), simswitch::fwm::PrivateVlan::secondary);
    EXPECT_EQ(rtifhal_is_vlan_svi(200), 1);
    EXPECT_EQ(rtifhal_vlan_type_count[300].l2_vlan, 1);
}

TEST_P(UpVlans, VlanWithoutAnSviIsBridgedAndNotRouted)
{
    auto &stgs = hardware.chip.stgs;
    for (const int port : {1, 2}) {
        stgs.set_state(simswitch::chip::DEFAULT_STG, port, simswitch::chip::STP_DISABLED);
    }
    EXPECT_EQ(run(hardware, R"({"PORT": {"Ethernet0": {}, "Ethernet1": {}}, "VLAN": {"Vlan10": {}},
        "VLAN_MEMBER": {"Vlan10|Ethernet1": {"tagging_mode": "tagged"}}})"),
              0);
    const auto *vlan = hardware.chip.vlans.find(10);
    ASSERT_NE(vlan, nullptr);
    EXPECT_EQ(vlan->controls.flags, 0x238U); // IPv4, IPv6, IPv4 multicast and MPLS off
    EXPECT_EQ(vlan->controls.intf_class, 0U);
    const auto forwarding = stgs.find(vlan->stg)->in_state(simswitch::chip::STP_FORWARDING);
    EXPECT_TRUE(forwarding.has(2));
    EXPECT_FALSE(forwarding.has(1)); // in no VLAN of the file
}

TEST_P(UpVlans, LastPortOfTheChipCanBeAMemberToo)
{
    std::string ports;
    for (int port = 0; port < simswitch::chip::LAST_FRONT_PORT; ++port) {
        ports += fmt::format("{}\"Ethernet{}\": {{}}", port == 0 ? "" : ", ", port);
    }
    const std::string file =
        "{\"PORT\": {" + ports + R"(}, "VLAN_MEMBER": {"Vlan10|Ethernet103": {}}})";
    EXPECT_EQ(run_json(hardware, file, {.then_down = true}), 0);
    EXPECT_EQ(object["teardown"]["left"], json::array());
    rtifhal_test::reset_library();
    simswitch::Switch other({.chip = GetParam()});
    EXPECT_EQ(run(other, file), 0);
    EXPECT_EQ(other.chip.vlans.find(10)->untagged.text(), "{104}");
    EXPECT_EQ(other.chip.ports.get(104).untagged_vlan, 10);
}

TEST_F(UpVlansText, JsonObjects)
{
    EXPECT_EQ(run_json(hardware, CAMPUS), 0);
    EXPECT_EQ(object["virtual_macs"][0],
              json::parse(R"({"mac": "00:00:5e:00:01:07", "interface": "Ethernet4",
        "source": "VRRP 7", "vlan": 4094, "port": 5, "station": 2, "mirrored": [], "result": "up",
        "code": 0, "calls": 11})"));
    EXPECT_EQ(object["virtual_macs"][1],
              json::parse(R"({"mac": "00:11:22:33:44:55", "interface": "Vlan100", "source": "SAG",
        "vlan": 100, "port": null, "station": 5, "mirrored": [{"vlan": 101, "station": 3},
        {"vlan": 102, "station": 4}], "result": "up", "code": 0, "calls": 23})"));
    EXPECT_EQ(object["private_vlan_pairs"][0], json::parse(R"({"primary": 100, "secondary": 101,
        "iif": 4, "families": ["ipv4"], "virtual_macs": 1, "result": "up", "calls": 8})"));
    EXPECT_EQ(object["private_vlan_pairs"][2], json::parse(R"({"primary": 300, "secondary": 301,
        "iif": null, "families": [], "virtual_macs": 0, "result": "up", "calls": 1})"));
    EXPECT_EQ(object["vlans"][0], json({{"name", "Vlan100"}, {"vlan", 100}, {"result", "up"}}));
    EXPECT_EQ(object["totals"], json::parse(R"({"interfaces": 3, "up": 3, "failed": 0, "vlans": 6,
        "virtual_macs": 4, "private_vlan_pairs": 3, "skipped": 0, "calls": 242})"));
}

TEST_P(UpVlans, GoDownAndLeaveTheChipAsItWas)
{
    EXPECT_EQ(run_json(hardware, CAMPUS, {.then_down = true}), 0) << text;
    EXPECT_EQ(object["teardown"], json::parse(R"({"clean": true, "left": []})"));
    EXPECT_EQ(hardware.chip.stations.size(), 0U);
    EXPECT_EQ(hardware.chip.l3_ingresses.size(), 0U);
    EXPECT_EQ(hardware.chip.vlans.size(), 2U); // 1 and 4094
    EXPECT_EQ(hardware.host.vlans.size(), 0U);
    EXPECT_EQ(hardware.chip.ports.get(3).untagged_vlan, 1);
}

TEST_P(UpVlans, CampusComesUpAndGoes)
{
    EXPECT_EQ(run_json(hardware, source_file("examples/campus.json"), {.then_down = true}), 0);
    const auto svis = std::count_if(
        object["interfaces"].begin(), object["interfaces"].end(),
        [](const json &row) { return row["kind"] == "svi" && row["result"] == "up"; });
    EXPECT_EQ(svis, 200);
    EXPECT_EQ(object["totals"]["failed"], 0);
    EXPECT_EQ(object["totals"]["virtual_macs"], 50);
    EXPECT_EQ(object["totals"]["private_vlan_pairs"], 40);
    EXPECT_EQ(object["skipped"], json::array());
    EXPECT_EQ(object["teardown"], json::parse(R"({"clean": true, "left": []})"));
}

TEST_P(UpVlans, ExampleOfTheDocumentComesUp)
{
    std::vector<std::string> examples = json_blocks(source_file("docs/config.md"));
    std::erase_if(examples, [](const std::string &block) {
        return block.find("\"PVLAN\"") == std::string::npos;
    });
    ASSERT_EQ(examples.size(), 1U);
    EXPECT_EQ(run_json(hardware, examples[0], {.then_down = true}), 0) << text;
    EXPECT_EQ(object["skipped"], json::array());
    EXPECT_EQ(object["totals"]["up"], 3);
    EXPECT_EQ(object["virtual_macs"].size(), 4U);
    EXPECT_EQ(object["virtual_macs"][1]["mirrored"].size(), 2U);
    EXPECT_EQ(object["private_vlan_pairs"][1]["iif"], object["interfaces"][1]["iif"]);
}

TEST_P(UpVlans, ExampleOfRoutesIsTakenWhole)
{
    std::vector<std::string> examples = json_blocks(source_file("docs/config.md"));
    std::erase_if(examples, [](const std::string &block) {
        return block.find("\"STATIC_ROUTE\"") == std::string::npos;
    });
    ASSERT_EQ(examples.size(), 1U);
    EXPECT_EQ(run_json(hardware, examples[0], {.then_down = true}), 0) << text;
    EXPECT_EQ(object["skipped"], json::array());
    EXPECT_EQ(object["totals"]["up"], 3);
}

TEST_P(UpVlans, FlatRowsWithoutATableOfVlansComeUpAndGo)
{
    EXPECT_EQ(run_json(hardware, R"({
        "PORT|Ethernet0": {"mtu": "9100"}, "PORT|Ethernet1": {"mtu": "9100"},
        "VLAN_INTERFACE|Vlan10|10.0.0.1/24": {"NULL": "NULL"},
        "VLAN_INTERFACE|Vlan10": {"NULL": "NULL"}, "VLAN_INTERFACE|Vlan11|FC00::1/64": {},
        "VLAN_MEMBER|Vlan10|Ethernet1": {"tagging_mode": "untagged"},
        "PVLAN|Vlan10|Vlan12": {"NULL": "NULL"}, "SAG|GLOBAL": {"gateway_mac": "00:11:22:AA:BB:CC"},
        "VRRP|Vlan11|8": {"vip": "FC00::FE"}})",
                       {.then_down = true}),
              0)
        << text;
    EXPECT_EQ(object["skipped"], json::array());
    EXPECT_EQ(object["totals"]["up"], 2);
    EXPECT_EQ(object["totals"]["vlans"], 3);
    EXPECT_EQ(object["interfaces"][0]["families"], json({"ipv4"}));
    EXPECT_EQ(object["interfaces"][0]["ports"], json({2}));
    EXPECT_EQ(object["interfaces"][1]["families"], json({"ipv6"}));
    EXPECT_EQ(object["virtual_macs"][0]["mac"], "00:00:5e:00:02:08");
    EXPECT_EQ(object["private_vlan_pairs"][0]["iif"], object["interfaces"][0]["iif"]);
    EXPECT_EQ(object["teardown"]["left"], json::array());
}

TEST_P(UpVlans, VlanOneIsLeftAsItWas)
{
    const auto before = simswitch::chip::text(*hardware.chip.vlans.find(1));
    EXPECT_EQ(run_json(hardware, R"({"PORT": {"Ethernet0": {}}, "VLAN": {"Vlan1": {}},
        "VLAN_MEMBER": {"Vlan1|Ethernet0": {"tagging_mode": "tagged"}},
        "VLAN_INTERFACE": {"Vlan1|10.0.0.1/24": {}}})",
                       {.then_down = true}),
              0)
        << text;
    EXPECT_EQ(object["interfaces"][0]["ports"].size(), 104U);
    EXPECT_EQ(object["teardown"]["left"], json::array());
    EXPECT_EQ(simswitch::chip::text(*hardware.chip.vlans.find(1)), before);
}

TEST_P(UpVlans, SubinterfaceMaySitInTheVlanOfAnSvi)
{
    EXPECT_EQ(run_json(hardware, R"({"PORT": {"Ethernet0": {}, "Ethernet1": {}},
        "INTERFACE": {"Ethernet0": {}}, "VLAN": {"Vlan10": {}}, "VLAN_MEMBER": {"Vlan10|Ethernet1": {}},
        "VLAN_INTERFACE": {"Vlan10|10.0.0.1/24": {}},
        "VLAN_SUB_INTERFACE": {"Ethernet0.10|10.0.1.1/24": {}}})",
                       {.then_down = true}),
              0)
        << text;
    EXPECT_EQ(object["interfaces"][1]["ports"], json({1, 2}));
    EXPECT_NE(object["interfaces"][1]["iif"], object["interfaces"][2]["iif"]);
    EXPECT_EQ(object["teardown"]["left"], json::array());
}

TEST_P(UpVlans, ComplaintOfGlibIsALineOfTheTrace)
{
    testing::internal::CaptureStderr();
    EXPECT_EQ(run(hardware, ONE, {.view = {.trace = true}}), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_NE(text.find("\n    104 GLib: g_hash_table_foreach: assertion 'hash_table != NULL' "
                        "failed\n"),
              std::string::npos)
        << text;
}

TEST_F(UpVlansText, CallsStandUnderMacsAndPairs)
{
    EXPECT_EQ(run(hardware, ONE, {.then_down = true, .view = {.calls = true}}), 0);
    EXPECT_NE(between(text, "\n00:00:5e:00:01:08  Vlan10", "\nPRIMARY")
                  .find("    bcm_l2_station_add(0, {flags=0x3c mac=00:00:5e:00:01:08"),
              std::string::npos);
    EXPECT_NE(between(text, "\n     10         11", "1 interface")
                  .find("    fwmpd_bcm_vlan_control_vlan_set(0, 11, "),
              std::string::npos);
    const std::string down = text.substr(text.find("Taken down again"));
    EXPECT_LT(down.find("\n  00:00:5e:00:01:08 of Vlan10\n"), down.find("\n  pair 10, 11\n"));
    EXPECT_LT(down.find("\n  pair 10, 11\n"), down.find("\n  Vlan10\n"));
    EXPECT_LT(down.find("\n  Vlan10\n"), down.find("\n  VLAN 11\n"));
    EXPECT_LT(down.find("\n  VLAN 11\n"), down.find("\n  VLAN 10\n"));
}
