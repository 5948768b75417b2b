/*
 * session_private_vlan_test.cpp: which VLANs a session takes as a private-VLAN
 * pair: the same as the rows of a configuration.
 *
 * session_addresses_test.cpp has what a pair does.
 */
#include "config_text.h"
#include "session/complete.h"
#include "session_run.h"
#include "up_run.h"

#include <gtest/gtest.h>

#include <fmt/format.h>

#include <fstream>

namespace lab_test
{

namespace
{

using simswitch::fwm::PrivateVlan;

const std::string OWN_INTERFACE = "impossible: VLAN 100 has an interface of its own, and the "
                                  "primary's is to route for it: delete Vlan100 first";

using SessionPrivateVlan = SessionTest;

TEST_F(SessionPrivateVlan, SecondaryHasNoInterfaceOfItsOwn)
{
    up();
    EXPECT_EQ(problem("pvlan add 101 100"), OWN_INTERFACE);
    EXPECT_EQ(hardware.host.vlans.role(100), PrivateVlan::none);
    EXPECT_EQ(hardware.host.vlans.role(101), PrivateVlan::none);
    run_all({"del Vlan100 keep"});
    EXPECT_EQ(problem("pvlan add 101 100"), OWN_INTERFACE);
    run_all({"del Vlan100", "pvlan add 101 100"});
    EXPECT_EQ(hardware.host.vlans.role(100), PrivateVlan::secondary);
}

TEST_F(SessionPrivateVlan, InterfaceOfASecondaryIsNotAdded)
{
    up();
    run_all({"del Vlan100", "pvlan add 101 100"});
    EXPECT_EQ(problem("add Vlan100"),
              "impossible: VLAN 100 is a secondary of VLAN 101, whose interface routes for it: end "
              "the pair first");
    expect_met({"interface Vlan100 state != up", "vlan 100 iif = 0"});
    run_all({"pvlan del 101 100", "add Vlan100"});
    expect_met({"interface Vlan100 state = up"});
}

TEST_F(SessionPrivateVlan, InterfaceOfAPrimaryIsAddedAndProgrammedAgain)
{
    up();
    run_all({"pvlan add 100 101", "add Vlan100", "del Vlan100", "add Vlan100"});
    expect_met({"interface Vlan100 state = up", "vlan 101 interface = Vlan100"});
}

TEST_F(SessionPrivateVlan, OnlyVlansThatAreTakenAreOfferedAndKnown)
{
    const Folder folder;
    std::ofstream(folder.path / "leaf.json")
        << R"({"VLAN": {"Vlan10": {}, "Vlan40": {"vlanid": 41}, "Vlan07": {}, "\u001b[31m": {}}})";
    lab::session::Session own{hardware, {}, folder.path};
    own.execute("up leaf.json");
    EXPECT_EQ(lab::session::complete(own.state(), "pvlan add ").words,
              std::vector<std::string>{"Vlan10"});
    for (const std::string word : {"40", "Vlan40", "Vlan07", "0"}) {
        try {
            own.execute("pvlan add 10 " + word);
            ADD_FAILURE() << word;
        } catch (const lab::session::UsageError &error) {
            EXPECT_EQ(std::string(error.what()).find(fmt::format("unknown VLAN '{}'", word)), 0U)
                << error.what();
            EXPECT_EQ(std::string(error.what()).find("mean 'Vlan40'"), std::string::npos);
        }
    }
}

/** A pair beside the pair 10, 11; VLANs 10 and 20 have interfaces. */
struct PairCase {
    int primary;
    int secondary;
    bool taken;
};

class SessionPairs : public SessionTest, public ::testing::WithParamInterface<PairCase>
{
protected:
    static std::string file(const std::string &more)
    {
        return R"({"VLAN": {"Vlan10": {}, "Vlan11": {}, "Vlan12": {}, "Vlan13": {}, "Vlan20": {}},
            "VLAN_INTERFACE": {"Vlan10": {}, "Vlan20": {}}, "PVLAN": {"Vlan10|Vlan11": {})" +
               more + "}}";
    }

    Folder folder;
};

TEST_P(SessionPairs, AreRefusedWhereAConfigurationsAre)
{
    const auto [primary, secondary, taken] = GetParam();
    const auto config = read(file(fmt::format(", \"Vlan{}|Vlan{}\": {{}}", primary, secondary)));
    EXPECT_EQ(config.skipped.empty(), taken);
    EXPECT_EQ(config.pvlan_pairs.size(), taken ? 2U : 1U);

    lab::session::Session own{hardware, {}, folder.path};
    std::ofstream(folder.path / "leaf.json") << file("");
    own.execute("up leaf.json");
    const std::string line = fmt::format("pvlan add {} {}", primary, secondary);
    if (taken) {
        EXPECT_FALSE(own.execute(line).refused);
    } else {
        EXPECT_THROW(own.execute(line), lab::session::Impossible);
    }
    EXPECT_EQ(hardware.host.vlans.role(secondary) == PrivateVlan::secondary,
              taken || secondary == 11);
}

INSTANTIATE_TEST_SUITE_P(All, SessionPairs,
                         ::testing::Values(PairCase{10, 12, true}, PairCase{20, 12, true},
                                           PairCase{12, 13, true}, PairCase{12, 12, false},
                                           PairCase{20, 11, false}, PairCase{11, 12, false},
                                           PairCase{12, 10, false}, PairCase{12, 20, false}));

} // namespace

} // namespace lab_test
