/*
 * property_kinds.cpp: see property_kinds.h.
 */
#include "support/property_kinds.h"

#include "support/l3_objects.h"
#include "support/subint_roads.h"

#include <fwmpd/wrappers.h>

#include <fmt/format.h>

#include <stdexcept>
#include <utility>

namespace rtifhal_test::property_kinds
{

namespace
{

constexpr unsigned FIRST = 5;
constexpr unsigned SECOND = 6;
constexpr std::uint16_t CHANNEL = 7;
constexpr std::uint32_t TRUNK = 8;
constexpr std::uint16_t VLAN = 100;
constexpr std::uint16_t ROUTED_VLAN = 4094;
constexpr unsigned SUB = 10;
/** Routing and MPLS off. */
constexpr std::uint32_t SWITCHED = 0x238;

std::uint32_t word(int value)
{
    return static_cast<std::uint32_t>(value);
}

void hold_ports(const simswitch::chip::Ports &ports, Held &held)
{
    for (const unsigned port : {FIRST, SECOND}) {
        for (const int control : {8, 9, 10, 11, 14, 67}) {
            held[fmt::format("port {} control {}", port, control)] =
                word(ports.control(static_cast<int>(port), control));
        }
    }
}

void hold_vlans(const simswitch::chip::Vlans &vlans, Held &held)
{
    for (const int id : {int{VLAN}, int{ROUTED_VLAN}}) {
        const simswitch::chip::Vlan *vlan = vlans.find(id);
        if (vlan == nullptr) {
            continue;
        }
        const std::string name = fmt::format("vlan {} ", id);
        held[name + "vrf"] = vlan->controls.vrf;
        held[name + "iif"] = vlan->controls.ingress_if;
        held[name + "flags"] = vlan->controls.flags;
        held[name + "class"] = vlan->controls.intf_class;
        held[name + "urpf"] = vlan->controls.urpf_mode;
    }
}

} // namespace

std::string name_of(IfKind kind)
{
    switch (kind) {
    case IfKind::port:
        return "Port";
    case IfKind::port_channel:
        return "PortChannel";
    case IfKind::svi:
        return "Svi";
    case IfKind::port_sub:
        return "PortSub";
    case IfKind::channel_sub:
        return "ChannelSub";
    case IfKind::tunnel:
        return "Tunnel";
    }
    return "Unknown";
}

Routed::Routed(IfKind kind, simswitch::chip::Kind chip, const l3lif_pi_ctxt &properties)
    : kind_(kind), sw_({.chip = chip}), wanted_(properties)
{
    reset_library();
    l3iif_table_init();
    up();
}

Lif &Routed::own(std::shared_ptr<Lif> lif)
{
    lifs_.push_back(std::move(lif));
    return *lifs_.back();
}

Lif &Routed::subject(std::shared_ptr<Lif> lif)
{
    subject_ = &own(std::move(lif));
    subject_->properties = wanted_;
    return *subject_;
}

void Routed::done(int code)
{
    if (code != 0) {
        throw std::runtime_error(fmt::format("{}: the add gave {}", name_of(kind_), code));
    }
    sw_.end_request();
}

void Routed::up()
{
    switch (kind_) {
    case IfKind::port:
        port_up(subject(port(FIRST)));
        break;
    case IfKind::port_channel:
        port_channel_up(subject(port_channel(CHANNEL)));
        break;
    case IfKind::svi:
        svi_up();
        break;
    case IfKind::port_sub:
        port_sub_up();
        break;
    case IfKind::channel_sub:
        channel_sub_up();
        break;
    case IfKind::tunnel:
        tunnel_up();
        break;
    }
}

void Routed::port_up(Lif &port)
{
    sw_.directory.add(port.get());
    done(rtifhal_trident_add_l3port(port.get(), 1));
}

void Routed::port_channel_up(Lif &main)
{
    sw_.directory.add(main.get());
    sw_.host.set_trunk_id(main.lif.ifindex, TRUNK);
    main.lif.pc_member_tree = members_.get();
    for (const unsigned number : {FIRST, SECOND}) {
        Lif &member = own(port(number));
        member.lif.main_l3lif = main.get();
        members_.insert(member.get());
        done(rtifhal_trident_add_l3pc(member.get(), number == FIRST ? 1 : 0));
    }
}

void Routed::svi_up()
{
    bcm_vlan_control_vlan_t control = {};
    control.vc_flags = SWITCHED;
    bcm_vlan_create(0, VLAN);
    rtifhal_set_l2_vlan(VLAN);
    done(fwmpd_bcm_vlan_control_vlan_set(0, VLAN, control));
    sw_.host.vlans.add(VLAN);
    Lif &lif = subject(svi(VLAN));
    lif.lif.int_vlan = VLAN;
    done(rtifhal_trident_add_svi(lif.get(), 0, 1));
}

void Routed::port_sub_up()
{
    Lif &main = own(port(FIRST));
    port_up(main);
    Lif &sub = subject(subinterface(main, SUB));
    subs_.insert(sub.get());
    main.lif.subint_tree = subs_.get();
    done(rtifhal_trident_add_subint(sub.get(), 0, 1));
}

void Routed::channel_sub_up()
{
    Lif &main = own(port_channel(CHANNEL));
    port_channel_up(main);
    auto made = std::make_shared<subint_road::ChannelSub>(main, SUB, VLAN);
    subint_road::ChannelSub &sub = *made;
    subject(std::move(made));
    subs_.insert(sub.get());
    main.lif.subint_tree = subs_.get();
    done(rtifhal_trident_add_subint(sub.get(), 0, 1));
    // The view, on which the library works, has got the context; the layer above shares it.
    sub.lif.l3lif_pd_ctxt = sub.view.l3lif_pd_ctxt;
}

void Routed::tunnel_up()
{
    done(rtifhal_trident_add_l3tun(subject(tunnel(1)).get(), 1));
}

int Routed::set(std::uint32_t property, std::uint32_t value)
{
    l3lif *lif = subject_->get();
    int code = -1;
    switch (kind_) {
    case IfKind::port:
        code = rtifhal_set_kelvo_l3_property_l3int(lif);
        break;
    case IfKind::port_channel:
        code = rtifhal_set_kelvo_l3_property_l3pc(lif);
        break;
    case IfKind::svi:
        code = rtifhal_set_kelvo_l3_property_svi(lif, property, value);
        break;
    case IfKind::port_sub:
    case IfKind::channel_sub:
        code = rtifhal_set_kelvo_l3_property_subint(lif);
        break;
    case IfKind::tunnel:
        code = rtifhal_set_kelvo_l3_property_l3tun(lif);
        break;
    }
    sw_.end_request();
    return code;
}

int Routed::relabel(std::uint16_t label)
{
    sw_.directory.add(subject_->get());
    const int code = rtifhal_upd_classid(label, subject_->lif.ifindex);
    sw_.end_request();
    return code;
}

int Routed::disable()
{
    sw_.directory.add(subject_->get());
    const int code = rtifhal_trident_l3_disable(subject_->lif.ifindex);
    sw_.end_request();
    return code;
}

Held Routed::held() const
{
    Held held;
    hold_ports(sw_.chip.ports, held);
    hold_vlans(sw_.chip.vlans, held);
    const int number = subject_->record()->l3intf_id;
    if (const auto *ingress = sw_.chip.l3_ingresses.find(number)) {
        held["ingress flags"] = ingress->flags;
        held["ingress vrf"] = word(ingress->vrf);
        held["ingress urpf"] = word(ingress->urpf_mode);
        held["ingress class"] = ingress->intf_class;
        held["ingress multicast"] = ingress->ipmc_intf == number ? 1 : 0;
    }
    if (const auto *interface = sw_.chip.l3_interfaces.find(number)) {
        held["interface vrf"] = word(interface->vrf);
        held["interface mtu"] = word(interface->mtu);
        held["interface vlan"] = interface->vlan;
        held["interface flags"] = interface->flags;
    }
    return held;
}

} // namespace rtifhal_test::property_kinds
