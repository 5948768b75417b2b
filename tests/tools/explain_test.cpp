/*
 * explain_test.cpp: what the numbers of the chip stand for, in examples/packets.json:
 * a port, a port-channel, VLAN interfaces, subinterfaces, virtual MACs, a
 * private-VLAN pair, routes by several ways.
 */
#include "record_run.h"

#include "explain/explain.h"
#include "explain/report.h"
#include "session/errors.h"
#include "session/session.h"
#include "support/load_time_state.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <memory>
#include <sstream>

namespace
{

using lab::session::Session;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

/** A session with examples/packets.json up. */
class Explain : public ::testing::Test
{
protected:
    Explain()
    {
        rtifhal_test::reset_library();
        hardware = std::make_unique<simswitch::Switch>();
        session = std::make_unique<Session>(*hardware);
        session->execute(std::string("up ") + RTIFHAL_SOURCE_DIR + "/examples/packets.json open");
    }

    /** What the command prints, the blanks between columns as one "|". */
    std::string explained(const std::string &line)
    {
        const std::string text = session->execute("explain " + line).shown;
        std::string narrow;
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (text.compare(i, 2, "  ") == 0 && !narrow.empty() && narrow.back() != '\n') {
                narrow += '|';
                i = text.find_first_not_of(' ', i) - 1;
            } else {
                narrow += text[i];
            }
        }
        return narrow;
    }

    std::unique_ptr<simswitch::Switch> hardware;
    std::unique_ptr<Session> session;
};

TEST_F(Explain, ASubinterfaceHasItsTranslationAndWhatLeavesByIt)
{
    EXPECT_EQ(session->execute("explain iif 11").shown, R"(iif 11: Ethernet4.10, subinterface, up

  OBJECT          ID                 WHAT                                                                        SINCE
what it is
  L3 interface    11                 MAC 02:00:00:00:0a:01, VLAN 10, VRF default, MTU 9100                       add Ethernet4.10
  ingress object  11                 VRF default, reverse path off, class 64, flags 0x6                          add Ethernet4.10
who comes in by it
  translation     Ethernet4 VLAN 10  to interface 11 (Ethernet4.10), VLAN 4094 from there on                     add Ethernet4.10
what depends on it
  address                            10.4.10.1/24
  egress          100008             the CPU                                                                     address 10.4.10.1 of Ethernet4.10
  egress          100018             the CPU                                                                     connected Ethernet4.10
  egress          100034             10.4.10.9 on Ethernet4, MAC 02:00:00:04:10:09, interface 11 (Ethernet4.10)  neighbor 10.4.10.9 of Ethernet4.10
  route           10.4.10.0/24       VRF default: egress 100018                                                  connected Ethernet4.10
  route           10.4.10.1/32       VRF default: egress 100008                                                  address 10.4.10.1 of Ethernet4.10
  route           10.4.10.9/32       VRF default: egress 100034                                                  neighbor 10.4.10.9 of Ethernet4.10
)");
}

TEST_F(Explain, APortsNumberIsNamedByItsControlAndHasItsVirtualMac)
{
    EXPECT_THAT(explained("iif 3"),
                AllOf(StartsWith("iif 3: Ethernet0, port, up\n"),
                      HasSubstr("\n  L3 interface|3|MAC 02:00:00:00:0a:01, VLAN 4094, VRF default, "
                                "MTU 9100|add Ethernet0, "),
                      HasSubstr("\nwho comes in by it\n  port|1|Ethernet0: its control 67 names "
                                "it|add Ethernet0, "),
                      HasSubstr("\n  virtual MAC|00:00:5e:00:01:09\n"),
                      HasSubstr("\n  address|10.0.0.1/24\n")));
}

TEST_F(Explain, APortChannelsNumberIsThatOfAllItsMembers)
{
    EXPECT_THAT(explained("iif 8"),
                AllOf(StartsWith("iif 8: PortChannel0001, port-channel, up\n"),
                      HasSubstr("\n  port|3|Ethernet8: its control 67 names it|add Ethernet8 to "
                                "PortChannel0001"),
                      HasSubstr("\n  port|4|Ethernet12: "), HasSubstr("\n  port|5|Ethernet16: "),
                      HasSubstr("\n  subinterface|PortChannel0001.20\n"),
                      HasSubstr("\n  ECMP group|200000|10.0.4.9 on Ethernet4, 10.0.8.9 on "
                                "PortChannel0001 and 10.0.36.9 on Ethernet36|route 10.60.0.0/16\n"),
                      HasSubstr("\n  route|10.60.0.0/16|VRF default: group 200000|route "
                                "10.60.0.0/16\n")));
}

TEST_F(Explain, AVlanInterfacesNumberIsInTheControlsOfItsVlan)
{
    EXPECT_THAT(explained("iif 9"),
                AllOf(StartsWith("iif 9: Vlan100, svi, up\n"),
                      HasSubstr("\n  VLAN|100|its controls name it|set up Vlan100, add Vlan100\n"),
                      HasSubstr("\n  virtual MAC|00:00:5e:00:01:08\n"),
                      HasSubstr("\n  private VLAN|101|its hosts are routed by VLAN 100\n")));
}

TEST_F(Explain, ATunnelsNumberHasItsInitiator)
{
    EXPECT_THAT(explained("iif 13"),
                AllOf(StartsWith("iif 13: MuxTunnel0, tunnel, up\n"),
                      HasSubstr("\n  tunnel initiator|1|"), HasSubstr("|tunnel MuxTunnel0\n")));
}

TEST_F(Explain, NumbersThatWereGivenUpOrWaitSayWhy)
{
    session->execute("del Ethernet0 keep");
    EXPECT_THAT(explained("iif 3"), StartsWith("iif 3: Ethernet0, port, kept\n"));
    session->execute("del Ethernet36");
    EXPECT_EQ(explained("iif 5"), "iif 5: held back; a destroyed interface has given it up, and it "
                                  "is handed out when no other is free\n");
    EXPECT_EQ(explained("iif 1"), "iif 1: reserved; the library hands it to no interface\n");
}

TEST_F(Explain, AVlanHasItsMembersItsInterfaceAndItsPair)
{
    EXPECT_THAT(explained("vlan 100"),
                AllOf(StartsWith("VLAN 100: Vlan100, a primary\n"),
                      HasSubstr("\n  VLAN|100|routed as interface 9 (Vlan100), VRF default, "),
                      HasSubstr("|set up Vlan100, add Vlan100\n"),
                      HasSubstr("\n  members|the CPU and Ethernet20\n"),
                      HasSubstr("\n  interface|Vlan100, svi, up\n"),
                      HasSubstr("\n  private VLAN|primary 100, secondary 101\n"),
                      HasSubstr("\n  station|4|virtual MAC of Vlan100 00:00:5e:00:01:08 in VLAN "
                                "100, takes IPv4 IPv6 ARP|add virtual MAC 00:00:5e:00:01:08 of "
                                "Vlan100\n")));
    EXPECT_THAT(explained("vlan 101"), StartsWith("VLAN 101: Vlan101, a secondary\n"));
}

TEST_F(Explain, TheVlanOfRoutedPortsHasThemAll)
{
    EXPECT_THAT(explained("vlan 4094"),
                AllOf(StartsWith("VLAN 4094: the VLAN of all routed ports and subinterfaces\n"),
                      HasSubstr("\n  L3 interface|3|Ethernet0: "),
                      HasSubstr("\n  translation|Ethernet4 VLAN 10|to interface 11 "
                                "(Ethernet4.10), VLAN 4094 from there on|add Ethernet4.10\n")));
}

TEST_F(Explain, StationsAreTheRouterMacAndVirtualMacs)
{
    EXPECT_THAT(explained("station 1"),
                AllOf(StartsWith("station 1: router MAC 02:00:00:00:0a:01\n"),
                      HasSubstr("|add router MAC 02:00:00:00:0a:01\n"),
                      HasSubstr("\n  L3 interface|8|PortChannel0001 has its MAC|")));
    EXPECT_THAT(explained("station 4"),
                AllOf(StartsWith("station 4: virtual MAC of Vlan100 00:00:5e:00:01:08\n"),
                      HasSubstr("\n  VLAN|100|routed as interface 9 (Vlan100), "),
                      HasSubstr("|add virtual MAC 00:00:5e:00:01:08 of Vlan100\n")));
}

TEST(ExplainCampus, AVirtualMacOfAPrimaryIsInItsSecondariesToo)
{
    rtifhal_test::reset_library();
    simswitch::Switch hardware;
    Session session(hardware);
    session.execute(std::string("up ") + RTIFHAL_SOURCE_DIR + "/examples/campus.json");
    const std::string text = session.execute("explain station 42").shown;
    EXPECT_THAT(text,
                StartsWith("station 42: virtual MAC of Vlan2000, mirrored into its secondary, "
                           "02:5a:00:00:00:01\n"));
    EXPECT_THAT(text, HasSubstr("\n  VLAN     2001  "));
}

TEST_F(Explain, APortHasItsVlansTranslationsNextHopsAndRules)
{
    EXPECT_THAT(explained("port 2"),
                AllOf(StartsWith("port 2: Ethernet4, comes in on interface 4 (Ethernet4)\n"),
                      HasSubstr("\n  VLAN|10|tagged member|add Ethernet4.10\n"),
                      HasSubstr("\n  VLAN|4094|untagged member|add Ethernet4 +7\n"),
                      HasSubstr("\n  translation|Ethernet4 VLAN 10|"),
                      HasSubstr("\n  egress|100034|10.4.10.9 on Ethernet4, "),
                      HasSubstr("\n  route|10.60.0.0/16|VRF default: group 200000|"),
                      HasSubstr("\n  field entry|120|group 1: left out of its list of action 32; "
                                "frames from it are not looked at|add Ethernet4 +7\n")));
    EXPECT_THAT(explained("port 3"), HasSubstr("\n  trunk|1|PortChannel0001: "));
    EXPECT_THAT(explained("port 6"), HasSubstr("group 1: in its list of action 32"));
}

TEST_F(Explain, AnEgressObjectHasItsWayOutAndItsRoutes)
{
    EXPECT_THAT(explained("egress 100034"),
                AllOf(StartsWith("egress 100034: 10.4.10.9 on Ethernet4\n"),
                      HasSubstr("|neighbor 10.4.10.9 of Ethernet4.10\n"),
                      HasSubstr("\n  L3 interface|11|Ethernet4.10: "),
                      HasSubstr("\n  port|2|Ethernet4, "),
                      HasSubstr("\n  route|10.4.10.9/32|VRF default: egress 100034|")));
    const std::string channel = explained("egress 100029");
    EXPECT_THAT(channel, HasSubstr("\n  trunk|1|PortChannel0001: "));
    EXPECT_THAT(channel, HasSubstr("\n  ECMP group|200000|"));
}

TEST_F(Explain, WhatThereIsTooMuchOfIsCounted)
{
    for (int host = 10; host < 40; ++host) {
        session->execute(fmt::format("neighbor add Ethernet0 10.0.0.{0} 02:00:00:00:01:{0}", host));
    }
    const std::string text = explained("iif 3");
    EXPECT_THAT(text, HasSubstr("\n  egress|…|and 20 more\n"));
    EXPECT_THAT(text, HasSubstr("\n  route|…|and 21 more\n"));
}

TEST_F(Explain, ChangesNothing)
{
    const std::uint64_t writes = hardware->chip.writes;
    const std::uint64_t calls = hardware->journal.calls_made();
    for (const char *line : {"iif 3", "vlan 4094", "station 1", "port 2", "egress 100034"}) {
        explained(line);
    }
    EXPECT_EQ(hardware->chip.writes, writes);
    EXPECT_EQ(hardware->journal.calls_made(), calls);
}

TEST_F(Explain, UnknownNumbersNameTheNearest)
{
    const auto refused = [this](const std::string &line) {
        try {
            explained(line);
        } catch (const lab::session::Impossible &error) {
            return std::string(error.what());
        }
        return std::string("was explained");
    };
    EXPECT_EQ(refused("iif 500"),
              "interface number 500 stands for nothing: the nearest is 13 (MuxTunnel0)");
    EXPECT_EQ(refused("vlan 77"),
              "VLAN 77 stands for nothing: the nearest are 20 and 100 (Vlan100)");
    EXPECT_EQ(refused("egress 5"),
              "egress object 5 stands for nothing: the nearest is 100000 (the CPU)");
    EXPECT_THAT(refused("station 900"),
                StartsWith("station 900 stands for nothing: the nearest is "));
    EXPECT_THAT(refused("port 200"), StartsWith("port 200 stands for nothing: the nearest is "));
}

TEST_F(Explain, WordsThatMakeNoSenseAreRefused)
{
    const auto refused = [this](const std::string &line) {
        try {
            explained(line);
        } catch (const lab::session::UsageError &error) {
            return std::string(error.what());
        }
        return std::string("was explained");
    };
    EXPECT_EQ(refused("vlna 5"), "unknown kind of number 'vlna': did you mean 'vlan'? (iif, vlan, "
                                 "station, port, egress)");
    EXPECT_EQ(refused("port 256"), "256 is no port: those are 0 to 255");
    EXPECT_EQ(refused("vlan 0"), "0 is no VLAN: those are 1 to 4095");
    EXPECT_EQ(refused("iif -1"), "\"-1\" is no interface number: those are 0 to 8191");
    EXPECT_EQ(refused("egress 99999999999"), "99999999999 is no egress object: those are from 0");
    EXPECT_EQ(refused("station 4294967295"), "4294967295 is no station: those are from 1");
    EXPECT_EQ(refused("iif"), "missing arguments: explain KIND N");
}

/** The command as a process. */
class ExplainCommand : public record_test::InFolder
{
};

TEST_F(ExplainCommand, ExplainsAfterBringingAConfigurationUp)
{
    const auto ran = rtif("explain vlan 100 examples/kinds.json --chip trident2");
    EXPECT_EQ(ran.code, 0);
    EXPECT_EQ(ran.err, "");
    EXPECT_EQ(ran.out, R"(VLAN 100: Vlan100

  OBJECT        ID   WHAT                                                                                              SINCE
what it is
  VLAN          100  routed as interface 6 (Vlan100), VRF default, IPv6 off, MPLS off, class 6, spanning tree group 1  set up Vlan100, add Vlan100
  members            the CPU and Ethernet16
  untagged           Ethernet16
  flood block        unknown multicast: the CPU
who holds it
  interface          Vlan100, svi, up
what depends on it
  L3 interface  6    Vlan100: MAC 02:00:00:00:0a:01, VLAN 100, MTU 1500                                                add Vlan100
  port          5    Ethernet16, untagged VLAN 100                                                                     set up Vlan100
)");
}

TEST_F(ExplainCommand, AfterARestartNobodyKnowsSinceWhichRequest)
{
    ASSERT_EQ(rtif("up examples/kinds.json --state kept").code, 0);
    const std::string before = rtif("check --state kept").out;
    const auto ran = rtif("explain iif 4 --state kept");
    EXPECT_EQ(ran.code, 0);
    EXPECT_EQ(ran.out, R"(iif 4: Ethernet4, port, up

  OBJECT          ID  WHAT                                                     SINCE
what it is
  L3 interface    4   MAC 02:00:00:00:0a:01, VLAN 4094, VRF default, MTU 9100  -
  ingress object  4   VRF default, reverse path off, class 64, flags 0x6       -
who comes in by it
  port            2   Ethernet4: its control 67 names it                       -
what depends on it
  subinterface        Ethernet4.10
  address             10.0.0.2/31

-: there from power-on, or written before a restart; the chip keeps its tables over one,
and not who wrote them
)");
    EXPECT_EQ(rtif("check --state kept").out, before);
}

TEST_F(ExplainCommand, ANumberThatStandsForNothingIsExitOne)
{
    const auto ran = rtif("explain egress 7 examples/kinds.json");
    EXPECT_EQ(ran.code, 1);
    EXPECT_EQ(ran.out, "");
    EXPECT_THAT(ran.err, StartsWith("egress object 7 stands for nothing: the nearest is 100000"));
}

TEST_F(ExplainCommand, WordsThatMakeNoSenseAreExitTwoBeforeAnythingRuns)
{
    EXPECT_EQ(rtif("explain bird 7 nowhere.json").err,
              "unknown kind of number 'bird' (iif, vlan, station, port, egress)\n");
    for (const char *words : {"bird 7 nowhere.json", "vlan x examples/kinds.json", "vlan 7",
                              "vlan 7 examples/kinds.json --state kept"}) {
        const auto ran = rtif(std::string("explain ") + words);
        EXPECT_EQ(ran.code, 2) << words;
        EXPECT_EQ(ran.out, "") << words;
        EXPECT_THAT(ran.err, Not("")) << words;
    }
    EXPECT_EQ(rtif("explain vlan 7 nowhere.json").code, 1);
    EXPECT_EQ(rtif("explain vlan 7 --state nowhere").code, 1);
}

TEST_F(ExplainCommand, AsJsonHasAllAuthors)
{
    const auto ran = rtif("explain vlan 100 examples/kinds.json --json");
    EXPECT_EQ(ran.code, 0);
    const auto object = nlohmann::json::parse(ran.out);
    EXPECT_EQ(object["found"], true);
    EXPECT_EQ(object["title"], "VLAN 100: Vlan100");
    EXPECT_EQ(object["sections"][0]["title"], "what it is");
    EXPECT_EQ(object["sections"][0]["objects"][0]["object"], "VLAN");
    EXPECT_EQ(object["sections"][0]["objects"][0]["id"], "100");
    EXPECT_EQ(object["sections"][0]["objects"][0]["since"],
              nlohmann::json({"set up Vlan100", "add Vlan100"}));
    const auto unknown = rtif("explain vlan 77 examples/kinds.json --json");
    EXPECT_EQ(unknown.code, 1);
    EXPECT_EQ(nlohmann::json::parse(unknown.out)["found"], false);
}

TEST_F(ExplainCommand, AScriptFailsWhereANumberStandsForNothing)
{
    write("a.rtif", "up examples/kinds.json\nexplain iif 3\nexplain iif 700\n");
    const auto ran = rtif("run a.rtif");
    EXPECT_EQ(ran.code, 1);
    EXPECT_THAT(ran.out, HasSubstr("iif 3: Ethernet0, port, up\n"));
    EXPECT_THAT(ran.err, HasSubstr("interface number 700 stands for nothing: the nearest is 9"));
}

} // namespace
