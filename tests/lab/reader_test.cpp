/*
 * reader_test.cpp: what the rows of a configuration mean.
 */
#include "config_text.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

using namespace lab_test;
using lab::config::Description;
using lab::config::RoutedInterface;

namespace
{

/** The interface of a name; the test fails where there is none. */
const RoutedInterface &interface_of(const Description &config, std::string_view name)
{
    static const RoutedInterface none;
    for (const auto &interface : config.interfaces) {
        if (interface.name == name) {
            return interface;
        }
    }
    ADD_FAILURE() << "there is no interface " << name;
    return none;
}

} // namespace

TEST(Ports, AreNumberedInNaturalOrder)
{
    const auto config =
        read(R"({"PORT": {"Ethernet-BP0": {}, "Ethernet100": {}, "Ethernet8": {}}})");
    EXPECT_EQ(config.ports.at("Ethernet8").chip_port, 1U);
    EXPECT_EQ(config.ports.at("Ethernet100").chip_port, 2U);
    EXPECT_EQ(config.ports.at("Ethernet-BP0").chip_port, 3U);
}

TEST(Ports, MtuIsTheirsOrNothing)
{
    const auto config = read(
        R"({"PORT": {"Ethernet0": {"mtu": "9216"}, "Ethernet4": {"mtu": 68}, "Ethernet8": {}}})");
    EXPECT_EQ(config.ports.at("Ethernet0").mtu, 9216);
    EXPECT_EQ(config.ports.at("Ethernet4").mtu, 68);
    EXPECT_EQ(config.ports.at("Ethernet8").mtu, 0);
}

TEST(Ports, BadRowKeepsItsNumber)
{
    const auto config = read(R"({"PORT": {"Ethernet0": {"mtu": "67"}, "Ethernet4": {}}})");
    EXPECT_EQ(config.ports.at("Ethernet4").chip_port, 2U);
    EXPECT_EQ(
        messages(config),
        Lines{"leaf.json: PORT \"Ethernet0\": mtu 67 is not in 68..9216; the row is skipped"});
}

TEST(Ports, WithoutATableAreThoseThatInterfaceRowsName)
{
    const auto config = read(R"({
        "INTERFACE|Ethernet16": {}, "INTERFACE|Ethernet8|10.0.0.1/31": {},
        "VLAN_SUB_INTERFACE|Eth4.1": {"vlan": "100"}, "VLAN_SUB_INTERFACE|Po0001.1": {"vlan": "7"}})");
    EXPECT_EQ(config.ports.at("Ethernet4").chip_port, 1U);
    EXPECT_EQ(config.ports.at("Ethernet8").chip_port, 2U);
    EXPECT_EQ(config.ports.at("Ethernet16").chip_port, 3U);
    EXPECT_EQ(config.notes[1],
              "leaf.json: there is no PORT table; its ports are the 3 that interface rows name");
}

TEST(Ports, WithoutATableMayBeOne)
{
    EXPECT_EQ(read(R"({"INTERFACE": {"Ethernet16": {}}})").notes[1],
              "leaf.json: there is no PORT table; its port is the one that interface rows name");
}

TEST(Ports, The105thIsRefused)
{
    std::string rows;
    for (int i = 0; i < 105; ++i) {
        rows += fmt::format("{}\"Ethernet{}\": {{}}", i == 0 ? "" : ", ", i);
    }
    const auto config =
        read(R"({"PORT": {)" + rows + R"(}, "INTERFACE": {"Ethernet103": {}, "Ethernet104": {}}})");
    EXPECT_EQ(config.ports.at("Ethernet103").chip_port, 104U);
    EXPECT_EQ(names(config), Lines{"Ethernet103"});
    EXPECT_EQ(messages(config),
              (Lines{"leaf.json: INTERFACE \"Ethernet104\": its port Ethernet104 isn't taken: the "
                     "chip has 104 ports and this is number 105 in natural order of the names; "
                     "the row is skipped",
                     "leaf.json: PORT \"Ethernet104\": the chip has 104 ports and this is number "
                     "105 in natural order of the names; the row is skipped"}));
}

TEST(Device, MacAndName)
{
    const auto config = read(
        R"({"DEVICE_METADATA": {"localhost": {"hostname": "leaf1", "mac": "3C:2c:30:07:A0:10"}}})");
    EXPECT_EQ(config.hostname, "leaf1");
    EXPECT_EQ(lab::config::mac_text(config.device_mac), "3c:2c:30:07:a0:10");
    EXPECT_EQ(config.notes, Lines{});
}

TEST(Device, WithoutAMacHasTheFallbackAndSaysSoOnce)
{
    const auto config = read("{}");
    EXPECT_EQ(lab::config::mac_text(config.device_mac), "02:00:00:00:00:01");
    EXPECT_EQ(config.notes, Lines{"leaf.json: DEVICE_METADATA \"localhost\" gives no usable mac; "
                                  "the router MAC is 02:00:00:00:00:01"});
}

TEST(Vrfs, AreNumberedFromTwoInNaturalOrder)
{
    const auto config = read(R"({"VRF": {"Vrf10": {}, "Vrf2": {}, "default": {}, "Vrf_a": {}},
        "PORT": {"Ethernet0": {}, "Ethernet4": {}},
        "INTERFACE": {"Ethernet0": {"vrf_name": "Vrf10"}, "Ethernet4": {"vrf_name": "default"}}})");
    EXPECT_EQ(config.vrfs.at("Vrf2"), 2);
    EXPECT_EQ(config.vrfs.at("Vrf10"), 3);
    EXPECT_EQ(config.vrfs.at("Vrf_a"), 4);
    EXPECT_EQ(config.vrfs.size(), 3U);
    EXPECT_EQ(interface_of(config, "Ethernet0").vrf, 3);
    EXPECT_EQ(interface_of(config, "Ethernet4").vrf, 1);
}

TEST(Interfaces, RowsComeInAnyOrder)
{
    for (const char *rows : {R"("Ethernet0": {"mpls": "enable"}, "Ethernet0|10.0.0.1/31": {})",
                             R"("Ethernet0|10.0.0.1/31": {}, "Ethernet0": {"mpls": "enable"})"}) {
        const auto config =
            read(R"({"PORT": {"Ethernet0": {}}, "INTERFACE": {)" + std::string(rows) + "}}");
        EXPECT_EQ(names(config), Lines{"Ethernet0"});
        EXPECT_TRUE(interface_of(config, "Ethernet0").mpls);
        EXPECT_TRUE(interface_of(config, "Ethernet0").routes(false));
    }
}

TEST(Interfaces, OldFilesHaveAddressRowsOnly)
{
    const auto config =
        read(R"({"PORT": {"Ethernet0": {}}, "INTERFACE": {"Ethernet0|FC00::1/126": {}}})");
    EXPECT_EQ(names(config), Lines{"Ethernet0"});
    EXPECT_TRUE(interface_of(config, "Ethernet0").routes(true));
    EXPECT_FALSE(interface_of(config, "Ethernet0").routes(false));
}

TEST(Interfaces, WithoutAnAddressHaveNoFamily)
{
    const auto config =
        read(R"({"PORT": {"Ethernet0": {}}, "INTERFACE": {"Ethernet0": {"NULL": "NULL"}}})");
    EXPECT_EQ(names(config), Lines{"Ethernet0"});
    EXPECT_FALSE(interface_of(config, "Ethernet0").routes(false));
    EXPECT_FALSE(interface_of(config, "Ethernet0").routes(true));
}

TEST(Interfaces, LinkLocalOnlyIsIpv6)
{
    const auto config = read(R"({"PORT": {"Ethernet0": {}, "Ethernet4": {}}, "INTERFACE": {
        "Ethernet0": {"ipv6_use_link_local_only": "enable"},
        "Ethernet4": {"ipv6_use_link_local_only": "disable"}}})");
    EXPECT_TRUE(interface_of(config, "Ethernet0").routes(true));
    EXPECT_FALSE(interface_of(config, "Ethernet0").routes(false));
    EXPECT_FALSE(interface_of(config, "Ethernet4").routes(true));
}

TEST(Interfaces, SameAddressInTwoSpellingsIsOne)
{
    const auto config = read(R"({"PORT": {"Ethernet0": {}}, "INTERFACE": {
        "Ethernet0|FC00::1/126": {}, "Ethernet0|fc00:0::1/126": {}}})");
    EXPECT_EQ(interface_of(config, "Ethernet0").addresses.size(), 1U);
}

TEST(Interfaces, MacIsTheirOwnOrTheDevices)
{
    const auto config = read(R"({"PORT": {"Ethernet0": {}, "Ethernet4": {}}, "INTERFACE": {
        "Ethernet0": {"mac_addr": "12:34:56:78:90:ab"}, "Ethernet4": {}}})");
    EXPECT_EQ(lab::config::mac_text(interface_of(config, "Ethernet0").mac.value()),
              "12:34:56:78:90:ab");
    EXPECT_FALSE(interface_of(config, "Ethernet4").mac);
}

TEST(Interfaces, KindsByTable)
{
    const auto config = read(R"({"PORT": {"Ethernet0": {}, "Ethernet4": {}},
        "INTERFACE": {"Ethernet0": {}}, "PORTCHANNEL_INTERFACE": {"PortChannel0003": {}},
        "PORTCHANNEL_MEMBER": {"PortChannel0003|Ethernet4": {}},
        "VLAN_INTERFACE": {"Vlan111": {}},
        "VLAN_SUB_INTERFACE": {"Ethernet0.10": {}, "Po0003.7": {"vlan": 70}}})");
    EXPECT_EQ(messages(config), Lines{});
    EXPECT_EQ(interface_of(config, "PortChannel0003").kind, lab::config::Kind::port_channel);
    EXPECT_EQ(interface_of(config, "Vlan111").kind, lab::config::Kind::svi);
    EXPECT_EQ(interface_of(config, "Vlan111").vlan, 111);
    EXPECT_EQ(interface_of(config, "Ethernet0.10").vlan, 10);
    EXPECT_EQ(interface_of(config, "Po0003.7").vlan, 70);
    EXPECT_EQ(interface_of(config, "Po0003.7").main, "PortChannel0003");
}

TEST(Interfaces, OtherTablesAreToldOncePerName)
{
    const auto config = read(R"({
        "LOOPBACK_INTERFACE": {"Loopback0": {}, "Loopback0|10.0.0.1/32": {}, "Loopback0|fc::1/128": {}},
        "MGMT_INTERFACE": {"eth0|10.0.0.2/24": {}}, "VXLAN_TUNNEL": {"vtep1": {}},
        "NVGRE_TUNNEL": {"nv": {}}})");
    EXPECT_EQ(messages(config),
              (Lines{"leaf.json: LOOPBACK_INTERFACE \"Loopback0\": a loopback is no routed "
                     "interface of the hardware; the row is skipped",
                     "leaf.json: MGMT_INTERFACE \"eth0\": the management port is no routed "
                     "interface of the hardware; the row is skipped",
                     "leaf.json: NVGRE_TUNNEL \"nv\": an NVGRE tunnel is no routed interface; "
                     "IP-in-IP tunnels are; the row is skipped",
                     "leaf.json: VXLAN_TUNNEL \"vtep1\": a VXLAN tunnel is no routed interface; "
                     "IP-in-IP tunnels are; the row is skipped"}));
}

TEST(Tunnels, SourceIsOptional)
{
    const auto config = read(R"({"TUNNEL": {
        "T2": {"tunnel_type": "IPINIP", "dst_ip": "10.1.0.1", "src_ip": "10.1.0.2"},
        "T1": {"tunnel_type": "IPINIP", "dst_ip": "FC00::1"}}})");
    ASSERT_EQ(config.tunnels.size(), 2U);
    EXPECT_EQ(config.tunnels[0].name, "T1");
    EXPECT_EQ(config.tunnels[0].destination.text(), "fc00::1");
    EXPECT_FALSE(config.tunnels[0].source);
    EXPECT_EQ(config.tunnels[1].source.value().text(), "10.1.0.2");
}
