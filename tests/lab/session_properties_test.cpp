/*
 * session_properties_test.cpp: setting and reading properties in a session.
 * examples/changes.rtif walks through all of them on each kind of interface.
 */
#include "session_run.h"

#include "session/properties.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace lab_test
{

namespace
{

using lab::session::properties;
using lab::session::ValueKind;

using SessionProperties = SessionTest;
using SessionPropertiesOnTrident2 = SessionOnTrident2Test;

const std::vector<std::string> INTERFACES = {"Ethernet0",    "PortChannel0001",    "Vlan100",
                                             "Ethernet4.10", "PortChannel0001.20", "MuxTunnel0"};

/** Values that a property can have; the first is none that an interface has from the start. */
std::vector<std::string> values_of(const lab::session::Property &property)
{
    switch (property.kind) {
    case ValueKind::on_off:
        return {"on", "off", "on"};
    case ValueKind::reverse_path:
        return {"strict", "loose", "off"};
    case ValueKind::number:
        break;
    }
    return {std::to_string(property.last), std::to_string(property.first), "700"};
}

TEST_F(SessionProperties, WhatIsSetIsReadBackOnEachKindOfInterface)
{
    up();
    for (const std::string &name : INTERFACES) {
        for (const auto &property : properties()) {
            for (const std::string &value : values_of(property)) {
                const std::string about = fmt::format("{} {}", name, property.name);
                run_all({fmt::format("set {} {}", about, value)});
                if (property.readable) {
                    EXPECT_EQ(run("get " + about).summary, value) << about;
                }
            }
        }
    }
}

TEST_F(SessionProperties, EachKindHasItsSetter)
{
    up();
    const std::vector<std::pair<std::string, std::string>> setters = {
        {"Ethernet0", "rtifhal_set_kelvo_l3_property_l3int"},
        {"MuxTunnel0", "rtifhal_set_kelvo_l3_property_l3tun"}};
    for (const auto &[name, setter] : setters) {
        run_all({"set " + name + " mtu 4000"});
        EXPECT_NE(run("show calls").shown.find(setter), std::string::npos) << name;
        expect_met({"interface " + name + " mtu = 4000"});
    }
    run_all({"set Vlan100 vrf 4"});
    EXPECT_NE(run("show calls")
                  .shown.find("rtifhal_set_kelvo_l3_property_svi: Get Miss Sup "
                              "Flags(100) : 400230 type = 3"),
              std::string::npos)
        << run("show calls").shown;
    run_all({"set PortChannel0001 vrf 4"});
    expect_met({"message \"L3PC member - 3\"", "message \"L3PC member - 4\""});
}

TEST_F(SessionProperties, TheMtuOfAVlanInterfaceProgramsAllOfItAgain)
{
    up();
    run_all({"set Vlan100 mtu 9000"});
    expect_met({"interface Vlan100 mtu = 9000", "iif Vlan100 = 6",
                "message \"Begin rtifhal_trident_svi_add for vlan 100\""});
}

TEST_F(SessionProperties, APropertyOfOneThatIsDownWaitsForItsAdd)
{
    up();
    run_all({"del Ethernet0 keep"});
    const auto outcome = run("set Ethernet0 vrf 7");
    EXPECT_EQ(outcome.summary, "Ethernet0 is not up: it has this when it is added");
    EXPECT_FALSE(outcome.asked);
    run_all({"add Ethernet0"});
    expect_met({"ingress Ethernet0 vrf = 7"});
    run_all({"del Ethernet0", "set Ethernet0 mtu 3000", "add Ethernet0"});
    expect_met({"interface Ethernet0 mtu = 3000", "ingress Ethernet0 vrf = 7"});
}

TEST_F(SessionProperties, ALabelOfOneThatIsDownWaitsForItsAdd)
{
    up();
    run_all({"del Ethernet0", "set Ethernet0 acl-label 9"});
    expect_met({"code = 0", "message \"failed to get l3_pd from if_index 10000000\""});
    run_all({"add Ethernet0"});
    expect_met({"ingress Ethernet0 class = 73"});
}

TEST_F(SessionProperties, AValueThatAPropertyCantHaveIsRefused)
{
    up();
    EXPECT_EQ(problem("set Ethernet0 mtu 67"), "usage: mtu is a number from 68 to 9216, not '67'");
    EXPECT_EQ(problem("set Ethernet0 mtu 0x100"),
              "usage: mtu is a number from 68 to 9216, not '0x100'");
    EXPECT_EQ(problem("set Ethernet0 vrf 65536"),
              "usage: vrf is a number from 0 to 65535, not '65536'");
    EXPECT_EQ(problem("set Ethernet0 ipv4 1"), "usage: ipv4 is on or off, not '1'");
    EXPECT_EQ(problem("set Ethernet0 urpf on"), "usage: urpf is strict, loose or off, not 'on'");
    EXPECT_EQ(problem("set Ethernet0 urpf strikt"),
              "usage: urpf is strict, loose or off, not 'strikt': did you mean 'strict'?");
    EXPECT_EQ(problem("set Ethernet0 ipv4 onn"),
              "usage: ipv4 is on or off, not 'onn': did you mean 'on'?");
    EXPECT_EQ(problem("set Ethernet0 ipv4-multicats on"),
              "usage: unknown property 'ipv4-multicats': did you mean 'ipv4-multicast'?");
}

TEST_F(SessionProperties, WhatTheLibraryHasNoIdentifierForCantBeRead)
{
    up();
    for (const std::string name : {"mtu", "mpls", "acl-label"}) {
        EXPECT_EQ(problem("get Ethernet0 " + name),
                  "usage: " + name +
                      " can't be read: the library has no identifier to read it "
                      "by; 'show' has what the chip holds");
    }
    EXPECT_EQ(problem("get Ethernet0 banana"), "usage: unknown property 'banana'");
}

TEST_F(SessionPropertiesOnTrident2, FamiliesAndTheIngressFlagAreInTheIngressObject)
{
    up();
    expect_met({"ingress Ethernet0 flags = 0x486"});
    run_all({"set Ethernet0 ipv6 on"});
    expect_met({"ingress Ethernet0 flags = 0x406"});
    run_all({"set Ethernet0 ipv4 off"});
    expect_met({"ingress Ethernet0 flags = 0x426"});
    run_all({"set Ethernet0 ingress-flag on"});
    expect_met({"ingress Ethernet0 flags = 0x8426"});
}

TEST_F(SessionProperties, APortRoutesWhatItsSubinterfacesRoute)
{
    up();
    run_all({"set Ethernet4 ipv4 off"});
    expect_met({"port Ethernet4 ipv4 = 1"});
    run_all({"set Ethernet4.10 ipv4 off", "set Ethernet4 ipv4 off"});
    expect_met({"port Ethernet4 ipv4 = 0"});
}

} // namespace

} // namespace lab_test
