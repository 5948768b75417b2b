/*
 * chip_l3_test.cpp: L3 interfaces, L3 ingress objects and tunnel initiators.
 */
#include "chip/l3_ingresses.h"
#include "chip/tunnels.h"
#include "outcome_matchers.h"

namespace simswitch::chip
{

namespace
{

const L3Interface ROUTED{.vrf = 1, .mac = {0, 1, 2, 3, 4, 5}, .vlan = 4094, .mtu = 1500};

} // namespace

TEST(L3Interfaces, CreateThenGet)
{
    L3Interfaces interfaces(4096);
    EXPECT_THAT(interfaces.create(3, ROUTED), Done());
    L3Interface read;
    EXPECT_THAT(interfaces.get(3, read), Done());
    EXPECT_EQ(read, ROUTED);
}

TEST(L3Interfaces, TakenIdIsRefusedAndSetReplaces)
{
    L3Interfaces interfaces(4096);
    interfaces.create(3, ROUTED);
    EXPECT_THAT(interfaces.create(3, {}), Refused(-8, "L3 interface 3 exists already"));
    EXPECT_EQ(*interfaces.find(3), ROUTED);
    EXPECT_THAT(interfaces.set(3, {}), Done());
    EXPECT_EQ(*interfaces.find(3), L3Interface{});
}

TEST(L3Interfaces, IdsAre0To8191)
{
    L3Interfaces interfaces(4096);
    EXPECT_THAT(interfaces.create(0, ROUTED), Done());
    EXPECT_THAT(interfaces.create(8191, ROUTED), Done());
    EXPECT_THAT(interfaces.create(8192, ROUTED),
                Refused(-4, "L3 interface 8192 is not in 0..8191"));
    EXPECT_THAT(interfaces.set(-1, ROUTED), Refused(-4, "L3 interface -1 is not in 0..8191"));
}

TEST(L3Interfaces, VlanOutOfRangeIsRefused)
{
    L3Interfaces interfaces(4096);
    EXPECT_THAT(interfaces.create(3, {.vlan = 4096}), Refused(-4, "VLAN 4096 is not in 0..4095"));
    EXPECT_EQ(interfaces.size(), 0U);
}

TEST(L3Interfaces, FullTableRefusesNewButReplacesOld)
{
    L3Interfaces interfaces(1);
    interfaces.create(3, {});
    EXPECT_THAT(interfaces.create(4, {}), Refused(-6, "L3 interface table full: 1 of 1"));
    EXPECT_THAT(interfaces.set(4, {}), Refused(-6, "L3 interface table full: 1 of 1"));
    EXPECT_THAT(interfaces.set(3, ROUTED), Done());
}

TEST(L3Interfaces, UnknownIdIsRefusedAndRecordLeftAlone)
{
    L3Interfaces interfaces(1);
    L3Interface untouched = ROUTED;
    EXPECT_THAT(interfaces.get(5, untouched), Refused(-7, "L3 interface 5 does not exist"));
    EXPECT_THAT(interfaces.get(9000, untouched),
                Refused(-4, "L3 interface 9000 is not in 0..8191"));
    EXPECT_THAT(interfaces.remove(5), Refused(-7, "L3 interface 5 does not exist"));
    EXPECT_EQ(untouched, ROUTED);
}

TEST(L3Interfaces, AllIsInTheOrderOfIds)
{
    L3Interfaces interfaces(4096);
    for (int id : {700, 3, 41}) {
        interfaces.create(id, {});
    }
    std::vector<int> ids;
    for (const auto &[id, record] : interfaces.all()) {
        ids.push_back(id);
    }
    EXPECT_EQ(ids, (std::vector<int>{3, 41, 700}));
}

TEST(L3Ingresses, CreateSetRemove)
{
    L3Ingresses ingresses(4096);
    EXPECT_THAT(ingresses.create(3, {.vrf = 1}), Done());
    EXPECT_THAT(ingresses.create(3, {}), Refused(-8, "L3 ingress object 3 exists already"));
    EXPECT_THAT(ingresses.set(3, {.vrf = 2}), Done());
    EXPECT_EQ(ingresses.find(3)->vrf, 2);
    EXPECT_THAT(ingresses.remove(3), Done());
    EXPECT_THAT(ingresses.remove(3), Refused(-7, "L3 ingress object 3 does not exist"));
}

TEST(L3Ingresses, RangeAndSizeAreKept)
{
    L3Ingresses ingresses(1);
    EXPECT_THAT(ingresses.set(8192, {}), Refused(-4, "L3 ingress object 8192 is not in 0..8191"));
    ingresses.set(0, {});
    EXPECT_THAT(ingresses.set(1, {}), Refused(-6, "L3 ingress object table full: 1 of 1"));
}

TEST(Tunnels, BindingGivesTheInterfaceItsIndex)
{
    L3Interfaces interfaces(4096);
    Tunnels tunnels(512, interfaces);
    interfaces.create(3, {});
    EXPECT_THAT(tunnels.create(3, {.index = 9}), Done());
    EXPECT_EQ(interfaces.find(3)->tunnel, 9);
    EXPECT_THAT(tunnels.remove(3), Done());
    EXPECT_EQ(interfaces.find(3)->tunnel, 0);
}

TEST(Tunnels, Refusals)
{
    L3Interfaces interfaces(4096);
    Tunnels tunnels(1, interfaces);
    interfaces.create(3, {});
    interfaces.create(4, {});
    EXPECT_THAT(tunnels.remove(3), Refused(-7, "no tunnel initiator is bound to L3 interface 3"));
    EXPECT_THAT(tunnels.create(5, {.index = 1}), Refused(-7, "L3 interface 5 does not exist"));
    EXPECT_THAT(tunnels.create(3, {.index = 0}),
                Refused(-4, "tunnel index 0 is not in 1..2147483647"));
    tunnels.create(3, {.index = 1});
    EXPECT_THAT(tunnels.create(3, {.index = 2}),
                Refused(-8, "L3 interface 3 has a tunnel initiator already"));
    EXPECT_THAT(tunnels.create(4, {.index = 2}),
                Refused(-6, "tunnel initiator table full: 1 of 1"));
}

TEST(Tunnels, InitiatorOutlivesItsInterfaceAndCanStillBeRemoved)
{
    L3Interfaces interfaces(4096);
    Tunnels tunnels(1, interfaces);
    interfaces.create(3, {});
    tunnels.create(3, {.index = 1, .source_ip = 0x0a000001, .dest_ip = 0x0a000002});
    EXPECT_EQ(text(*tunnels.find(3)), "index 1 10.0.0.1 -> 10.0.0.2");
    interfaces.remove(3);
    EXPECT_THAT(tunnels.remove(3), Done());
    EXPECT_EQ(tunnels.size(), 0U);
}

} // namespace simswitch::chip
