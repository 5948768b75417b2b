/*
 * growth_network.cpp: see growth_network.h.
 */
#include "growth_network.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace bench
{

namespace
{

/** Of the mix: ports and port-channels with subinterfaces, the first port of a port-channel. */
constexpr std::size_t MIX_PORTS = 60;
constexpr std::size_t MIX_CHANNELS = 8;
constexpr std::uint32_t MIX_MEMBER = 64;

/** VLANs of the mix's subinterfaces begin here; those of its SVIs at 2. */
constexpr std::uint32_t MIX_VLAN = 3000;
constexpr std::uint32_t MIX_CHANNEL_VLAN = 3200;
constexpr std::uint16_t MIX_SVI_VLAN = 2;

int by_ifindex(const void *left, const void *right)
{
    const std::uint32_t a = static_cast<const l3lif *>(left)->ifindex;
    const std::uint32_t b = static_cast<const l3lif *>(right)->ifindex;
    return (a > b) - (a < b);
}

void need_tree(avl_tree_t *&tree)
{
    if (tree == nullptr) {
        tree = avl_create(by_ifindex, 0);
    }
}

} // namespace

void must_succeed(int value, const char *request)
{
    if (value != 0) {
        std::fprintf(stderr, "growth_bench: %s gave %d\n", request, value);
        std::exit(1);
    }
}

Network::Network(null_platform::Chip chip)
{
    null_platform::reset(chip);
}

Interface &Network::make(Kind kind, std::uint32_t ifindex, std::uint16_t vlan)
{
    Interface &interface = interfaces_.emplace_back();
    interface.kind = kind;
    interface.vlan = vlan;
    interface.properties.ipv4_en = 1;
    interface.record.ifindex = ifindex;
    interface.record.mac[0] = 0x02;
    interface.record.mac[5] = 0x01;
    interface.record.vlan = vlan;
    interface.record.si_encap_vlan = vlan;
    interface.record.l3lif_pi_ctxt = &interface.properties;
    return interface;
}

Interface &Network::port(std::uint32_t port)
{
    return make(Kind::port, null_platform::port_ifindex(port), 0);
}

Interface &Network::port_channel(std::uint32_t channel, std::uint32_t member)
{
    Interface &made = make(Kind::port_channel, null_platform::port_channel_ifindex(channel), 0);
    made.member.ifindex = null_platform::port_ifindex(member);
    made.member.main_l3lif = &made.record;
    made.member.l3lif_pi_ctxt = &made.properties;
    need_tree(made.record.pc_member_tree);
    must_succeed(avl_insert(made.record.pc_member_tree, &made.member), "avl_insert");
    return made;
}

Interface &Network::svi(std::uint16_t vlan)
{
    Interface &made = make(Kind::svi, null_platform::svi_ifindex(vlan), vlan);
    made.record.int_vlan = vlan;
    null_platform::set_private_vlan(vlan, null_platform::PrivateVlan::none);
    return made;
}

Interface &Network::subinterface(Interface &main, std::uint16_t vlan)
{
    const bool of_channel = main.kind == Kind::port_channel;
    Interface &made = make(of_channel ? Kind::channel_subinterface : Kind::subinterface,
                           null_platform::subinterface_ifindex(main.record.ifindex, vlan), vlan);
    made.main = &main;
    made.record.main_l3lif = &main.record;
    if (of_channel) {
        made.view = made.record;
        made.view.ifindex = main.record.ifindex;
        made.view.int_vlan = vlan;
        made.view.main_l3lif = nullptr;
        made.view.pc_member_tree = main.record.pc_member_tree;
        made.record.main_l3lif = &made.view;
    }
    return made;
}

Interface &Network::tunnel(std::uint32_t tunnel)
{
    return make(Kind::tunnel, null_platform::tunnel_ifindex(tunnel), 0);
}

void Network::announce(Interface &interface)
{
    null_platform::make_known(interface.record);
    if (interface.main != nullptr) {
        need_tree(interface.main->record.subint_tree);
        must_succeed(avl_insert(interface.main->record.subint_tree, &interface.record),
                     "avl_insert");
    }
}

void Network::withdraw(Interface &interface)
{
    null_platform::forget(interface.record);
    if (interface.main != nullptr) {
        (void)avl_delete(interface.main->record.subint_tree, &interface.record);
    }
}

void Network::add(Interface &interface, int create)
{
    l3lif *const record = &interface.record;
    switch (interface.kind) {
    case Kind::port:
        must_succeed(rtifhal_trident_add_l3port(record, create), "add port");
        break;
    case Kind::port_channel:
        must_succeed(rtifhal_trident_add_l3pc(&interface.member, create), "add port-channel");
        break;
    case Kind::svi:
        must_succeed(rtifhal_trident_add_svi(record, 0, create), "add SVI");
        break;
    case Kind::channel_subinterface:
        must_succeed(rtifhal_trident_add_subint(record, 0, create), "add subinterface");
        record->l3lif_pd_ctxt = interface.view.l3lif_pd_ctxt;
        break;
    case Kind::subinterface:
        must_succeed(rtifhal_trident_add_subint(record, 0, create), "add subinterface");
        break;
    case Kind::tunnel:
        must_succeed(rtifhal_trident_add_l3tun(record, create), "add tunnel");
        break;
    }
    ++up_;
}

void Network::remove(Interface &interface, int destroy)
{
    l3lif *const record = &interface.record;
    switch (interface.kind) {
    case Kind::port:
        must_succeed(rtifhal_trident_del_l3port(record, destroy), "delete port");
        break;
    case Kind::port_channel:
        must_succeed(rtifhal_trident_del_l3pc(&interface.member, destroy), "delete port-channel");
        break;
    case Kind::svi:
        must_succeed(rtifhal_trident_del_svi(record, 0, destroy), "delete SVI");
        break;
    case Kind::channel_subinterface:
        must_succeed(rtifhal_trident_del_subint(record, 0, destroy), "delete subinterface");
        interface.view.l3lif_pd_ctxt = record->l3lif_pd_ctxt;
        break;
    case Kind::subinterface:
        must_succeed(rtifhal_trident_del_subint(record, 0, destroy), "delete subinterface");
        break;
    case Kind::tunnel:
        must_succeed(rtifhal_trident_del_l3tun(record, destroy), "delete tunnel");
        break;
    }
    --up_;
}

void Network::bring_up(Interface &interface)
{
    announce(interface);
    add(interface);
}

Interface &Network::next_subinterface(Interface &main)
{
    const avl_tree_t *const tree = main.record.subint_tree;
    const std::uint32_t number = tree != nullptr ? tree->count : 0;
    const std::uint32_t first = main.kind == Kind::port ? MIX_VLAN : MIX_CHANNEL_VLAN;
    return subinterface(main, static_cast<std::uint16_t>(first + number));
}

/** One more: of eight, three subinterfaces of ports, two SVIs, a port while there is one, … */
void Network::fill_one(std::size_t turn)
{
    const std::size_t kind = turn % 8;
    if (kind == 0 && ports_.size() < MIX_PORTS) {
        ports_.push_back(&port(static_cast<std::uint32_t>(ports_.size())));
        bring_up(*ports_.back());
    } else if (kind == 7 && channels_.size() < MIX_CHANNELS) {
        const auto number = static_cast<std::uint32_t>(channels_.size());
        channels_.push_back(&port_channel(number, MIX_MEMBER + number));
        bring_up(*channels_.back());
    } else if (kind == 7) {
        bring_up(next_subinterface(*channels_[channel_subinterfaces_++ % MIX_CHANNELS]));
    } else if (kind == 6) {
        bring_up(tunnel(tunnels_++));
    } else if (kind >= 4) {
        bring_up(svi(static_cast<std::uint16_t>(MIX_SVI_VLAN + svis_++)));
    } else {
        bring_up(next_subinterface(*ports_[subinterfaces_++ % ports_.size()]));
    }
}

void Network::fill(std::size_t interfaces)
{
    for (std::size_t turn = 0; up_ < interfaces; ++turn) {
        fill_one(turn);
    }
}

void Network::keep_numbers()
{
    kept_ = l3lif_l3iif_table;
    kept_preserve_ = l3lif_l3iif_table_preserve;
}

void Network::restore_numbers()
{
    l3lif_l3iif_table = kept_;
    l3lif_l3iif_table_preserve = kept_preserve_;
}

} // namespace bench
