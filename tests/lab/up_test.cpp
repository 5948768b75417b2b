/*
 * up_test.cpp: configurations come up on a switch and go down again; what is
 * shown is what the chip holds.
 */
#include "up_run.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>

namespace
{

using lab::commands::UpOptions;
using lab_test::UpTest;
using nlohmann::json;
using simswitch::chip::Kind;

constexpr const char *SMALL = R"({
  "DEVICE_METADATA": {"localhost": {"hostname": "leaf1", "mac": "02:00:00:00:00:09"}},
  "PORT": {"Ethernet0": {"mtu": "9100"}, "Ethernet4": {}, "Ethernet8": {"mtu": "1600"}},
  "VRF": {"Vrf_blue": {}},
  "INTERFACE": {"Ethernet0|10.0.0.1/31": {}, "Ethernet4": {},
                "Ethernet8": {"vrf_name": "Vrf_blue", "mac_addr": "02:00:00:00:00:88",
                              "mpls": "enable"},
                "Ethernet8|10.0.1.1/31": {}, "Ethernet8|fc00::1/126": {}},
  "LOOPBACK_INTERFACE": {"Loopback0": {}},
  "TUNNEL": {"T": {"tunnel_type": "IPINIP", "dst_ip": "10.1.0.1"}}})";

/** Runs on the small configuration where a test gives none. */
class Up : public UpTest
{
protected:
    int run(simswitch::Switch &hardware, const std::string &config = SMALL, UpOptions options = {})
    {
        return UpTest::run(hardware, config, std::move(options));
    }
    int run_json(simswitch::Switch &hardware, const std::string &config = SMALL,
                 UpOptions options = {})
    {
        return UpTest::run_json(hardware, config, std::move(options));
    }
};

std::string examples_leaf()
{
    std::ifstream file(std::string(RTIFHAL_SOURCE_DIR) + "/examples/leaf.json");
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace

TEST_F(Up, TableOfATrident2)
{
    simswitch::Switch hardware({.chip = Kind::trident2});
    EXPECT_EQ(run(hardware, SMALL, {.then_down = true}), 0);
    EXPECT_EQ(text,
              R"(leaf.json: leaf1, Trident2, router MAC 02:00:00:00:00:09 at station 1 (6 calls)

INTERFACE  KIND    IIF  VLAN  VRF   MTU  FAMILIES  PORTS  RESULT  CALLS
Ethernet0  port      3  4094    1  9100  ipv4          1  up         92
Ethernet4  port      4  4094    1  1500  -             2  up         84
Ethernet8  port      5  4094    2  1600  ipv4          3  up         84
T          tunnel    6  4094    1  1500  ipv4          -  up         21

4 interfaces: 4 up, 0 failed; 287 platform calls; 1 row not taken

Rows not taken:
  leaf.json: LOOPBACK_INTERFACE "Loopback0": a loopback is no routed interface of the hardware; the row is skipped

Notes:
  leaf.json: 1 of 4 interfaces, Ethernet8 the first, do not route the families of their addresses: bringing a port up opens it for IPv4 only, bringing a subinterface up for both

Taken down again: 4 interfaces and the router MAC
  nothing left behind
  stays by design: interface numbers held back: 4; VLAN 4094 and spanning tree group 2; switch controls set: 2; ports with settings: 3; flood lists without the ports: 5
)");
}

TEST_F(Up, FamiliesAreThoseThatTheControlsOfThePortLetIn)
{
    simswitch::Switch hardware;
    EXPECT_EQ(run_json(hardware), 0);
    EXPECT_EQ(object["interfaces"][0]["families"], json({"ipv4"}));
    EXPECT_EQ(object["interfaces"][1]["families"], json::array());
    EXPECT_EQ(object["interfaces"][2]["families"], json({"ipv4"}));
    EXPECT_EQ(object["notes"],
              json({"leaf.json: 1 of 4 interfaces, Ethernet8 the first, do not route the families "
                    "of their addresses: bringing a port up opens it for IPv4 only, bringing a "
                    "subinterface up for both"}));

    hardware.chip.ports.set_control(3, simswitch::chip::PORT_CONTROL_IP6, 1);
    lab::l3lif::Lif port(hardware, {.chip_port = 3});
    EXPECT_TRUE(lab::l3lif::read_back(hardware, port).ipv6);
}

TEST_F(Up, JsonObject)
{
    simswitch::Switch hardware({.chip = Kind::trident2});
    EXPECT_EQ(run_json(hardware), 0);
    EXPECT_EQ(object["interfaces"][2], json({{"name", "Ethernet8"},
                                             {"kind", "port"},
                                             {"ifindex", 0x10200000},
                                             {"iif", 5},
                                             {"vlan", 4094},
                                             {"vrf", 2},
                                             {"mtu", 1600},
                                             {"families", {"ipv4"}},
                                             {"ports", {3}},
                                             {"result", "up"},
                                             {"code", 0},
                                             {"calls", 84}}));
    EXPECT_EQ(object["interfaces"][3]["kind"], "tunnel");
    EXPECT_EQ(object["interfaces"][3]["ports"], json::array());
    EXPECT_EQ(object["skipped"], json::parse(R"([{"table": "LOOPBACK_INTERFACE", "row": "Loopback0",
        "reason": "a loopback is no routed interface of the hardware"}])"));
    EXPECT_EQ(object["totals"], json::parse(R"({"interfaces": 4, "up": 4, "failed": 0, "vlans": 0,
        "virtual_macs": 0, "private_vlan_pairs": 0, "skipped": 1, "calls": 287})"));
    EXPECT_EQ(object["router_mac"],
              json::parse(R"({"mac": "02:00:00:00:00:09", "station": 1, "calls": 6})"));
}

TEST_F(Up, ChipHasTheMacsAndMpls)
{
    simswitch::Switch hardware;
    EXPECT_EQ(run(hardware), 0);
    EXPECT_EQ(simswitch::chip::text(hardware.chip.l3_interfaces.find(3)->mac), "02:00:00:00:00:09");
    EXPECT_EQ(simswitch::chip::text(hardware.chip.l3_interfaces.find(5)->mac), "02:00:00:00:00:88");
    EXPECT_EQ(hardware.chip.ports.control(1, simswitch::chip::PORT_CONTROL_MPLS), 0);
    EXPECT_EQ(hardware.chip.ports.control(3, simswitch::chip::PORT_CONTROL_MPLS), 1);
    EXPECT_EQ(simswitch::chip::text(hardware.chip.stations.find(1)->mac), "02:00:00:00:00:09");
}

TEST_F(Up, CallsAndTraceStandUnderTheInterface)
{
    simswitch::Switch hardware;
    EXPECT_EQ(run(hardware, R"({"PORT": {"Ethernet0": {}}, "INTERFACE": {"Ethernet0": {}}})",
                  {.view = {.calls = true, .trace = true}}),
              0);
    const std::size_t row = text.find("Ethernet0  port");
    const std::size_t call = text.find("\n    fwmpd_bcm_port_control_set(0, 1, 67, 3) = 0\n", row);
    const std::size_t message =
        text.find("\n    104 rtifhal_l3_intf_create: Created l3-intf with intf-id as 0x3\n", call);
    EXPECT_NE(row, std::string::npos);
    EXPECT_NE(call, std::string::npos);
    EXPECT_NE(message, std::string::npos);
}

TEST_F(Up, ExampleComesUpAndGoesOnBothChips)
{
    for (const Kind kind : {Kind::trident, Kind::trident2}) {
        rtifhal_test::reset_library();
        simswitch::Switch hardware({.chip = kind});
        EXPECT_EQ(run_json(hardware, examples_leaf(), {.then_down = true}), 0);
        EXPECT_EQ(object["totals"]["up"], 40);
        EXPECT_EQ(object["totals"]["failed"], 0);
        EXPECT_EQ(object["skipped"].size(), 1U);
        EXPECT_EQ(object["teardown"], json::parse(R"({"clean": true, "left": []})"));
        EXPECT_EQ(hardware.chip.l3_interfaces.size(), 0U);
        EXPECT_EQ(hardware.chip.l3_ingresses.size(), 0U);
        EXPECT_EQ(hardware.chip.stations.size(), 0U);
    }
}

TEST_F(Up, AllPortsOfTheChip)
{
    std::string rows;
    for (int i = 0; i < 106; ++i) {
        rows += (i == 0 ? "" : ", ") + ("\"Ethernet" + std::to_string(i)) + "\": {}";
    }
    simswitch::Switch hardware;
    EXPECT_EQ(run_json(hardware, R"({"INTERFACE": {)" + rows + "}}", {.then_down = true}), 0);
    EXPECT_EQ(object["totals"]["up"], 104);
    EXPECT_EQ(object["interfaces"][103]["ports"], json({104}));
    EXPECT_EQ(object["skipped"].size(), 2U);
    EXPECT_EQ(object["teardown"]["left"], json::array());
}

TEST_F(Up, FailedInterfaceHasCodeAndLastError)
{
    simswitch::Switch hardware;
    hardware.journal.arm({.function = "bcm_switch_control_set", .code = -4, .nth = 2});
    EXPECT_EQ(run_json(hardware), 1);
    const json &failed = object["interfaces"][1];
    EXPECT_EQ(failed["name"], "Ethernet4");
    EXPECT_EQ(failed["result"], "failed");
    EXPECT_EQ(failed["code"], -1);
    EXPECT_EQ(failed["iif"], nullptr);
    EXPECT_EQ(failed["vlan"], nullptr);
    EXPECT_EQ(failed["ports"], json::array());
    EXPECT_EQ(failed["error"], "rtifhal_trident_add_l3port: L3LIF failed to add itf: 0x10100000, "
                               "1");
    EXPECT_EQ(object["totals"]["failed"], 1);
    EXPECT_EQ(object["interfaces"][2]["result"], "up");
}

TEST_F(Up, FailureIsPrintedForPeople)
{
    simswitch::Switch hardware;
    hardware.journal.arm({.function = "bcm_switch_control_set", .code = -4, .nth = 2});
    EXPECT_EQ(run(hardware), 1);
    EXPECT_NE(text.find("Ethernet4  port      -     -    -     -  -             -  failed"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("\nFailed:\n  Ethernet4: code -1: rtifhal_trident_add_l3port: L3LIF failed "
                        "to add itf: 0x10100000, 1\n"),
              std::string::npos)
        << text;
}

TEST_F(Up, AddThatReturns0WithoutItsObjectsIsFailed)
{
    simswitch::Switch hardware;
    // The library goes on when the ingress object or the port's tie is refused.
    hardware.journal.arm({.function = "rtifhal_bcm_l3_ingress_create", .code = -6, .nth = 1});
    hardware.journal.arm({.function = "fwmpd_bcm_port_control_set",
                          .code = -6,
                          .when = [](std::string_view args) { return args == "0, 2, 67, 4"; }});
    EXPECT_EQ(run_json(hardware), 1);
    EXPECT_EQ(object["interfaces"][0]["result"], "failed");
    EXPECT_EQ(object["interfaces"][0]["code"], 0);
    EXPECT_EQ(object["interfaces"][0]["iif"], 3);
    EXPECT_EQ(object["interfaces"][1]["result"], "failed");
    EXPECT_EQ(object["interfaces"][1]["iif"], nullptr);
    EXPECT_EQ(object["interfaces"][2]["result"], "up");
}

TEST(LastError, IsTheLastReportElseWhatTheChipRefused)
{
    lab::l3lif::Request request;
    EXPECT_EQ(request.last_error(), "");
    request.refused_writes = "5 writes, 1 refused: VLAN 100 does not exist";
    EXPECT_EQ(request.last_error(), "5 writes, 1 refused: VLAN 100 does not exist");
    request.messages = {{.level = 102, .text = "\nitf create(3) failed\n"},
                        {.level = 102, .text = "unable to get itf(3)\n"},
                        {.level = 104, .text = "Entry: create - 1\n"}};
    EXPECT_EQ(request.last_error(), "unable to get itf(3)");
}

TEST_F(Up, RefusedRouterMac)
{
    simswitch::Switch hardware;
    hardware.journal.arm({.function = "bcm_l2_station_add", .code = -6});
    EXPECT_EQ(run_json(hardware, SMALL, {.then_down = true}), 1);
    EXPECT_EQ(object["router_mac"]["station"], nullptr);
    EXPECT_EQ(object["teardown"]["left"], json::array());
}

TEST_F(Up, WhatATeardownLeavesIsListed)
{
    simswitch::Switch hardware;
    hardware.journal.arm({.function = "rtifhal_bcm_l3_ingress_destroy", .code = -1, .nth = 1});
    hardware.journal.arm({.function = "bcm_l2_station_delete", .code = -1, .nth = 1});
    EXPECT_EQ(run_json(hardware, SMALL, {.then_down = true}), 1);
    EXPECT_EQ(object["teardown"]["clean"], false);
    ASSERT_EQ(object["teardown"]["left"].size(), 2U);
    EXPECT_EQ(object["teardown"]["left"][0].get<std::string>().substr(0, 12), "+ station 1:");
    EXPECT_EQ(object["teardown"]["left"][1].get<std::string>().substr(0, 15), "+ L3 ingress 6:");
}

TEST_F(Up, InterfaceThatStaysIsListedByAllWhoKeepIt)
{
    simswitch::Switch hardware;
    // The delete of the port stops before it touches anything.
    hardware.journal.arm({.function = "bcm_l3_intf_get",
                          .code = -7,
                          .when = [](std::string_view args) { return args == "0, 3"; }});
    EXPECT_EQ(run_json(hardware, R"({"PORT": {"Ethernet0": {}}, "INTERFACE": {"Ethernet0": {}}})",
                       {.then_down = true}),
              1);
    std::vector<std::string> left = object["teardown"]["left"];
    ASSERT_EQ(left.size(), 5U);
    EXPECT_EQ(left[0].substr(0, 17), "+ L3 interface 3:");
    EXPECT_EQ(left[1], "port 1: still in VLAN 4094");
    EXPECT_EQ(left[2], "port 1: the library counts it as routed");
    EXPECT_EQ(left[3], "interface number 3: neither free nor held back");
    EXPECT_EQ(left[4], "stored interface 0x10000000");
}

TEST_F(Up, StoreOutlivesTheRunAndAnOrdinaryStartDropsIt)
{
    const UpOptions options = {.state_dir = folder.path / "state"};
    {
        simswitch::Switch hardware({.state_dir = options.state_dir});
        EXPECT_EQ(run(hardware, SMALL, options), 0);
    }
    rtifhal_test::reset_library();
    simswitch::Switch hardware({.state_dir = options.state_dir});
    EXPECT_EQ(hardware.store.stored_interfaces().size(), 4U);
    EXPECT_EQ(
        run(hardware, R"({"PORT": {"Ethernet0": {}}, "INTERFACE": {"Ethernet0": {}}})", options),
        0);
    EXPECT_NE(text.find("4 interfaces of an earlier run are dropped from the store"),
              std::string::npos);
    EXPECT_EQ(hardware.store.stored_interfaces().size(), 1U);
}
