/*
 * bad_rows_test.cpp: the exact message of each kind of row that can't be
 * taken; the rest of the file goes on.
 */
#include "config_text.h"

#include <gtest/gtest.h>

using namespace lab_test;

namespace
{

/** The reasons for which rows of INTERFACE on the one port Ethernet0 are skipped. */
Lines interface_reasons(const std::string &rows)
{
    const auto config =
        read(R"({"PORT": {"Ethernet0": {}}, "VRF": {"Vrf_a": {}}, "INTERFACE": {)" + rows + "}}");
    Lines reasons;
    for (const auto &row : config.skipped) {
        EXPECT_EQ(row.table, "INTERFACE");
        reasons.push_back(row.row + ": " + row.reason);
    }
    return reasons;
}

/** The reason for which the only row of a table is skipped. */
std::string reason_of(const std::string &table, const std::string &row)
{
    const auto config = read(R"({"PORT": {"Ethernet0": {}}, ")" + table + R"(": {)" + row + "}}");
    EXPECT_EQ(config.skipped.size(), 1U);
    return config.skipped.empty() ? "" : config.skipped[0].reason;
}

} // namespace

TEST(BadRow, MessageHasFileTableRowReason)
{
    const auto config = read(R"({"VLAN_SUB_INTERFACE": {"Eth36.5000": {"vlan": "5000"}}})");
    EXPECT_EQ(messages(config), Lines{"leaf.json: VLAN_SUB_INTERFACE \"Eth36.5000\": VLAN 5000 is "
                                      "not in 1..4094; the row is skipped"});
}

TEST(BadRow, ControlCharactersAreShownHarmless)
{
    const auto config = read("{\"PORT\": {\"\\u001b[2J\\\"\": {}}}");
    EXPECT_EQ(messages(config),
              Lines{"leaf.json: PORT \"\\x1b[2J\\\"\": \"\\x1b[2J\\\"\" is no port name like "
                    "Ethernet4 or Ethernet-BP0; the row is skipped"});
}

TEST(BadRow, PortNames)
{
    for (const char *name : {"Eth1/1", "Ethernet", "ethernet4", "Ethernet4x", "Ethernet-4",
                             "Ethernet-BP", "Ethernet4.10", "", "Ethernet12345678"}) {
        EXPECT_EQ(reason_of("PORT", "\"" + std::string(name) + "\": {}"),
                  "\"" + std::string(name) + "\" is no port name like Ethernet4 or Ethernet-BP0");
    }
}

TEST(BadRow, Mtu)
{
    const auto reason = [](const std::string &mtu) {
        return reason_of("PORT", R"("Ethernet0": {"mtu": )" + mtu + "}");
    };
    EXPECT_EQ(reason("\"9217\""), "mtu 9217 is not in 68..9216");
    EXPECT_EQ(reason("0"), "mtu 0 is not in 68..9216");
    EXPECT_EQ(reason("-1"), "mtu \"-1\" is not in 68..9216");
    EXPECT_EQ(reason("\" 9000\""), "mtu \" 9000\" is not in 68..9216");
    EXPECT_EQ(reason("1500.5"), "mtu \"1500.5\" is not in 68..9216");
    EXPECT_EQ(reason("99999999999999999999999"), "mtu 99999999999999999999999 is not in 68..9216");
    EXPECT_EQ(reason("\"\""), "mtu \"\" is not in 68..9216");
    EXPECT_EQ(reason("[9000]"), "mtu is a list, a text or a number was expected");
    EXPECT_EQ(reason("true"), "mtu is a boolean, a text or a number was expected");
    EXPECT_EQ(reason("null"), "mtu is null, a text or a number was expected");
}

TEST(BadRow, RowThatIsNoObject)
{
    EXPECT_EQ(reason_of("PORT", R"("Ethernet0": 7)"),
              "an object of fields was expected, not a number");
    EXPECT_EQ(interface_reasons(R"("Ethernet0": [])"),
              Lines{"Ethernet0: an object of fields was expected, not a list"});
    EXPECT_EQ(interface_reasons(R"("Ethernet0|10.0.0.1/31": "x")"),
              Lines{"Ethernet0|10.0.0.1/31: an object of fields was expected, not a text"});
    EXPECT_EQ(reason_of("VRF", R"("Vrf_a": null)"), "an object of fields was expected, not null");
}

TEST(BadRow, Prefixes)
{
    const auto reason = [](const std::string &prefix) {
        const Lines reasons = interface_reasons("\"Ethernet0|" + prefix + "\": {}");
        return reasons.empty() ? "taken" : reasons[0].substr(prefix.size() + 12);
    };
    EXPECT_EQ(reason("10.0.0.300/24"),
              "\"10.0.0.300/24\" is no prefix like 10.0.0.1/31 or fc00::1/126");
    EXPECT_EQ(reason("10.0.0.1"), "\"10.0.0.1\" is no prefix like 10.0.0.1/31 or fc00::1/126");
    EXPECT_EQ(reason("10.1/16"), "\"10.1/16\" is no prefix like 10.0.0.1/31 or fc00::1/126");
    EXPECT_EQ(reason("010.0.0.1/8"),
              "\"010.0.0.1/8\" is no prefix like 10.0.0.1/31 or fc00::1/126");
    EXPECT_EQ(reason("fc00:::1/64"),
              "\"fc00:::1/64\" is no prefix like 10.0.0.1/31 or fc00::1/126");
    EXPECT_EQ(reason(""), "\"\" is no prefix like 10.0.0.1/31 or fc00::1/126");
    EXPECT_EQ(reason("10.0.0.1/33"), "the prefix length 33 is not in 0..32");
    EXPECT_EQ(reason("fc00::1/129"), "the prefix length 129 is not in 0..128");
    EXPECT_EQ(reason("10.0.0.1/"), "the prefix length \"\" is not in 0..32");
    EXPECT_EQ(reason("10.0.0.1/+8"), "the prefix length \"+8\" is not in 0..32");
    EXPECT_EQ(reason("224.0.0.5/24"), "224.0.0.5 is not the address of one interface");
    EXPECT_EQ(reason("0.0.0.0/0"), "0.0.0.0 is not the address of one interface");
    EXPECT_EQ(reason("255.255.255.255/32"), "255.255.255.255 is not the address of one interface");
    EXPECT_EQ(reason("FF02::1/64"), "ff02::1 is not the address of one interface");
    EXPECT_EQ(reason("::/0"), ":: is not the address of one interface");
    EXPECT_EQ(reason("fe80::1/10"), "taken");
    EXPECT_EQ(reason("10.0.0.1/24|x"), "the key is no NAME or NAME|PREFIX");
}

TEST(BadRow, BadPrefixAloneMakesNoInterface)
{
    const auto config = read(R"({"PORT": {"Ethernet0": {}, "Ethernet4": {}}, "INTERFACE": {
        "Ethernet0|10.0.0.1/99": {}, "Ethernet4": {}, "Ethernet4|10.0.0.1/99": {}}})");
    EXPECT_EQ(names(config), Lines{"Ethernet4"});
}

TEST(BadRow, PortThatIsNotThere)
{
    EXPECT_EQ(interface_reasons(R"("Ethernet4": {})"),
              Lines{"Ethernet4: its port Ethernet4 isn't in PORT"});
    EXPECT_EQ(interface_reasons(R"("PortChannel1": {})"),
              Lines{"PortChannel1: \"PortChannel1\" is no port name like Ethernet4 or "
                    "Ethernet-BP0"});
}

TEST(BadRow, AddressesDontComeUpWithoutTheirVrf)
{
    EXPECT_EQ(
        interface_reasons(R"("Ethernet0": {"vrf_name": "Vrf_b"}, "Ethernet0|10.0.0.1/31": {})"),
        (Lines{"Ethernet0: vrf_name \"Vrf_b\" names no row of VRF",
               "Ethernet0|10.0.0.1/31: its interface \"Ethernet0\" isn't taken: vrf_name \"Vrf_b\" "
               "names no row of VRF"}));
}

TEST(BadRow, ThatItIsSkippedIsSaidOnce)
{
    const auto config = read(R"({"PORT": {"Ethernet0": {}, "Ethernet4": {"mtu": "9"}},
        "INTERFACE": {"Ethernet0": {"vrf_name": "Vrf_b"}, "Ethernet0|10.0.0.1/31": {},
                      "Ethernet4": {}, "Ethernet4|10.0.0.3/31": {}, "Ethernet4|10.0.0.5/31": []},
        "NEIGH": {"Ethernet0|10.0.0.0": {}}, "LOOPBACK_INTERFACE": {"Loopback0": {}}})");
    const Lines lines = messages(config);
    EXPECT_EQ(lines.size(), 8U);
    for (const std::string &line : lines) {
        const std::size_t end = line.find("; the row is skipped");
        EXPECT_EQ(end, line.size() - std::string_view("; the row is skipped").size()) << line;
        EXPECT_EQ(line.find("skip"), end + std::string_view("; the row is ").size()) << line;
    }
}

TEST(BadRow, VrfNames)
{
    for (const char *name : {"blue", "Vrf", "Vrf_a b", "Vrf_1234567890123"}) {
        EXPECT_EQ(reason_of("VRF", "\"" + std::string(name) + "\": {}"),
                  "\"" + std::string(name) +
                      "\" is no VRF name: \"Vrf\" and 1 to 12 letters, digits, \"_\" or \"-\" "
                      "were expected");
    }
}

TEST(BadRow, InterfaceFields)
{
    EXPECT_EQ(interface_reasons(R"("Ethernet0": {"mac_addr": "12:34:56:78:90"})"),
              Lines{"Ethernet0: mac_addr: \"12:34:56:78:90\" is no MAC address like "
                    "00:11:22:33:44:55"});
    EXPECT_EQ(interface_reasons(R"("Ethernet0": {"mac_addr": "12-34-56-78-90-ab"})"),
              Lines{"Ethernet0: mac_addr: \"12-34-56-78-90-ab\" is no MAC address like "
                    "00:11:22:33:44:55"});
    EXPECT_EQ(interface_reasons(R"("Ethernet0": {"mac_addr": "01:00:5e:00:00:01"})"),
              Lines{"Ethernet0: mac_addr: 01:00:5e:00:00:01 is a group address; an interface "
                    "needs one of its own"});
    EXPECT_EQ(interface_reasons(R"("Ethernet0": {"mac_addr": "00:00:00:00:00:00"})"),
              Lines{"Ethernet0: mac_addr: 00:00:00:00:00:00 is the address of no interface"});
    EXPECT_EQ(interface_reasons(R"("Ethernet0": {"mpls": "on"})"),
              Lines{"Ethernet0: mpls is \"on\", \"enable\" or \"disable\" was expected"});
    EXPECT_EQ(interface_reasons(R"("Ethernet0": {"ipv6_use_link_local_only": true})"),
              Lines{"Ethernet0: ipv6_use_link_local_only is a boolean, a text or a number was "
                    "expected"});
}

TEST(BadRow, VlansAndTheirNames)
{
    EXPECT_EQ(reason_of("VLAN_INTERFACE", R"("Vlan4095": {})"), "VLAN 4095 is not in 1..4094");
    EXPECT_EQ(reason_of("VLAN_INTERFACE", R"("Vlan0": {})"), "VLAN 0 is not in 1..4094");
    EXPECT_EQ(reason_of("VLAN_INTERFACE", R"("vlan7": {})"),
              "\"vlan7\" is no VLAN name like Vlan100");
    EXPECT_EQ(reason_of("PORTCHANNEL_INTERFACE", R"("PortChannel12345": {})"),
              "\"PortChannel12345\" is no port-channel name like PortChannel0001");
}

TEST(BadRow, Subinterfaces)
{
    const std::string table = "VLAN_SUB_INTERFACE";
    EXPECT_EQ(reason_of(table, R"("Ethernet0.4095": {})"), "VLAN 4095 is not in 1..4094");
    EXPECT_EQ(reason_of(table, R"("Eth0.10": {})"),
              "vlan is missing, and the short form of the name doesn't carry it");
    EXPECT_EQ(reason_of(table, R"("Eth0.10": {"vlan": "x"})"), "VLAN \"x\" is not in 1..4094");
    EXPECT_EQ(reason_of(table, R"("Ethernet0.10": {"vlan": "20"})"),
              "the name says VLAN 10 and the field vlan says 20");
    EXPECT_EQ(reason_of(table, R"("Eth4.10": {"vlan": "10"})"), "its port Ethernet4 isn't in PORT");
    EXPECT_EQ(reason_of(table, R"("Foo.1": {})"),
              "\"Foo.1\" is no subinterface name like Ethernet4.100 or Po0001.100");
    EXPECT_EQ(reason_of(table, R"("Ethernet0.": {})"),
              "\"Ethernet0.\" is no subinterface name like Ethernet4.100 or Po0001.100");
}

TEST(BadRow, Tunnels)
{
    const auto reason = [](const std::string &fields) {
        return reason_of("TUNNEL", "\"T\": {" + fields + "}");
    };
    EXPECT_EQ(reason(R"("dst_ip": "10.0.0.1")"), "tunnel_type is missing, \"IPINIP\" was expected");
    EXPECT_EQ(reason(R"("tunnel_type": "GRE")"), "tunnel_type is \"GRE\", \"IPINIP\" was expected");
    EXPECT_EQ(reason(R"("tunnel_type": "IPINIP")"),
              "dst_ip is missing, the tunnel's own address was expected");
    EXPECT_EQ(reason(R"("tunnel_type": "IPINIP", "dst_ip": "10.0.0")"),
              "dst_ip \"10.0.0\" is no address like 10.0.0.1 or fc00::1");
    EXPECT_EQ(reason(R"("tunnel_type": "IPINIP", "dst_ip": "239.0.0.1")"),
              "dst_ip 239.0.0.1 is not the address of one interface");
    EXPECT_EQ(reason(R"("tunnel_type": "IPINIP", "dst_ip": "10.0.0.1", "src_ip": "fc00::1")"),
              "src_ip and dst_ip are of different families");
    EXPECT_EQ(reason_of("TUNNEL", R"("A|B": {})"), "\"A|B\" is no name of a tunnel");
}

TEST(BadRow, DeviceMac)
{
    const auto config = read(R"({"DEVICE_METADATA": {"localhost": {"mac": "x"}}})");
    EXPECT_EQ(messages(config), Lines{"leaf.json: DEVICE_METADATA \"localhost\": mac: \"x\" is no "
                                      "MAC address like 00:11:22:33:44:55; the row is skipped"});
    EXPECT_EQ(lab::config::mac_text(config.device_mac), "02:00:00:00:00:01");
}
