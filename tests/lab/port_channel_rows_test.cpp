/*
 * port_channel_rows_test.cpp: what the rows of port-channels, their members
 * and subinterfaces mean, and the exact message of each that isn't taken.
 */
#include "config_text.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

using namespace lab_test;
using lab::config::Description;

namespace
{

constexpr const char *PORTS =
    R"("PORT": {"Ethernet0": {"mtu": "9100"}, "Ethernet4": {}, "Ethernet8": {}, "Ethernet12": {}})";

/** Reads tables on four ports. */
Description read_on_ports(const std::string &tables)
{
    return read("{" + std::string(PORTS) + ", " + tables + "}");
}

/** "row: reason" of each skipped row of these tables. */
Lines reasons(const std::string &tables)
{
    Lines lines;
    for (const auto &row : read_on_ports(tables).skipped) {
        lines.push_back(row.row + ": " + row.reason);
    }
    return lines;
}

/** The notes but for that of the missing MAC. */
Lines notes_of(const Description &config)
{
    return {config.notes.begin() + 1, config.notes.end()};
}

const lab::config::PortChannel &channel(const Description &config, const std::string &name)
{
    return config.port_channels.find(name)->second;
}

const std::string CHANNEL_1 = R"("PORTCHANNEL": {"PortChannel1": {}},
    "PORTCHANNEL_MEMBER": {"PortChannel1|Ethernet4": {}, "PortChannel1|Ethernet12": {}})";

} // namespace

TEST(PortChannels, NumberTrunkMtuAndMembers)
{
    const auto config = read_on_ports(R"(
        "PORTCHANNEL": {"PortChannel0010": {"mtu": "9100"}, "PortChannel0009": {}},
        "PORTCHANNEL_MEMBER": {"PortChannel0010|Ethernet12": {}, "PortChannel0010|Ethernet4": {}})");
    EXPECT_EQ(messages(config), Lines{});
    EXPECT_EQ(notes_of(config), Lines{});
    EXPECT_EQ(channel(config, "PortChannel0009").trunk, 1U);
    EXPECT_EQ(channel(config, "PortChannel0010").trunk, 2U);
    EXPECT_EQ(channel(config, "PortChannel0010").number, 10U);
    EXPECT_EQ(channel(config, "PortChannel0010").mtu, 9100);
    EXPECT_EQ(channel(config, "PortChannel0010").members, (Lines{"Ethernet4", "Ethernet12"}));
}

TEST(PortChannels, MembersAreListedInOldFiles)
{
    for (const char *list :
         {R"("members": ["Ethernet0", "Ethernet4"])", R"("members@": "Ethernet0,Ethernet4")"}) {
        const auto config =
            read_on_ports(R"("PORTCHANNEL": {"PortChannel1": {)" + std::string(list) + R"(}},
            "PORTCHANNEL_MEMBER": {"PortChannel1|Ethernet4": {}})");
        EXPECT_EQ(channel(config, "PortChannel1").members, (Lines{"Ethernet0", "Ethernet4"}));
        EXPECT_EQ(notes_of(config), Lines{});
    }
}

TEST(PortChannels, BadListedMemberIsLeftOutWithANote)
{
    const auto config = read_on_ports(
        R"("PORTCHANNEL": {"PortChannel1": {"members": ["Ethernet0", "Ethernet99", [], true]}})");
    EXPECT_EQ(channel(config, "PortChannel1").members, Lines{"Ethernet0"});
    EXPECT_EQ(messages(config), Lines{});
    const std::string start = "leaf.json: PORTCHANNEL \"PortChannel1\": members: ";
    EXPECT_EQ(notes_of(config),
              (Lines{start + "its port Ethernet99 isn't in PORT; this member is left out",
                     start + "\"a list\" is no port name like Ethernet4 or Ethernet-BP0; this "
                             "member is left out",
                     start + "\"a boolean\" is no port name like Ethernet4 or Ethernet-BP0; this "
                             "member is left out"}));
}

TEST(PortChannels, UndeclaredOnesAreTakenWithANote)
{
    const auto config = read_on_ports(R"("PORTCHANNEL_INTERFACE": {"PortChannel2": {}},
        "PORTCHANNEL_MEMBER": {"PortChannel2|Ethernet0": {}, "PortChannel3|Ethernet4": {}})");
    EXPECT_EQ(messages(config), Lines{});
    EXPECT_EQ(names(config), Lines{"PortChannel2"});
    EXPECT_EQ(notes_of(config),
              Lines{"leaf.json: PORTCHANNEL has no row of 2 port-channels that other rows use, "
                    "PortChannel2 the first; taken all the same"});
}

TEST(PortChannels, WithoutMembersAreNotTaken)
{
    EXPECT_EQ(reasons(R"("PORTCHANNEL": {"PortChannel1": {}},
        "PORTCHANNEL_INTERFACE": {"PortChannel1": {}, "PortChannel1|10.0.0.1/31": {}},
        "VLAN_SUB_INTERFACE": {"PortChannel1.10": {}})"),
              (Lines{"PortChannel1: PortChannel1 has no members, and without them no trunk in "
                     "the chip",
                     "PortChannel1|10.0.0.1/31: its interface \"PortChannel1\" isn't taken: "
                     "PortChannel1 has no members, and without them no trunk in the chip",
                     "PortChannel1.10: PortChannel1 has no members, and without them no trunk in "
                     "the chip"}));
}

TEST(PortChannels, OfTheSameNumberAreNotTakenBoth)
{
    EXPECT_EQ(reasons(R"("PORTCHANNEL": {"PortChannel1": {}, "PortChannel0001": {}})").size(), 1U);
    EXPECT_EQ(reasons(R"("PORTCHANNEL": {"PortChannel01": {"mtu": "9"}},
        "PORTCHANNEL_MEMBER": {"PortChannel01|Ethernet0": {}})"),
              (Lines{"PortChannel01: mtu 9 is not in 68..9216",
                     "PortChannel01|Ethernet0: its port-channel PortChannel01 isn't taken: mtu 9 "
                     "is not in 68..9216"}));
}

TEST(Members, ReasonsForWhichTheyAreNotTaken)
{
    const auto reason = [](const std::string &row) {
        const Lines lines = reasons(R"("INTERFACE": {"Ethernet8|10.0.0.1/31": {}},
            "PORTCHANNEL_MEMBER": {"PortChannel1|Ethernet0": {}, )" +
                                    row + ": {}}");
        return lines.empty() ? "taken" : lines[0].substr(lines[0].find(": ") + 2);
    };
    EXPECT_EQ(reason(R"("PortChannel1|Ethernet4")"), "taken");
    EXPECT_EQ(reason(R"("PortChannel1|Ethernet99")"), "its port Ethernet99 isn't in PORT");
    EXPECT_EQ(reason(R"("PortChannel1|Ethernet8")"),
              "its port Ethernet8 is routed itself, by INTERFACE");
    EXPECT_EQ(reason(R"("PortChannel2|Ethernet0")"),
              "its port Ethernet0 is a member of PortChannel1 already");
    EXPECT_EQ(reason(R"("PortChannel1|x")"),
              "\"x\" is no port name like Ethernet4 or Ethernet-BP0");
    EXPECT_EQ(reason(R"("PortChannel1")"), "the key is no PORTCHANNEL|PORT");
    EXPECT_EQ(reason(R"("Po1|Ethernet4")"), "\"Po1\" is no port-channel name like PortChannel0001");
}

TEST(Members, The33rdIsRefused)
{
    std::string ports;
    std::string members;
    for (int i = 0; i < 33; ++i) {
        ports += fmt::format("{}\"Ethernet{}\": {{}}", i == 0 ? "" : ", ", i);
        members += fmt::format("{}\"PortChannel1|Ethernet{}\": {{}}", i == 0 ? "" : ", ", i);
    }
    const auto config = read(R"({"PORT": {)" + ports + R"(}, "PORTCHANNEL": {"PortChannel1": {}},
        "PORTCHANNEL_MEMBER": {)" +
                             members + "}}");
    EXPECT_EQ(channel(config, "PortChannel1").members.size(), 32U);
    EXPECT_EQ(messages(config),
              Lines{"leaf.json: PORTCHANNEL_MEMBER \"PortChannel1|Ethernet32\": PortChannel1 has "
                    "32 members, and a trunk of the chip takes no more; the row is skipped"});
}

TEST(Subinterfaces, MainNumberVlanAndMtu)
{
    const auto config =
        read_on_ports(CHANNEL_1 + R"(, "PORTCHANNEL_INTERFACE": {"PortChannel1": {}},
        "VLAN_SUB_INTERFACE": {"Ethernet0.10": {"mtu": "2000"}, "Po1.7": {"vlan": "4093"}})");
    EXPECT_EQ(messages(config), Lines{});
    ASSERT_EQ(names(config), (Lines{"PortChannel1", "Ethernet0.10", "Po1.7"}));
    EXPECT_EQ(config.interfaces[1].main, "Ethernet0");
    EXPECT_EQ(config.interfaces[1].number, 10U);
    EXPECT_EQ(config.interfaces[1].mtu, 2000);
    EXPECT_EQ(config.interfaces[2].main, "PortChannel1");
    EXPECT_EQ(config.interfaces[2].number, 7U);
    EXPECT_EQ(config.interfaces[2].vlan, 4093);
}

TEST(Subinterfaces, BringTheirPortChannelUp)
{
    const auto config =
        read_on_ports(CHANNEL_1 + R"(, "VLAN_SUB_INTERFACE": {"PortChannel1.10": {}})");
    EXPECT_EQ(names(config), (Lines{"PortChannel1", "PortChannel1.10"}));
    EXPECT_EQ(notes_of(config), Lines{"leaf.json: no row makes PortChannel1 routed; up without "
                                      "addresses, for the subinterfaces"});
}

TEST(Subinterfaces, ReasonsForWhichTheyAreNotTaken)
{
    const auto reason = [](const std::string &rows) {
        const Lines lines = reasons(CHANNEL_1 + R"(, "PORTCHANNEL_INTERFACE": {"PortChannel1": {}},
            "VLAN_SUB_INTERFACE": {)" +
                                    rows + "}");
        return lines.empty() ? "taken" : lines[0];
    };
    EXPECT_EQ(reason(R"("Ethernet0.4094": {})"), "Ethernet0.4094: VLAN 4094 is the switch's own");
    EXPECT_EQ(reason(R"("Eth0.0": {"vlan": "1"})"),
              "Eth0.0: the number 0 behind the dot is not in 1..65535");
    EXPECT_EQ(reason(R"("Po1.4096": {"vlan": "1"})"),
              "Po1.4096: the number 4096 behind the dot is not in 1..4095");
    EXPECT_EQ(reason(R"("Ethernet4.10": {})"),
              "Ethernet4.10: its port Ethernet4 is a member of PortChannel1");
    EXPECT_EQ(reason(R"("Po2.10": {"vlan": "10"})"),
              "Po2.10: PortChannel2 has no members, and without them no trunk in the chip");
    EXPECT_EQ(reason(R"("Eth0.10": {"vlan": "20"}, "Ethernet0.10": {})"),
              "Ethernet0.10: it is Eth0.10 in another spelling");
    EXPECT_EQ(reason(R"("Eth0.1": {"vlan": "10"}, "Eth0.2": {"vlan": "10"})"),
              "Eth0.2: VLAN 10 on Ethernet0 is that of Eth0.1");
    EXPECT_EQ(reason(R"("Eth0.1": {"vlan": "10"}, "Eth8.1": {"vlan": "10"})"), "taken");
    EXPECT_EQ(reason(R"("Eth0.1": {"vlan": "10", "mtu": "67"})"),
              "Eth0.1: mtu 67 is not in 68..9216");
}
