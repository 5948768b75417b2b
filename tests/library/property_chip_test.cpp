/*
 * property_chip_test.cpp: the setters through the chip: an interface whose
 * property was changed while it was up stands in the chip as one that came up
 * with that property, for every kind of interface and every property. Where a
 * setter writes other things than the add, the table of exceptions says what
 * the chip then holds. The same for a new label, and for what stops routing.
 *
 * The calls that lead there are in the other property_*_test.cpp files.
 */
#include "support/property_kinds.h"

#include <algorithm>
#include <fmt/format.h>
#include <optional>
#include <ostream>
#include <tuple>

namespace rtifhal_test::property_chip
{

namespace
{

using namespace property_kinds;

using Properties = l3lif_pi_ctxt;

/** IPv4 alone, VRF 5, MTU 1500; a case changes it before the add and after it. */
Properties ip4_alone()
{
    Properties properties = {};
    properties.ipv4_en = 1;
    properties.vrf = 5;
    properties.mtu = 1500;
    return properties;
}

void as_it_is(Properties &) {}

void ip6_alone(Properties &properties)
{
    properties.ipv4_en = 0;
    properties.ipv6_en = 1;
    properties.ipv6_vrf = 9;
}

/** A property that changes while the interface is up. */
struct Change {
    std::string name;
    void (*before)(Properties &); ///< what differs from ip4_alone() at the add
    void (*change)(Properties &); ///< what changes then
    std::uint32_t property;       ///< how an SVI is told
    std::uint32_t value;
    Held shows;               ///< what the objects then hold, among others
    Held shows_on_trident2{}; ///< what those of a Trident2 hold besides
};

// The MTU has no number of its own: an SVI takes it along with any other property, here the
// word 7, which changes nothing by itself.
const std::vector<Change> CHANGES = {
    {"Nothing", as_it_is, as_it_is, 7, 0, {{"ingress vrf", 5}}, {{"ingress flags", 0x486}}},
    {"Ipv4Off",
     as_it_is,
     [](Properties &p) { p.ipv4_en = 0; },
     1,
     0,
     {{"ingress vrf", 0}, {"interface vrf", 5}},
     {{"ingress flags", 0x4A6}}},
    {"Ipv4On",
     [](Properties &p) { p.ipv4_en = 0; },
     [](Properties &p) { p.ipv4_en = 1; },
     1,
     1,
     {{"ingress vrf", 5}},
     {{"ingress flags", 0x486}}},
    {"Ipv4MulticastOn",
     as_it_is,
     [](Properties &p) { p.ipv4_mc_en = 1; },
     2,
     1,
     {{"ingress multicast", 1}}},
    {"Ipv4MulticastOff",
     [](Properties &p) { p.ipv4_mc_en = 1; },
     [](Properties &p) { p.ipv4_mc_en = 0; },
     2,
     0,
     {{"ingress multicast", 0}}},
    {"Vrf",
     as_it_is,
     [](Properties &p) { p.vrf = 7; },
     3,
     7,
     {{"ingress vrf", 7}, {"interface vrf", 7}}},
    {"VrfZero",
     as_it_is,
     [](Properties &p) { p.vrf = 0; },
     3,
     0,
     {{"ingress vrf", 1}, {"interface vrf", 1}}},
    {"VrfBesideIpv6Alone",
     ip6_alone,
     [](Properties &p) { p.vrf = 7; },
     3,
     7,
     {{"ingress vrf", 9}, {"interface vrf", 7}}},
    {"UrpfStrict", as_it_is, [](Properties &p) { p.urpf_mode = 3; }, 4, 3, {{"ingress urpf", 2}}},
    {"UrpfLoose", as_it_is, [](Properties &p) { p.urpf_mode = 2; }, 4, 2, {{"ingress urpf", 1}}},
    {"UrpfOff",
     [](Properties &p) { p.urpf_mode = 3; },
     [](Properties &p) { p.urpf_mode = 1; },
     4,
     1,
     {{"ingress urpf", 0}}},
    {"FlagWordOn",
     as_it_is,
     [](Properties &p) { p.ingress_flag_word = 1; },
     5,
     1,
     {},
     {{"ingress flags", 0x8486}}},
    {"FlagWordOff",
     [](Properties &p) { p.ingress_flag_word = 1; },
     [](Properties &p) { p.ingress_flag_word = 0; },
     5,
     0,
     {},
     {{"ingress flags", 0x486}}},
    {"Ipv6On",
     as_it_is,
     [](Properties &p) { p.ipv6_en = 1; },
     6,
     1,
     {{"ingress vrf", 5}},
     {{"ingress flags", 0x406}}},
    {"Ipv6Off",
     [](Properties &p) { p.ipv6_en = 1; },
     [](Properties &p) { p.ipv6_en = 0; },
     6,
     0,
     {},
     {{"ingress flags", 0x486}}},
    {"Ipv6Vrf",
     ip6_alone,
     [](Properties &p) { p.ipv6_vrf = 11; },
     9,
     11,
     {{"ingress vrf", 11}, {"interface vrf", 5}}},
    {"Ipv6VrfBesideIpv4",
     [](Properties &p) { p.ipv6_en = 1; },
     [](Properties &p) { p.ipv6_vrf = 11; },
     9,
     11,
     {{"ingress vrf", 5}}},
    {"ClassOn",
     as_it_is,
     [](Properties &p) { p.class_high_bit = 1; },
     13,
     1,
     {{"ingress class", 192}}},
    {"ClassOff",
     [](Properties &p) { p.class_high_bit = 1; },
     [](Properties &p) { p.class_high_bit = 0; },
     13,
     0,
     {{"ingress class", 64}}},
    {"WaitingLabel",
     as_it_is,
     [](Properties &p) { p.acl_qos_label_pending = 0x21; },
     7,
     0,
     {{"ingress class", 97}}},
    {"Mtu", as_it_is, [](Properties &p) { p.mtu = 9000; }, 7, 0, {{"interface mtu", 9000}}},
    {"MtuZero",
     [](Properties &p) { p.mtu = 9000; },
     [](Properties &p) { p.mtu = 0; },
     7,
     0,
     {{"interface mtu", 1500}}},
    {"MplsOn", as_it_is, [](Properties &p) { p.mpls_en = 1; }, 18, 1, {}},
    {"MplsOff",
     [](Properties &p) { p.mpls_en = 1; },
     [](Properties &p) { p.mpls_en = 0; },
     18,
     0,
     {}},
    {"MplsWordTwo", as_it_is, [](Properties &p) { p.mpls_en = 2; }, 18, 2, {}},
};

/** The name stands for the whole in lists of tests. */
void PrintTo(const Change &change, std::ostream *stream)
{
    *stream << change.name;
}

/** A field that a setter leaves otherwise than an add. */
struct Exception {
    IfKind kind;
    std::optional<Kind> chip;         ///< nothing: both
    std::vector<std::string> changes; ///< the changes after which it is so
    std::string field;
    std::uint32_t value; ///< what the chip holds after the setter
};

std::vector<std::string> all_but(const std::vector<std::string> &names)
{
    std::vector<std::string> rest;
    for (const Change &change : CHANGES) {
        if (std::ranges::find(names, change.name) == names.end()) {
            rest.push_back(change.name);
        }
    }
    return rest;
}

const std::vector<Exception> EXCEPTIONS = {
    // The add of a port opens IPv4 unicast and multicast whatever its properties say and says
    // nothing of IPv6, whose controls are off in a new chip. The setter writes all of them, each
    // from its property. (The add of a port-channel's member follows the properties as well.)
    {IfKind::port, {}, {"Ipv4Off", "VrfBesideIpv6Alone", "Ipv6Vrf"}, "port 5 control 8", 0},
    {IfKind::port, {}, all_but({"Ipv4MulticastOn"}), "port 5 control 10", 0},
    {IfKind::port,
     {},
     {"VrfBesideIpv6Alone", "Ipv6On", "Ipv6Vrf", "Ipv6VrfBesideIpv4"},
     "port 5 control 9",
     1},
    // The add hands the word for MPLS on as it is; for the setter only 1 is on.
    {IfKind::port, {}, {"MplsWordTwo"}, "port 5 control 14", 0},

    // Flags of the VLAN that no add of an SVI writes: 0x4000, and 0x200, which the VLAN had at
    // first. The setter takes any value but 0 for on. The add's own 0x400000 stays in both.
    {IfKind::svi, {}, {"FlagWordOn"}, "vlan 100 flags", 0x404A30},
    {IfKind::svi, {}, {"MplsOn", "MplsWordTwo"}, "vlan 100 flags", 0x400830},

    // The add of a tunnel forces IPv4 on; the setter goes by the property.
    {IfKind::tunnel, {}, {"Ipv4Off"}, "ingress vrf", 0},
    {IfKind::tunnel, Kind::trident2, {"Ipv4Off"}, "ingress flags", 0x4A6},
};

/** The same as a fresh add, but for the exceptions. */
Held with_exceptions(Held fresh, IfKind kind, Kind chip, const std::string &change)
{
    for (const Exception &exception : EXCEPTIONS) {
        if (exception.kind != kind || exception.chip.value_or(chip) != chip ||
            std::ranges::find(exception.changes, change) == exception.changes.end()) {
            continue;
        }
        EXPECT_NE(fresh.at(exception.field), exception.value)
            << exception.field << " is no exception";
        fresh[exception.field] = exception.value;
    }
    return fresh;
}

/** Lines "field: expected, seen" of the fields that differ. */
std::string differences(const Held &expected, const Held &seen)
{
    std::string text;
    const auto value = [](const Held &held, const std::string &field) {
        const auto found = held.find(field);
        return found == held.end() ? std::string("missing") : fmt::format("{:#x}", found->second);
    };
    Held fields = expected;
    fields.insert(seen.begin(), seen.end());
    for (const auto &[field, unused] : fields) {
        if (value(expected, field) != value(seen, field)) {
            text += fmt::format("{}: {}, {}\n", field, value(expected, field), value(seen, field));
        }
    }
    return text;
}

using Row = std::tuple<IfKind, Kind, Change>;

class PropertyThroughTheChip : public ::testing::TestWithParam<Row>
{
protected:
    IfKind kind() const { return std::get<0>(GetParam()); }
    Kind chip() const { return std::get<1>(GetParam()); }
    const Change &change() const { return std::get<2>(GetParam()); }
    Properties before() const
    {
        Properties properties = ip4_alone();
        change().before(properties);
        return properties;
    }
    /** What the layer above does: the property first, then the setter. */
    int changed(Routed &routed) const
    {
        // An SVI's setter stores the class itself.
        if (kind() != IfKind::svi || change().property != RTIFHAL_PROP_CLASS_HIGH) {
            change().change(routed.properties());
        }
        return routed.set(change().property, change().value);
    }
    /** A new switch, on which the interface comes up with the property. */
    Held fresh() const
    {
        Properties properties = before();
        change().change(properties);
        return Routed(kind(), chip(), properties).held();
    }
    /** The interface comes up without it and is changed then. */
    Held set_afterwards() const
    {
        Routed routed(kind(), chip(), before());
        EXPECT_EQ(changed(routed), 0);
        return routed.held();
    }
};

/** The same on subinterfaces of a port, whose properties stand in the objects alone. */
class PropertyInTheObjects : public PropertyThroughTheChip
{
};

std::string row_name(const ::testing::TestParamInfo<Row> &info)
{
    const auto &[kind, chip, change] = info.param;
    return name_of(kind) + (chip == Kind::trident2 ? "Trident2" : "Trident") + change.name;
}

const auto BOTH_CHIPS = ::testing::Values(Kind::trident, Kind::trident2);

} // namespace

TEST_P(PropertyThroughTheChip, SetterLeavesWhatAFreshAddLeaves)
{
    const Held expected = with_exceptions(fresh(), kind(), chip(), change().name);
    EXPECT_EQ(differences(expected, set_afterwards()), "");
}

TEST_P(PropertyThroughTheChip, SecondSetChangesNothing)
{
    Routed routed(kind(), chip(), before());
    ASSERT_EQ(changed(routed), 0);
    const Held once = routed.held();
    ASSERT_EQ(changed(routed), 0);
    EXPECT_EQ(differences(once, routed.held()), "");
}

TEST_P(PropertyInTheObjects, ShowsAsThePropertySays)
{
    const Held held = set_afterwards();
    Held expected = held;
    for (const auto &[field, value] : change().shows) {
        expected[field] = value;
    }
    if (chip() == Kind::trident2) {
        for (const auto &[field, value] : change().shows_on_trident2) {
            expected[field] = value;
        }
    } else {
        expected["ingress flags"] = 0x6;
    }
    EXPECT_EQ(differences(expected, held), "");
}

INSTANTIATE_TEST_SUITE_P(Each, PropertyThroughTheChip,
                         ::testing::Combine(::testing::Values(IfKind::port, IfKind::port_channel,
                                                              IfKind::svi, IfKind::port_sub,
                                                              IfKind::channel_sub, IfKind::tunnel),
                                            BOTH_CHIPS, ::testing::ValuesIn(CHANGES)),
                         row_name);
INSTANTIATE_TEST_SUITE_P(Each, PropertyInTheObjects,
                         ::testing::Combine(::testing::Values(IfKind::port_sub), BOTH_CHIPS,
                                            ::testing::ValuesIn(CHANGES)),
                         row_name);

/** What no setter takes: a label that comes while the interface is up, and the end of routing. */
class KindThroughTheChip : public ::testing::TestWithParam<std::tuple<IfKind, Kind>>
{
};

INSTANTIATE_TEST_SUITE_P(Each, KindThroughTheChip,
                         ::testing::Combine(::testing::Values(IfKind::port, IfKind::port_channel,
                                                              IfKind::svi, IfKind::port_sub,
                                                              IfKind::channel_sub, IfKind::tunnel),
                                            BOTH_CHIPS));

TEST_P(KindThroughTheChip, DisableChangesTheFlagsOfTheIngressObjectAlone)
{
    const auto &[kind, chip] = GetParam();
    Properties properties = ip4_alone();
    properties.ipv6_en = 1;
    properties.urpf_mode = 3;
    properties.class_high_bit = 1;
    Routed routed(kind, chip, properties);
    Held expected = routed.held();
    ASSERT_NE(expected.at("ingress flags"), 0x5E2U);
    expected["ingress flags"] = 0x5E2;
    ASSERT_EQ(routed.disable(), 0);
    EXPECT_EQ(differences(expected, routed.held()), "");
}

TEST_P(KindThroughTheChip, SetterAfterADisableLeavesWhatItLeavesWithoutOne)
{
    const auto &[kind, chip] = GetParam();
    Held expected;
    {
        Routed never(kind, chip, ip4_alone());
        ASSERT_EQ(never.set(RTIFHAL_PROP_WORD_7, 0), 0);
        expected = never.held();
    }
    Routed routed(kind, chip, ip4_alone());
    ASSERT_EQ(routed.disable(), 0);
    ASSERT_EQ(routed.set(RTIFHAL_PROP_WORD_7, 0), 0);
    EXPECT_EQ(differences(expected, routed.held()), "");
}

TEST_P(KindThroughTheChip, RelabelLeavesWhatAFreshAddWithThatLabelLeaves)
{
    const auto &[kind, chip] = GetParam();
    Properties properties = ip4_alone();
    properties.acl_qos_label_pending = 0x21;
    const Held fresh = Routed(kind, chip, properties).held();
    EXPECT_EQ(fresh.at("ingress class"), 97U);
    properties.acl_qos_label_pending = 0;
    Routed routed(kind, chip, properties);
    ASSERT_EQ(routed.relabel(0x21), 0);
    EXPECT_EQ(differences(fresh, routed.held()), "");
}

TEST(PropertyOfPortChannelThroughTheChip, EachMemberFollowsAndControl11IsOff)
{
    for (const Kind chip : {Kind::trident, Kind::trident2}) {
        Routed routed(IfKind::port_channel, chip, ip4_alone());
        routed.properties().ipv4_mc_en = 1;
        routed.properties().ipv6_en = 1;
        routed.properties().mpls_en = 1;
        ASSERT_EQ(routed.set(0, 0), 0);
        const Held held = routed.held();
        for (const std::string port : {"port 5", "port 6"}) {
            for (const int control : {8, 9, 10, 14}) {
                EXPECT_EQ(held.at(fmt::format("{} control {}", port, control)), 1U)
                    << port << ' ' << control;
            }
            EXPECT_EQ(held.at(port + " control 11"), 0U) << port;
        }
    }
}

} // namespace rtifhal_test::property_chip
