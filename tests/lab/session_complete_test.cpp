/*
 * session_complete_test.cpp: what may stand at the cursor of a session's line.
 */
#include "session/complete.h"
#include "session/verbs.h"
#include "session_run.h"
#include "up_run.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

namespace lab_test
{

namespace
{

using Words = std::vector<std::string>;

class SessionComplete : public SessionTest
{
protected:
    Words after(const std::string &line) const
    {
        return lab::session::complete(session.state(), line).words;
    }
    std::string common(const std::string &line) const
    {
        return lab::session::complete(session.state(), line).common();
    }
};

TEST_F(SessionComplete, CommandsStandFirst)
{
    EXPECT_EQ(after("s"), (Words{"save", "set", "show"}));
    EXPECT_EQ(after("").size(), 25U);
    EXPECT_EQ(after("help sh"), Words{"show"});
    EXPECT_EQ(after("banana "), Words{});
    EXPECT_EQ(after("show # p"), Words{});
}

TEST_F(SessionComplete, InterfacesAreThoseOfTheConfiguration)
{
    EXPECT_EQ(after("set "), Words{});
    up();
    EXPECT_EQ(after("set Eth"), (Words{"Ethernet0", "Ethernet4", "Ethernet4.10"}));
    EXPECT_EQ(common("set Eth"), "ernet");
    EXPECT_EQ(common("set Ethernet4"), "");
    EXPECT_EQ(after("disable V"), Words{"Vlan100"});
    EXPECT_EQ(after("vmac add M"), Words{"MuxTunnel0"});
    EXPECT_EQ(after("del Ethernet0 "), Words{"keep"});
    EXPECT_EQ(after("pvlan add "), (Words{"Vlan100", "Vlan101"}));
}

TEST_F(SessionComplete, PropertiesAndValuesFollow)
{
    up();
    EXPECT_EQ(after("set Ethernet0 ip"), (Words{"ipv4", "ipv4-multicast", "ipv6", "ipv6-vrf"}));
    EXPECT_EQ(after("get Ethernet0 u"), Words{"urpf"});
    EXPECT_EQ(after("set Ethernet0 urpf "), (Words{"loose", "off", "strict"}));
    EXPECT_EQ(after("set Ethernet0 ipv4 o"), (Words{"off", "on"}));
    EXPECT_EQ(after("set Ethernet0 mtu "), Words{});
    EXPECT_EQ(after("ipv6 "), (Words{"off", "on"}));
}

TEST_F(SessionComplete, FunctionsAndTables)
{
    EXPECT_EQ(after("fail bcm_trunk_g"), Words{"bcm_trunk_get"});
    EXPECT_EQ(after("fail bcm_trunk_get a"), Words{"always"});
    EXPECT_EQ(after("show p"), (Words{"packet", "ports"}));
    EXPECT_EQ(after("show field 12"), (Words{"120", "123", "124", "125", "127"}));
    EXPECT_EQ(after("rmac d"), Words{"del"});
}

TEST_F(SessionComplete, PortsAndWhatStandsBehindThem)
{
    EXPECT_EQ(after("drop add "), Words{});
    EXPECT_EQ(after("member-port "), Words{});
    up();
    EXPECT_EQ(after("drop "), (Words{"add", "del"}));
    EXPECT_EQ(after("drop add Ethernet1"), (Words{"Ethernet12", "Ethernet16"}));
    EXPECT_EQ(after("drop add Ethernet0 "), Words{});
    EXPECT_EQ(after("member-port Ethernet1"), (Words{"Ethernet12", "Ethernet16"}));
    EXPECT_EQ(after("member-port V"), Words{"Vlan100"});
    EXPECT_EQ(after("member-port Ethernet12 "), Words{"clear"});
    EXPECT_EQ(after("member-port Ethernet12 clear "), Words{});
    EXPECT_EQ(after("dump V"), Words{"Vlan100"});
    EXPECT_EQ(after("dump Vlan100 "), Words{});
}

TEST_F(SessionComplete, VxlanPortsKeyByKey)
{
    EXPECT_EQ(after("vxlan "), (Words{"add", "del"}));
    EXPECT_EQ(after("vxlan del "), Words{});
    up();
    EXPECT_EQ(after("vxlan add M"), Words{"MuxTunnel0"});
    EXPECT_EQ(after("vxlan add Vlan100 v"), (Words{"vlan", "vni", "vpn"}));
    EXPECT_EQ(after("vxlan add Vlan100 vpn 1 v"), (Words{"vlan", "vni"}));
    EXPECT_EQ(after("vxlan add Vlan100 vpn "), Words{});
    EXPECT_EQ(after("vxlan add Vlan100 port Ethernet2"), Words{"Ethernet20"});
    EXPECT_EQ(after("vxlan add Vlan100 egress T"), Words{});
    EXPECT_EQ(after("vxlan add Vlan100 egress M"), Words{"MuxTunnel0"});
    run_all({"vxlan add Vlan100 vpn 28673 vni 1 port Ethernet16 vlan 1",
             "vxlan add Vlan100 vpn 7 vni 1 port Ethernet16 vlan 2"});
    EXPECT_EQ(after("vxlan del "), (Words{"7", "28673"}));
    EXPECT_EQ(after("vxlan del 7 "), Words{"2"});
    EXPECT_EQ(after("vxlan del 7 2 "), Words{});
    EXPECT_EQ(after("show v"), (Words{"vlans", "vxlan"}));
    EXPECT_EQ(after("expect vxlan 1 v"), (Words{"vlan", "vni", "vpn"}));
}

TEST_F(SessionComplete, ExpectationsWordByWord)
{
    up();
    EXPECT_EQ(after("expect c"), (Words{"call", "code"}));
    EXPECT_EQ(after("expect no vl"), Words{"vlan"});
    EXPECT_EQ(after("expect no vlan Vl"), (Words{"Vlan100", "Vlan101"}));
    EXPECT_EQ(after("expect vlan 100 fl"), Words{"flags"});
    EXPECT_EQ(after("expect vlan 100 flags "), (Words{"!=", "="}));
    EXPECT_EQ(after("expect port Ethernet0 c"), (Words{"control", "count"}));
    EXPECT_EQ(after("expect station co"), Words{"count"});
    EXPECT_EQ(after("expect call bcm_trunk_g"), Words{"bcm_trunk_get"});
    EXPECT_EQ(after("expect code "), (Words{"!=", "="}));
}

TEST_F(SessionComplete, ExpectationsEndWhereTheyEnd)
{
    up();
    EXPECT_EQ(after("expect code = "), Words{});
    EXPECT_EQ(after("expect no code "), Words{});
    EXPECT_EQ(after("expect vlan count "), (Words{"!=", "="}));
    EXPECT_EQ(after("expect vlan count = "), Words{});
    EXPECT_EQ(after("expect xlate Ethernet4.10 co"), Words{"count"});
    EXPECT_EQ(after("expect vlan 100 flags = "), Words{});
    EXPECT_EQ(after("expect vlan 100 = "), Words{});
    EXPECT_EQ(after("expect no vlan 100 "), Words{});
    EXPECT_EQ(after("expect call bcm_trunk_get "), Words{"count"});
    EXPECT_EQ(after("expect call bcm_trunk_get count "), (Words{"!=", "="}));
    EXPECT_EQ(after("expect no call bcm_trunk_g"), Words{"bcm_trunk_get"});
    EXPECT_EQ(after("expect no call bcm_trunk_get "), Words{});
    EXPECT_EQ(after("expect port Ethernet0 control "), Words{});
    EXPECT_EQ(after("expect port Ethernet0 control 8 "), (Words{"!=", "="}));
    EXPECT_EQ(after("expect port Ethernet0 control 8 = "), Words{});
    EXPECT_EQ(after("expect switch con"), Words{"control"});
    EXPECT_EQ(after("expect switch control "), Words{});
    EXPECT_EQ(after("expect switch control 89 "), (Words{"!=", "="}));
    EXPECT_EQ(after("expect packet fate "), (Words{"!=", "="}));
    EXPECT_EQ(after("expect packet fate = "), Words{});
}

TEST_F(SessionComplete, ExpectationsOfWhatANumberStandsFor)
{
    up();
    EXPECT_EQ(after("expect expl"), Words{"explain"});
    EXPECT_EQ(after("expect explain "), (Words{"egress", "iif", "port", "station", "vlan"}));
    EXPECT_EQ(after("expect no explain v"), Words{"vlan"});
    EXPECT_EQ(after("expect explain vlan 10"), (Words{"10", "100", "101"}));
    EXPECT_EQ(after("expect no explain station "), Words{"1"});
    EXPECT_EQ(after("expect explain vlan 100 "), Words{});
}

TEST_F(SessionComplete, MacsThatCanBeRemoved)
{
    EXPECT_EQ(after("rmac del "), Words{});
    up();
    run_all({"rmac add 02:00:00:00:0b:01", "vmac add Vlan100 00:00:5e:00:01:08",
             "vmac add Ethernet0 00:00:5e:00:01:09"});
    EXPECT_EQ(after("rmac del "), (Words{"02:00:00:00:0a:01", "02:00:00:00:0b:01"}));
    EXPECT_EQ(after("rmac add "), Words{});
    EXPECT_EQ(after("rmac del 02:00:00:00:0a:01 "), Words{});
    EXPECT_EQ(after("vmac del Vlan100 "), Words{"00:00:5e:00:01:08"});
    EXPECT_EQ(after("vmac del Ethernet4 "), Words{});
    EXPECT_EQ(after("vmac add Vlan100 "), Words{});
}

TEST_F(SessionComplete, NothingFollowsWhatIsWhole)
{
    up();
    for (const std::string line :
         {"pvlan add Vlan100 Vlan101 ", "set Ethernet0 ipv4 on ", "get Ethernet0 vrf ",
          "add Ethernet0 ", "del Ethernet0 keep ", "disable Ethernet0 ", "ipv6 on ", "save ",
          "show vlans 100 ", "help show ", "fail bcm_trunk_get always ", "restart cold "}) {
        EXPECT_EQ(after(line), Words{}) << line;
    }
    EXPECT_EQ(after("restart "), (Words{"cold", "fast", "restore"}));
}

/** What stands first behind each command has to be offered, where it isn't a user's own choice. */
TEST_F(SessionComplete, EveryCommandIsHelpedAlong)
{
    up();
    for (const std::string &verb : lab::session::verb_names()) {
        const bool stands_alone = verb == "save" || verb == "quit";
        EXPECT_EQ(after(verb + " ").empty(), stands_alone) << verb;
    }
}

/** Makes an empty file. */
static void touch(const std::filesystem::path &file)
{
    const std::ofstream made(file);
}

TEST_F(SessionComplete, FilesAreThoseOfTheFolder)
{
    const Folder folder;
    touch(folder.path / "one.json");
    touch(folder.path / "one two.json");
    touch(folder.path / ".hidden");
    touch(folder.path / "bad\x1b[2J");
    std::filesystem::create_directory(folder.path / "sub");
    const std::string path = folder.path.string() + "/";
    EXPECT_EQ(after("up " + path),
              (Words{path + "one two.json", path + "one.json", path + "sub/"}));
    EXPECT_EQ(after("up " + path + "."), Words{path + ".hidden"});
    EXPECT_EQ(after("up \"" + path + "one t"), Words{path + "one two.json"});
    EXPECT_EQ(after("up /nowhere/"), Words{});
}

} // namespace

} // namespace lab_test
