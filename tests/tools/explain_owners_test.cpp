/*
 * explain_owners_test.cpp: whose the MACs and pairs are that several interfaces
 * share, after a restart too, and what is said of objects that there aren't.
 */
#include "record_run.h"

#include "packet/names.h"
#include "packet/objects.h"
#include "session/session.h"
#include "support/load_time_state.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <regex>

namespace
{

using lab::session::Session;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

/** Compares the owner of each station with the one that the library's record has. */
void expect_true_owners(const std::string &example)
{
    rtifhal_test::reset_library();
    simswitch::Switch hardware;
    Session session(hardware);
    session.execute(std::string("up ") + RTIFHAL_SOURCE_DIR + "/examples/" + example + " open");
    const lab::packet::Names names(session.state());
    std::istringstream table(session.execute("show stations").shown);
    const std::regex line(R"(^ *(\d+) .* (\S+)  +(virtual MAC|mirrored) *$)");
    std::smatch parts;
    std::size_t seen = 0;
    for (std::string text; std::getline(table, text);) {
        if (std::regex_match(text, parts, line)) {
            ++seen;
            EXPECT_THAT(lab::packet::object_text(names, "station", parts[1]),
                        StartsWith(fmt::format("virtual MAC of {} ", parts[2].str())));
        }
    }
    EXPECT_GE(seen, 20U);
}

TEST(ExplainOwners, AMacThatManyShareIsTheInterfacesOfItsVlan)
{
    expect_true_owners("everything.json");
    expect_true_owners("campus.json");
}

/** rtif in a folder with examples/everything.json kept in "es". */
class ExplainKept : public record_test::InFolder
{
protected:
    ExplainKept() { kept = rtif("up examples/everything.json --state es").code; }

    int kept = -1;
};

TEST_F(ExplainKept, AVirtualMacHasTheOwnerThatTheConfigurationSays)
{
    ASSERT_EQ(kept, 0);
    EXPECT_THAT(rtif("explain station 2 --state es").out,
                StartsWith("station 2: virtual MAC of Ethernet0 00:00:5e:00:01:04\n"));
    EXPECT_THAT(rtif("explain station 3 --state es").out,
                StartsWith("station 3: virtual MAC of PortChannel1 00:00:5e:00:01:05\n"));
    EXPECT_THAT(rtif("explain station 8 --state es").out,
                AllOf(StartsWith("station 8: virtual MAC of Vlan103 02:5a:00:00:0e:01\n"),
                      HasSubstr("\n  address       10.2.103.1\n")));
    EXPECT_THAT(rtif("explain station 14 --state es").out,
                StartsWith("station 14: virtual MAC of Vlan200, mirrored into its secondary, "));
}

TEST_F(ExplainKept, StationsAreOwnedAsBeforeTheRestart)
{
    for (int station = 1; station <= 21; station += 4) {
        const auto first_line = [](const std::string &text) {
            return text.substr(0, text.find('\n'));
        };
        const std::string before = first_line(
            rtif(fmt::format("explain station {} examples/everything.json", station)).out);
        EXPECT_THAT(before, StartsWith(fmt::format("station {}: ", station)));
        EXPECT_EQ(first_line(rtif(fmt::format("explain station {} --state es", station)).out),
                  before);
    }
}

TEST_F(ExplainKept, APairIsThereWhereTheChipHasIt)
{
    EXPECT_THAT(rtif("explain vlan 202 --state es").out,
                AllOf(HasSubstr("\n  private VLAN       primary 200, secondary 202"),
                      HasSubstr("virtual MAC of Vlan200 02:5a:00:00:0e:01 in VLAN 202")));
    EXPECT_THAT(rtif("explain vlan 103 --state es").out, Not(HasSubstr("private VLAN")));
}

TEST_F(ExplainKept, AnInterfaceHasItsAddressesAndVirtualMacs)
{
    const auto depends = [this](const std::string &where) {
        const auto object_of = nlohmann::json::parse(rtif("explain iif 25 --json " + where).out);
        nlohmann::json found = nlohmann::json::array();
        for (const auto &section : object_of["sections"]) {
            for (const auto &object : section["objects"]) {
                if (object["object"] == "address" || object["object"] == "virtual MAC") {
                    found.push_back(object);
                }
            }
        }
        return found;
    };
    const auto before = depends("examples/everything.json");
    EXPECT_GE(before.size(), 2U);
    EXPECT_EQ(depends("--state es"), before);
}

class ExplainMissing : public record_test::InFolder
{
};

TEST_F(ExplainMissing, AnIngressObjectThatWasNotCreatedHoldsNothing)
{
    write("s.rtif", "fail rtifhal_bcm_l3_ingress_create 2 -6\nup examples/kinds.json\n"
                    "expect message \"bcm_l3_ing_create(10100000) failed\"\n"
                    "explain port 2\nexplain iif 4\n");
    const std::string out = rtif("run s.rtif").out;
    EXPECT_THAT(out, Not(HasSubstr("who holds it\n  ingress object")));
    EXPECT_THAT(out, HasSubstr("who holds it\n  port control  67                 names 4; there is "
                               "no such ingress object"));
    EXPECT_THAT(out, HasSubstr("missing: the chip has the L3 interface alone"));
}

TEST_F(ExplainMissing, AnInterfaceThatWasRefusedHasFailed)
{
    write("s.rtif", "fail rtifhal_bcm_l3_intf_create 4 -6\nup examples/kinds.json\n"
                    "expect message \"itf create(100) failed\"\n"
                    "explain vlan 100\n");
    EXPECT_THAT(rtif("run s.rtif").out, HasSubstr("Vlan100, svi, failed\n"));
    write("t.rtif", "up examples/kinds.json\ndel Vlan100\nexplain vlan 100\n");
    EXPECT_THAT(rtif("run t.rtif").out, HasSubstr("Vlan100, svi, down\n"));
}

TEST_F(ExplainMissing, AllPortsOfAVlanAreCounted)
{
    const std::string out = rtif("explain vlan 1 examples/packets.json").out;
    rtifhal_test::reset_library();
    const simswitch::Switch hardware;
    const auto *vlan = hardware.chip.vlans.find(1);
    ASSERT_NE(vlan, nullptr);
    std::size_t members = 0;
    for (int port = 0; port <= simswitch::chip::LAST_PORT; ++port) {
        members += vlan->members.has(port) ? 1U : 0U;
    }
    EXPECT_THAT(out, HasSubstr(fmt::format("the CPU, Ethernet0, Ethernet4, Ethernet8 and {} more "
                                           "ports",
                                           members - 4)));
}

TEST_F(ExplainMissing, AGroupIsExplainedWithItsMembersAndRoutes)
{
    const auto ran = rtif("explain egress 200000 examples/packets.json");
    EXPECT_EQ(ran.code, 0);
    EXPECT_THAT(ran.out,
                AllOf(StartsWith("egress 200000: an ECMP group of 3 paths\n"),
                      HasSubstr("\n  egress      100029        10.0.8.9 on PortChannel0001"),
                      HasSubstr("\n  route       10.60.0.0/16  VRF default: group 200000")));
}

TEST_F(ExplainMissing, ABlackHoleSaysSo)
{
    EXPECT_THAT(rtif("explain egress 100039 examples/packets.json").out,
                AllOf(StartsWith("egress 100039: black hole\n"),
                      HasSubstr("\n  egress  100039        black hole  "),
                      Not(HasSubstr("interface 0"))));
}

TEST_F(ExplainMissing, ANameInPlaceOfANumberIsToldTheNumber)
{
    EXPECT_EQ(rtif("explain vlan Vlan100 examples/kinds.json").err,
              "\"Vlan100\" is no VLAN: those are 1 to 4095; a number is wanted, here 100\n");
    EXPECT_EQ(rtif("explain port Ethernet4 examples/kinds.json").err,
              "\"Ethernet4\" is no port: those are 0 to 255; a number is wanted, not a name\n");
    EXPECT_EQ(rtif("explain port 200 examples/packets.json").err,
              "port 200 stands for nothing: the nearest is 12 (Ethernet44); the chip takes 0 to "
              "255\n");
}

TEST_F(ExplainMissing, HelpTellsThatMoreIsOpenThanOfUp)
{
    EXPECT_THAT(rtif("explain --help").out, HasSubstr("not as `rtif up`"));
}

} // namespace
