/*
 * vlan_rows_test.cpp: what is read of VLANs, their members, and private-VLAN
 * pairs, and the exact message of each kind of row that can't be taken.
 */
#include "config_text.h"

#include <gtest/gtest.h>

using namespace lab_test;
using lab::config::Description;
using lab::config::VlanRole;

namespace
{

const std::string PORTS = R"("PORT": {"Ethernet0": {}, "Ethernet4": {}, "Ethernet8": {}})";

/** Reads some tables beside three ports. */
Description read_with_ports(const std::string &tables)
{
    return read("{" + PORTS + ", " + tables + "}");
}

/** "row: reason" of the skipped rows of a table. */
Lines reasons(const Description &config, const std::string &table)
{
    Lines lines;
    for (const auto &row : config.skipped) {
        if (row.table == table) {
            lines.push_back(row.row + ": " + row.reason);
        }
    }
    return lines;
}

/** The reason for which the one VLAN of a file is skipped. */
std::string vlan_reason(const std::string &row)
{
    const auto config = read(R"({"VLAN": {)" + row + "}}");
    EXPECT_EQ(config.skipped.size(), 1U);
    return config.skipped.empty() ? "" : config.skipped[0].reason;
}

/** The reasons for which rows of VLAN_MEMBER of VLANs 10 and 20 are skipped. */
Lines member_reasons(const std::string &rows, const std::string &more = "")
{
    return reasons(read_with_ports(R"("VLAN": {"Vlan10": {}, "Vlan20": {}}, "VLAN_MEMBER": {)" +
                                   rows + "}" + more),
                   "VLAN_MEMBER");
}

/** "Ethernet0 tagged", … */
Lines members(const Description &config, const std::string &vlan)
{
    Lines lines;
    for (const auto &member : config.vlans.find(vlan)->second.members) {
        lines.push_back(member.name + (member.tagged ? " tagged" : " untagged"));
    }
    return lines;
}

/** Reads pairs of VLANs 10, 11, 12 and 20, of which 10 and 20 have interfaces. */
Description read_pairs(const std::string &rows)
{
    return read(R"({"VLAN": {"Vlan10": {}, "Vlan11": {}, "Vlan12": {}, "Vlan20": {}},
        "VLAN_INTERFACE": {"Vlan10": {}, "Vlan20": {}}, "PVLAN": {)" +
                rows + "}}");
}

} // namespace

TEST(Vlans, NumberAndMtu)
{
    const auto config = read(R"({"VLAN": {"Vlan100": {"vlanid": "100", "mtu": "9000"},
                                          "Vlan7": {"vlanid": 7}, "Vlan8": {}}})");
    EXPECT_EQ(messages(config), Lines{});
    EXPECT_EQ(config.vlans.find("Vlan100")->second.id, 100);
    EXPECT_EQ(config.vlans.find("Vlan100")->second.mtu, 9000);
    EXPECT_EQ(config.vlans.find("Vlan8")->second.id, 8);
    EXPECT_EQ(config.vlans.find("Vlan8")->second.mtu, 0);
}

TEST(Vlans, BadRows)
{
    EXPECT_EQ(vlan_reason(R"("Vlan0": {})"), "VLAN 0 is not in 1..4094");
    EXPECT_EQ(vlan_reason(R"("Vlan4095": {})"), "VLAN 4095 is not in 1..4094");
    EXPECT_EQ(vlan_reason(R"("Vlan4094": {})"), "VLAN 4094 is the switch's own");
    EXPECT_EQ(vlan_reason(R"("Vlan07": {})"), "Vlan07 is written Vlan7");
    EXPECT_EQ(vlan_reason(R"("vlan7": {})"), "\"vlan7\" is no VLAN name like Vlan100");
    EXPECT_EQ(vlan_reason(R"("Vlan": {})"), "\"Vlan\" is no VLAN name like Vlan100");
    EXPECT_EQ(vlan_reason(R"("Vlan100": {"vlanid": "101"})"),
              "the name says VLAN 100 and the field vlanid says 101");
    EXPECT_EQ(vlan_reason(R"("Vlan100": {"vlanid": "x"})"), "vlanid \"x\" is not in 1..4094");
    EXPECT_EQ(vlan_reason(R"("Vlan100": {"vlanid": ["100"]})"),
              "vlanid is a list, a text or a number was expected");
    EXPECT_EQ(vlan_reason(R"("Vlan100": {"mtu": "67"})"), "mtu 67 is not in 68..9216");
    EXPECT_EQ(vlan_reason(R"("Vlan100": [])"), "an object of fields was expected, not a list");
}

TEST(Vlans, WithoutATableThoseThatOtherRowsName)
{
    const auto config = read_with_ports(R"("VLAN_INTERFACE": {"Vlan10|10.0.0.1/24": {}},
        "VLAN_MEMBER": {"Vlan11|Ethernet0": {}}, "PVLAN": {"Vlan10|Vlan12": {}})");
    EXPECT_EQ(messages(config), Lines{});
    EXPECT_EQ(config.vlans.size(), 3U);
    EXPECT_EQ(config.notes.back(),
              "leaf.json: there is no VLAN table; its VLANs are the 3 that other rows name");
}

TEST(Vlans, WithoutATableOnlyThoseThatCanBeUsedAreCounted)
{
    const auto config = read(R"({"VLAN_INTERFACE": {"Vlan10": {}, "Vlan4094": {}, "Vlan07": {}}})");
    EXPECT_EQ(config.notes.back(),
              "leaf.json: there is no VLAN table; its VLAN is the one that other rows name");
    EXPECT_EQ(
        reasons(config, "VLAN_INTERFACE"),
        (Lines{"Vlan07: Vlan07 is written Vlan7", "Vlan4094: VLAN 4094 is the switch's own"}));
    EXPECT_EQ(read(R"({"VLAN_INTERFACE": {"Vlan4094": {}}})").notes.size(), 1U); // of the MAC
}

TEST(Vlans, InterfaceNeedsItsVlan)
{
    const auto config = read(R"({"VLAN": {"Vlan10": {}, "Vlan11": {"vlanid": "12"}},
        "VLAN_INTERFACE": {"Vlan10": {}, "Vlan11": {}, "Vlan13": {}, "Vlan4094": {}}})");
    EXPECT_EQ(reasons(config, "VLAN_INTERFACE"),
              (Lines{"Vlan11: its VLAN Vlan11 isn't taken: the name says VLAN 11 and the field "
                     "vlanid says 12",
                     "Vlan13: its VLAN Vlan13 isn't in VLAN",
                     "Vlan4094: VLAN 4094 is the switch's own"}));
    EXPECT_EQ(names(config), Lines{"Vlan10"});
}

TEST(Vlans, InterfaceHasItsOwnMtu)
{
    const auto config = read(
        R"({"VLAN": {"Vlan10": {"mtu": "9000"}}, "VLAN_INTERFACE": {"Vlan10": {"mtu": 2000}}})");
    EXPECT_EQ(config.interfaces.at(0).mtu, 2000);
    EXPECT_EQ(messages(read(R"({"VLAN_INTERFACE": {"Vlan10": {"mtu": "9217"}}})")),
              Lines{"leaf.json: VLAN_INTERFACE \"Vlan10\": mtu 9217 is not in 68..9216; the row is "
                    "skipped"});
}

TEST(VlanMembers, PortsAndPortChannelsInNaturalOrder)
{
    const auto config = read_with_ports(R"("VLAN": {"Vlan10": {}, "Vlan20": {}},
        "PORTCHANNEL_MEMBER": {"PortChannel1|Ethernet8": {}},
        "VLAN_MEMBER": {"Vlan10|PortChannel1": {"tagging_mode": "tagged"}, "Vlan10|Ethernet4": {},
                        "Vlan10|Ethernet0": {"tagging_mode": "untagged"},
                        "Vlan20|Ethernet0": {"tagging_mode": "tagged"}})");
    EXPECT_EQ(messages(config), Lines{});
    EXPECT_EQ(members(config, "Vlan10"),
              (Lines{"Ethernet0 untagged", "Ethernet4 untagged", "PortChannel1 tagged"}));
    EXPECT_EQ(members(config, "Vlan20"), Lines{"Ethernet0 tagged"});
}

TEST(VlanMembers, BadKeysAndFields)
{
    EXPECT_EQ(member_reasons(R"("Vlan10": {}, "Vlan10|eth0": {}, "Vlan10|Ethernet0|x": {},
                                "Vlan30|Ethernet0": {}, "Vlan10|Ethernet4": [],
                                "Vlan10|Ethernet8": {"tagging_mode": "trunk"}, "x|Ethernet0": {})"),
              (Lines{"Vlan10: the key is no VLAN|PORT",
                     "Vlan10|Ethernet0|x: \"Ethernet0|x\" is no name of a port or port-channel "
                     "like Ethernet4 or PortChannel0001",
                     "Vlan10|Ethernet4: an object of fields was expected, not a list",
                     "Vlan10|Ethernet8: tagging_mode is \"trunk\", \"tagged\" or \"untagged\" was "
                     "expected",
                     "Vlan10|eth0: \"eth0\" is no name of a port or port-channel like Ethernet4 or "
                     "PortChannel0001",
                     "Vlan30|Ethernet0: its VLAN Vlan30 isn't in VLAN",
                     "x|Ethernet0: \"x\" is no VLAN name like Vlan100"}));
}

TEST(VlanMembers, PortThatIsRoutedOrOfAPortChannelOrNotThere)
{
    EXPECT_EQ(member_reasons(R"("Vlan10|Ethernet0": {}, "Vlan10|Ethernet4": {},
                                "Vlan10|Ethernet8": {}, "Vlan10|Ethernet12": {})",
                             R"(, "INTERFACE": {"Ethernet0|10.0.0.1/31": {}},
                                "VLAN_SUB_INTERFACE": {"Ethernet4.7": {}},
                                "PORTCHANNEL_MEMBER": {"PortChannel1|Ethernet8": {}})"),
              (Lines{"Vlan10|Ethernet0: its port Ethernet0 is routed, by INTERFACE",
                     "Vlan10|Ethernet4: its port Ethernet4 has subinterfaces, by "
                     "VLAN_SUB_INTERFACE",
                     "Vlan10|Ethernet8: its port Ethernet8 is a member of PortChannel1",
                     "Vlan10|Ethernet12: its port Ethernet12 isn't in PORT"}));
}

TEST(VlanMembers, PortChannelThatIsRoutedOrEmptyOrHasSubinterfacesBelow)
{
    EXPECT_EQ(member_reasons(R"("Vlan10|PortChannel1": {}, "Vlan10|PortChannel2": {},
                                "Vlan10|PortChannel3": {}, "Vlan10|PortChannel4": {})",
                             R"(, "PORTCHANNEL_INTERFACE": {"PortChannel1": {}},
                                "VLAN_SUB_INTERFACE": {"Ethernet4.7": {}, "Po4.1": {"vlan": 9}},
                                "PORTCHANNEL_MEMBER": {"PortChannel1|Ethernet0": {},
                                "PortChannel2|Ethernet4": {}, "PortChannel4|Ethernet8": {}})"),
              (Lines{"Vlan10|PortChannel1: its port-channel PortChannel1 is routed, itself or by "
                     "subinterfaces",
                     "Vlan10|PortChannel2: its port Ethernet4 has subinterfaces, by "
                     "VLAN_SUB_INTERFACE",
                     "Vlan10|PortChannel3: PortChannel3 has no members, and without them no trunk "
                     "in the chip",
                     "Vlan10|PortChannel4: its port-channel PortChannel4 is routed, itself or by "
                     "subinterfaces"}));
}

TEST(VlanMembers, UntaggedInOneVlanOnly)
{
    EXPECT_EQ(member_reasons(R"("Vlan10|Ethernet0": {}, "Vlan20|Ethernet0": {},
                                "Vlan10|Ethernet4": {"tagging_mode": "tagged"},
                                "Vlan20|Ethernet4": {"tagging_mode": "tagged"})"),
              Lines{"Vlan20|Ethernet0: Ethernet0 is untagged in Vlan10 already"});
}

TEST(VlanMembers, NameThePortsOfAFileWithoutAPortTable)
{
    const auto config =
        read(R"({"VLAN_MEMBER": {"Vlan10|Ethernet4": {}, "Vlan10|Ethernet0": {}}})");
    EXPECT_EQ(messages(config), Lines{});
    EXPECT_EQ(config.ports.find("Ethernet4")->second.chip_port, 2U);
}

TEST(PvlanPairs, GiveTheirVlansARole)
{
    const auto config = read_pairs(R"("Vlan10|Vlan11": {}, "Vlan10|Vlan12": {"NULL": "NULL"})");
    EXPECT_EQ(messages(config), Lines{});
    ASSERT_EQ(config.pvlan_pairs.size(), 2U);
    EXPECT_EQ(config.pvlan_pairs[1].primary, "Vlan10");
    EXPECT_EQ(config.pvlan_pairs[1].secondary, "Vlan12");
    EXPECT_EQ(config.vlans.find("Vlan10")->second.role, VlanRole::primary);
    EXPECT_EQ(config.vlans.find("Vlan11")->second.role, VlanRole::secondary);
    EXPECT_EQ(config.vlans.find("Vlan20")->second.role, VlanRole::none);
}

TEST(PvlanPairs, VlanInTwoRoles)
{
    EXPECT_EQ(reasons(read_pairs(R"("Vlan10|Vlan10": {}, "Vlan10|Vlan11": {}, "Vlan11|Vlan12": {},
                                    "Vlan12|Vlan10": {}, "Vlan20|Vlan11": {})"),
                      "PVLAN"),
              (Lines{"Vlan10|Vlan10: Vlan10 can't be its own secondary",
                     "Vlan11|Vlan12: Vlan11 is the secondary of Vlan10 already",
                     "Vlan12|Vlan10: Vlan10 is the primary of Vlan11 already",
                     "Vlan20|Vlan11: Vlan11 is the secondary of Vlan10 already"}));
}

TEST(PvlanPairs, SecondaryHasNoInterface)
{
    EXPECT_EQ(reasons(read_pairs(R"("Vlan10|Vlan20": {})"), "PVLAN"),
              Lines{"Vlan10|Vlan20: its secondary Vlan20 has an interface of its own, by "
                    "VLAN_INTERFACE; the primary's routes for it"});
}

TEST(PvlanPairs, BadKeysAndRows)
{
    EXPECT_EQ(reasons(read_pairs(R"("Vlan10": {}, "Vlan10|Vlan11": 7, "Vlan10|Vlan13": {},
                                    "Vlan13|Vlan11": {}, "Vlan10|Vlan11|Vlan12": {})"),
                      "PVLAN"),
              (Lines{"Vlan10: the key is no PRIMARY|SECONDARY",
                     "Vlan10|Vlan11: an object of fields was expected, not a number",
                     "Vlan10|Vlan11|Vlan12: \"Vlan11|Vlan12\" is no VLAN name like Vlan100",
                     "Vlan10|Vlan13: its VLAN Vlan13 isn't in VLAN",
                     "Vlan13|Vlan11: its VLAN Vlan13 isn't in VLAN"}));
}

TEST(PvlanPairs, NameOfAVlanIsLookedAtBeforeItsPartner)
{
    EXPECT_EQ(
        reasons(read_pairs(R"("|": {}, "x|x": {}, "Vlan13|Vlan13": {})"), "PVLAN"),
        (Lines{"Vlan13|Vlan13: its VLAN Vlan13 isn't in VLAN",
               "x|x: \"x\" is no VLAN name like Vlan100", "|: \"\" is no VLAN name like Vlan100"}));
}
