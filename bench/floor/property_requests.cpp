/*
 * property_requests.cpp: see property_requests.h. Before its first time the property is set
 * already: a setter writes all that it writes whatever stood there.
 */
#include "property_requests.h"

#include <array>

namespace floor_bench
{

namespace
{

constexpr std::uint16_t LABEL = 9;

/** The MTU has no identifier; an SVI writes all the same at any. */
constexpr std::uint32_t NO_IDENTIFIER = 0;

/** Has the library bring an interface into line with its properties. */
template <Kind KIND> void apply(World &world, std::uint32_t property, std::uint32_t value)
{
    l3lif *const lif = &world.standing(KIND).lif;
    if constexpr (KIND == Kind::port) {
        (void)rtifhal_set_kelvo_l3_property_l3int(lif);
    } else if constexpr (KIND == Kind::port_channel) {
        (void)rtifhal_set_kelvo_l3_property_l3pc(lif);
    } else if constexpr (KIND == Kind::svi) {
        (void)rtifhal_set_kelvo_l3_property_svi(lif, property, value);
    } else if constexpr (KIND == Kind::subinterface) {
        (void)rtifhal_set_kelvo_l3_property_subint(lif);
    } else {
        (void)rtifhal_set_kelvo_l3_property_l3tun(lif);
    }
}

template <Kind KIND, auto FIELD, std::uint32_t PROPERTY, std::uint16_t VALUE> void set(World &world)
{
    auto &field = world.standing(KIND).properties.*FIELD;
    field = static_cast<std::remove_reference_t<decltype(field)>>(VALUE);
    apply<KIND>(world, PROPERTY, VALUE);
}

/** A property's cycle; `NORMAL` is what the standing interfaces have. */
template <Kind KIND, auto FIELD, std::uint32_t PROPERTY, std::uint16_t VALUE, std::uint16_t NORMAL>
Cycle property(const std::string &kind, const std::string &name)
{
    return {.before = set<KIND, FIELD, PROPERTY, VALUE>,
            .after = set<KIND, FIELD, PROPERTY, NORMAL>,
            .requests = {{kind + ": set " + name,
                          [](World &world) { apply<KIND>(world, PROPERTY, VALUE); }}}};
}

template <Kind KIND> void relabel(World &world)
{
    (void)rtifhal_upd_classid(LABEL, world.standing(KIND).lif.ifindex);
}

template <Kind KIND> Cycle label(const std::string &kind)
{
    return {
        .before = relabel<KIND>,
        .after =
            [](World &world) { (void)rtifhal_upd_classid(0, world.standing(KIND).lif.ifindex); },
        .requests = {{kind + ": set class label", relabel<KIND>}}};
}

template <Kind KIND> void add_kind(std::vector<Cycle> &all, const std::string &kind)
{
    using Pi = l3lif_pi_ctxt;
    all.push_back(property<KIND, &Pi::ipv4_en, RTIFHAL_PROP_IPV4, 0, 1>(kind, "IPv4"));
    all.push_back(
        property<KIND, &Pi::ipv4_mc_en, RTIFHAL_PROP_IPV4_MC, 1, 0>(kind, "IPv4 multicast"));
    all.push_back(property<KIND, &Pi::vrf, RTIFHAL_PROP_VRF, 5, 1>(kind, "VRF"));
    all.push_back(property<KIND, &Pi::urpf_mode, RTIFHAL_PROP_URPF, 3, 0>(kind, "uRPF"));
    all.push_back(property<KIND, &Pi::ingress_flag_word, RTIFHAL_PROP_INGRESS_FLAG, 1, 0>(
        kind, "ingress flag"));
    all.push_back(property<KIND, &Pi::ipv6_en, RTIFHAL_PROP_IPV6, 0, 1>(kind, "IPv6"));
    all.push_back(property<KIND, &Pi::l3_prop_word_7, RTIFHAL_PROP_WORD_7, 1, 0>(kind, "word 7"));
    all.push_back(property<KIND, &Pi::l3_prop_word_8, RTIFHAL_PROP_WORD_8, 1, 0>(kind, "word 8"));
    all.push_back(property<KIND, &Pi::ipv6_vrf, RTIFHAL_PROP_IPV6_VRF, 5, 0>(kind, "IPv6 VRF"));
    all.push_back(
        property<KIND, &Pi::class_high_bit, RTIFHAL_PROP_CLASS_HIGH, 1, 0>(kind, "class bit"));
    all.push_back(property<KIND, &Pi::mpls_en, RTIFHAL_PROP_MPLS, 1, 0>(kind, "MPLS"));
    all.push_back(property<KIND, &Pi::mtu, NO_IDENTIFIER, 1500, 9100>(kind, "MTU"));
    all.push_back(label<KIND>(kind));
}

Cycle switch_ipv6()
{
    return {
        .requests = {
            {"switch: set IPv6 on", [](World &) { (void)rtifhal_set_kelvo_l3_ipv6_config(1); }},
            {"switch: set IPv6 off", [](World &) { (void)rtifhal_set_kelvo_l3_ipv6_config(0); }},
        }};
}

Cycle stop_routing()
{
    return {.after = [](World &world) { apply<Kind::port>(world, NO_IDENTIFIER, 0); },
            .requests = {{"port: stop routing", [](World &world) {
                              (void)rtifhal_trident_l3_disable(
                                  world.standing(Kind::port).lif.ifindex);
                          }}}};
}

} // namespace

void add_property_cycles(std::vector<Cycle> &all)
{
    add_kind<Kind::port>(all, "port");
    add_kind<Kind::port_channel>(all, "port-channel");
    add_kind<Kind::svi>(all, "SVI");
    add_kind<Kind::subinterface>(all, "subinterface");
    add_kind<Kind::tunnel>(all, "tunnel");
    all.push_back(switch_ipv6());
    all.push_back(stop_routing());
}

} // namespace floor_bench
