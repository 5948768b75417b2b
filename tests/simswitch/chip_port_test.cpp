/*
 * chip_port_test.cpp: ports and switch controls.
 */
#include "chip/ports.h"
#include "chip/switch_controls.h"
#include "outcome_matchers.h"

namespace simswitch::chip
{

TEST(Ports, AtBootNothingIsSet)
{
    const Ports ports(Kind::trident);
    EXPECT_EQ(ports.get(5), (Port{.untagged_vlan = 1}));
    EXPECT_EQ(ports.control(5, PORT_CONTROL_INGRESS), 0);
    EXPECT_TRUE(ports.all().empty());
}

TEST(Ports, ControlsAreKeptByPort)
{
    Ports ports(Kind::trident);
    EXPECT_THAT(ports.set_control(5, PORT_CONTROL_INGRESS, 3), Done());
    EXPECT_THAT(ports.set_vlan_control(5, 2, 1), Done());
    EXPECT_EQ(ports.control(5, PORT_CONTROL_INGRESS), 3);
    EXPECT_EQ(ports.control(6, PORT_CONTROL_INGRESS), 0);
    EXPECT_EQ(ports.vlan_control(5, 2), 1);
    EXPECT_EQ(text(ports.get(5)), "untagged 1 discard 0 controls 67=3 vlan-controls 2=1");
}

TEST(Ports, BackAtBootValuesAPortIsNotListed)
{
    Ports ports(Kind::trident);
    ports.set_control(5, PORT_CONTROL_IP4, 1);
    ports.set_untagged_vlan(5, 4094);
    EXPECT_EQ(ports.all().size(), 1U);
    ports.set_control(5, PORT_CONTROL_IP4, 0);
    ports.set_untagged_vlan(5, 1);
    EXPECT_TRUE(ports.all().empty());
}

TEST(Ports, PortsAre0To255)
{
    Ports ports(Kind::trident);
    EXPECT_THAT(ports.set_control(255, PORT_CONTROL_IP4, 1), Done());
    const auto refused = Refused(-4, "port 256 is not in 0..255");
    EXPECT_THAT(ports.set_control(256, PORT_CONTROL_IP4, 1), refused);
    EXPECT_THAT(ports.set_vlan_control(256, 2, 1), refused);
    EXPECT_THAT(ports.set_untagged_vlan(256, 1), refused);
    EXPECT_THAT(ports.set_discard(256, 0), refused);
    EXPECT_THAT(ports.set_control(-1, PORT_CONTROL_IP4, 1),
                Refused(-4, "port -1 is not in 0..255"));
}

TEST(Ports, VxlanControlIsTrident2s)
{
    Ports trident(Kind::trident);
    Ports trident2(Kind::trident2);
    EXPECT_THAT(trident.set_control(5, PORT_CONTROL_VXLAN, 1),
                Refused(-16, "port control 187 is not available on a Trident"));
    EXPECT_THAT(trident2.set_control(5, PORT_CONTROL_VXLAN, 1), Done());
    EXPECT_THAT(trident2.set_control(5, 999, 1),
                Refused(-16, "port control 999 is not available on a Trident2"));
}

TEST(Ports, OtherArgumentsOutOfRange)
{
    Ports ports(Kind::trident);
    EXPECT_THAT(ports.set_untagged_vlan(5, 4096), Refused(-4, "VLAN 4096 is not in 1..4095"));
    EXPECT_THAT(ports.set_discard(5, 4), Refused(-4, "discard mode 4 is not in 0..3"));
    EXPECT_THAT(ports.set_vlan_control(5, 256, 1),
                Refused(-4, "VLAN control 256 is not in 0..255"));
}

TEST(SwitchControls, SetAndGet)
{
    SwitchControls controls;
    EXPECT_EQ(controls.get(230), 0);
    EXPECT_THAT(controls.set(230, 1), Done());
    EXPECT_EQ(controls.all(), (std::map<int, int>{{230, 1}}));
    controls.set(230, 0);
    EXPECT_TRUE(controls.all().empty());
}

TEST(SwitchControls, OutOfRangeIsRefused)
{
    SwitchControls controls;
    EXPECT_THAT(controls.set(-1, 1), Refused(-4, "switch control -1 is not in 0..1023"));
    EXPECT_THAT(controls.set(1024, 1), Refused(-4, "switch control 1024 is not in 0..1023"));
}

} // namespace simswitch::chip
