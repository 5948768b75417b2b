/*
 * virtual_mac_rows_test.cpp: the virtual MACs that rows of SAG, VRRP and VRRP6
 * give, and the exact message of each kind of row that can't be taken.
 */
#include "config_text.h"

#include <gtest/gtest.h>

using namespace lab_test;
using lab::config::Description;

namespace
{

/** A port, a port-channel, two SVIs and a subinterface, all routed, and some tables more. */
Description read_groups(const std::string &tables)
{
    return read(R"({"PORT": {"Ethernet0": {}, "Ethernet4": {}},
        "PORTCHANNEL_MEMBER": {"PortChannel1|Ethernet4": {}},
        "INTERFACE": {"Ethernet0": {}}, "PORTCHANNEL_INTERFACE": {"PortChannel1": {}},
        "VLAN": {"Vlan10": {}, "Vlan20": {}}, "VLAN_INTERFACE": {"Vlan10": {}, "Vlan20": {}},
        "VLAN_SUB_INTERFACE": {"Ethernet0.7": {}}, )" +
                tables + "}");
}

/** "Vlan10 00:00:5e:00:01:08 VRRP 8", … */
Lines macs(const Description &config)
{
    Lines lines;
    for (const auto &mac : config.virtual_macs) {
        lines.push_back(mac.owner + " " + lab::config::mac_text(mac.mac) + " " + mac.source);
    }
    return lines;
}

/** "00:00:5e:00:01:08 10.0.0.1", …: which addresses each stands for. */
Lines mac_addresses(const Description &config)
{
    Lines lines;
    for (const auto &mac : config.virtual_macs) {
        for (const auto &address : mac.addresses) {
            lines.push_back(lab::config::mac_text(mac.mac) + " " + address.text());
        }
    }
    return lines;
}

/** "row: reason" of the skipped rows. */
Lines reasons(const Description &config)
{
    Lines lines;
    for (const auto &row : config.skipped) {
        lines.push_back(row.row + ": " + row.reason);
    }
    return lines;
}

} // namespace

TEST(Vrrp, MacsOfBothFamilies)
{
    const auto config = read_groups(R"("VRRP": {"Vlan10|8": {"vip": ["10.0.0.1", "fc00::1/64"]},
        "Vlan10|255": {"vip": "10.0.0.1/24,10.0.0.2"}, "Vlan20|1": {"vip": ["FC00::1"], "vrid": "1"}},
        "VRRP6": {"Vlan20|2": {"vip@": "fc00::1"}})");
    EXPECT_EQ(messages(config), Lines{});
    EXPECT_EQ(macs(config),
              (Lines{"Vlan10 00:00:5e:00:01:08 VRRP 8", "Vlan10 00:00:5e:00:02:08 VRRP 8",
                     "Vlan10 00:00:5e:00:01:ff VRRP 255", "Vlan20 00:00:5e:00:02:01 VRRP 1",
                     "Vlan20 00:00:5e:00:02:02 VRRP6 2"}));
}

TEST(Vrrp, AddressesGoToTheMacOfTheirFamilyEachOnce)
{
    const auto config = read_groups(
        R"("VRRP": {"Vlan10|8": {"vip": ["fc00::1/64", "10.0.0.1", "10.0.0.2/24", "10.0.0.1/24"]}})");
    EXPECT_EQ(messages(config), Lines{});
    EXPECT_EQ(mac_addresses(config),
              (Lines{"00:00:5e:00:01:08 10.0.0.1", "00:00:5e:00:01:08 10.0.0.2",
                     "00:00:5e:00:02:08 fc00::1"}));
}

TEST(Vrrp, WithoutAddressesTheTableSaysTheFamily)
{
    const auto config =
        read_groups(R"("VRRP": {"Vlan10|3": {}}, "VRRP6": {"Vlan10|3": {"vip": []}})");
    EXPECT_EQ(macs(config),
              (Lines{"Vlan10 00:00:5e:00:01:03 VRRP 3", "Vlan10 00:00:5e:00:02:03 VRRP6 3"}));
}

TEST(Vrrp, OnEveryKindOfInterfaceInTheirOrder)
{
    const auto config = read_groups(R"("VRRP": {"Ethernet0.7|1": {}, "Vlan10|1": {},
        "PortChannel1|1": {}, "Ethernet0|1": {}})");
    EXPECT_EQ(macs(config),
              (Lines{"Ethernet0 00:00:5e:00:01:01 VRRP 1", "PortChannel1 00:00:5e:00:01:01 VRRP 1",
                     "Vlan10 00:00:5e:00:01:01 VRRP 1", "Ethernet0.7 00:00:5e:00:01:01 VRRP 1"}));
}

TEST(Vrrp, BadIds)
{
    EXPECT_EQ(
        reasons(read_groups(R"("VRRP": {"Vlan10": {}, "Vlan10|0": {}, "Vlan10|256": {},
                                     "Vlan10|x": {}, "Vlan10|8|8": {}, "Vlan10|9": {"vrid": 10},
                                     "Vlan10|11": {"vrid": "0"}, "Vlan10|12": []})")),
        (Lines{"Vlan10: the key is no INTERFACE|VRID", "Vlan10|0: the VRID 0 is not in 1..255",
               "Vlan10|8|8: the VRID \"8|8\" is not in 1..255",
               "Vlan10|9: the key says VRID 9 and the field vrid says 10",
               "Vlan10|11: vrid 0 is not in 1..255",
               "Vlan10|12: an object of fields was expected, not a list",
               "Vlan10|256: the VRID 256 is not in 1..255",
               "Vlan10|x: the VRID \"x\" is not in 1..255"}));
}

TEST(Vrrp, BadAddresses)
{
    EXPECT_EQ(reasons(read_groups(R"("VRRP": {"Vlan10|1": {"vip": "10.0.0.300"},
        "Vlan10|2": {"vip": ["224.0.0.1"]}, "Vlan10|3": {"vip": "10.0.0.1/33"},
        "Vlan10|4": {"vip": {}}, "Vlan10|5": {"vip": [{}]}},
        "VRRP6": {"Vlan10|6": {"vip": "10.0.0.1"}})")),
              (Lines{"Vlan10|1: vip \"10.0.0.300\" is no address like 10.0.0.1 or fc00::1",
                     "Vlan10|2: vip 224.0.0.1 is not the address of one interface",
                     "Vlan10|3: vip: the prefix length 33 is not in 0..32",
                     "Vlan10|4: vip is an object, a text or a number was expected",
                     "Vlan10|5: vip \"an object\" is no address like 10.0.0.1 or fc00::1",
                     "Vlan10|6: vip \"10.0.0.1\" is IPv4, and the row is one of VRRP6"}));
}

TEST(Vrrp, InterfaceThatIsNotThere)
{
    const auto config = read(R"({"VLAN": {"Vlan10": {}, "Vlan20": {}},
        "VLAN_INTERFACE": {"Vlan20": {"vrf_name": "Vrf_x"}},
        "VRRP": {"Vlan10|8": {}, "Vlan20|8": {}}})");
    EXPECT_EQ(config.skipped.at(0).reason, "vrf_name \"Vrf_x\" names no row of VRF");
    EXPECT_EQ(config.skipped.at(1).reason,
              "no row that is taken makes \"Vlan10\" a routed interface");
    EXPECT_EQ(config.skipped.at(2).reason,
              "no row that is taken makes \"Vlan20\" a routed interface");
}

TEST(Vrrp, MacThatTheInterfaceHasAlready)
{
    const auto config = read_groups(R"("VRRP": {"Vlan10|8": {}, "Vlan10|08": {},
        "Vlan10|9": {"vip": "fc00::1"}}, "VRRP6": {"Vlan10|9": {}, "Vlan20|9": {}})");
    EXPECT_EQ(reasons(config),
              (Lines{"Vlan10|8: Vlan10 has the virtual MAC 00:00:5e:00:01:08 already, by VRRP 8",
                     "Vlan10|9: Vlan10 has the virtual MAC 00:00:5e:00:02:09 already, by VRRP 9"}));
    EXPECT_EQ(config.virtual_macs.size(), 3U);
}

TEST(AnycastGateway, MacOnEachInterfaceThatWantsIt)
{
    const auto config = read(R"({"VLAN_INTERFACE": {
        "Vlan10": {"static_anycast_gateway": "true"}, "Vlan20": {"static_anycast_gateway": "false"},
        "Vlan30": {"static_anycast_gateway": "true"}, "Vlan40": {}},
        "SAG": {"GLOBAL": {"gateway_mac": "00:11:22:33:44:55"}}})");
    EXPECT_EQ(messages(config), Lines{});
    EXPECT_EQ(macs(config),
              (Lines{"Vlan10 00:11:22:33:44:55 SAG", "Vlan30 00:11:22:33:44:55 SAG"}));
}

TEST(AnycastGateway, StandsForTheInterfacesOwnAddresses)
{
    const auto config = read(R"({"VLAN_INTERFACE": {"Vlan10": {"static_anycast_gateway": "true"},
        "Vlan10|10.0.0.1/24": {}, "Vlan10|fc00::1/64": {}, "Vlan20|10.0.1.1/24": {}},
        "SAG": {"GLOBAL": {"gateway_mac": "00:11:22:33:44:55"}}})");
    EXPECT_EQ(mac_addresses(config),
              (Lines{"00:11:22:33:44:55 10.0.0.1", "00:11:22:33:44:55 fc00::1"}));
}

TEST(AnycastGateway, BadRows)
{
    EXPECT_EQ(reasons(read_groups(R"("SAG": {"GLOBAL": []})")),
              Lines{"GLOBAL: an object of fields was expected, not a list"});
    EXPECT_EQ(reasons(read_groups(R"("SAG": {"GLOBAL": {}, "Vlan10": {}})")),
              (Lines{"GLOBAL: gateway_mac is missing, the MAC of the anycast gateways was expected",
                     "Vlan10: only the row \"GLOBAL\" gives the MAC of the anycast gateways"}));
    EXPECT_EQ(reasons(read_groups(R"("SAG": {"GLOBAL": {"gateway_mac": "01:00:5e:00:00:01"}})")),
              Lines{"GLOBAL: gateway_mac: 01:00:5e:00:00:01 is a group address; an interface needs "
                    "one of its own"});
    EXPECT_EQ(reasons(read_groups(R"("SAG": {"GLOBAL": {"gateway_mac": "x"}})")),
              Lines{"GLOBAL: gateway_mac: \"x\" is no MAC address like 00:11:22:33:44:55"});
    EXPECT_EQ(
        reasons(read(R"({"VLAN_INTERFACE": {"Vlan10": {"static_anycast_gateway": "yes"}}})")),
        Lines{"Vlan10: static_anycast_gateway is \"yes\", \"true\" or \"false\" was expected"});
}

TEST(AnycastGateway, WithoutAMacIsTold)
{
    const auto config = read(R"({"VLAN_INTERFACE": {"Vlan10": {"static_anycast_gateway": "true"},
        "Vlan20": {"static_anycast_gateway": "true"}}})");
    EXPECT_EQ(config.notes.back(),
              "leaf.json: SAG \"GLOBAL\" gives no usable gateway_mac; no anycast MAC on Vlan10 and "
              "1 more");
    EXPECT_EQ(config.virtual_macs.size(), 0U);
}
