/*
 * object_book.cpp: see object_book.h.
 */
#include "page/object_book.h"

#include "packet/objects.h"

#include "chip/pipeline/numbers.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace lab::page
{

namespace chip = simswitch::chip;
namespace pipeline = simswitch::chip::pipeline;

namespace
{

constexpr std::size_t AUTHORS_SHOWN = 3;

using Fields = std::vector<std::pair<std::string, std::string>>;

std::string on_or_off(bool is_on)
{
    return is_on ? "on" : "off";
}

std::string urpf_text(int mode)
{
    return mode == pipeline::REVERSE_PATH_OFF     ? "off"
           : mode == pipeline::REVERSE_PATH_LOOSE ? "loose"
                                                  : "strict";
}

std::string dotted(std::uint32_t address)
{
    constexpr unsigned BYTE = 0xff;
    return fmt::format("{}.{}.{}.{}", address >> 24U, address >> 16U & BYTE, address >> 8U & BYTE,
                       address & BYTE);
}

std::string discard_text(int mode)
{
    static constexpr std::array<const char *, chip::LAST_DISCARD_MODE + 1> TEXTS = {
        "nothing", "all", "untagged", "tagged"};
    return TEXTS.at(static_cast<std::size_t>(mode));
}

Fields port_fields(const chip::Chip &chip, int number)
{
    const chip::Port port = chip.ports.get(number);
    Fields fields = {{"untagged VLAN", fmt::to_string(port.untagged_vlan)}};
    const auto control = [&](const char *name, int which) {
        fields.emplace_back(name, on_or_off(chip.ports.control(number, which) != 0));
    };
    if (const int iif = chip.ports.control(number, chip::PORT_CONTROL_INGRESS); iif != 0) {
        fields.emplace_back("ingress", fmt::to_string(iif));
    }
    // A Trident2 switches families at the ingress object.
    if (chip.kind() == chip::Kind::trident) {
        control("IPv4", chip::PORT_CONTROL_IP4);
        control("IPv6", chip::PORT_CONTROL_IP6);
    }
    if (chip.ports.control(number, chip::PORT_CONTROL_MPLS) != 0) {
        control("MPLS", chip::PORT_CONTROL_MPLS);
    }
    if (port.discard != 0) {
        fields.emplace_back("discards", discard_text(port.discard));
    }
    return fields;
}

Fields vlan_fields(const packet::Names &names, const chip::Vlan &vlan)
{
    const auto &controls = vlan.controls;
    Fields fields = {{"ports", fmt::to_string(vlan.members.count())},
                     {"untagged", fmt::to_string(vlan.untagged.count())},
                     {"STP group", fmt::to_string(vlan.stg)}};
    if (controls.ingress_if != 0) {
        fields.emplace_back("ingress", fmt::to_string(controls.ingress_if));
        fields.emplace_back("VRF", names.vrf(static_cast<int>(controls.vrf)));
        fields.emplace_back("IPv4", on_or_off((controls.flags & pipeline::VLAN_IP4_OFF) == 0));
        fields.emplace_back("IPv6", on_or_off((controls.flags & pipeline::VLAN_IP6_OFF) == 0));
    }
    if (controls.urpf_mode != pipeline::REVERSE_PATH_OFF) {
        fields.emplace_back("reverse path", urpf_text(static_cast<int>(controls.urpf_mode)));
    }
    fields.emplace_back("flags", fmt::format("{:#x}", controls.flags));
    return fields;
}

std::string masked_mac(const chip::Station &station)
{
    constexpr chip::Mac WHOLE = {0xff, 0xff, 0xff, 0xff, 0xff, 0xff};
    return station.mac_mask == WHOLE
               ? chip::text(station.mac)
               : fmt::format("{}/{}", chip::text(station.mac), chip::text(station.mac_mask));
}

Fields station_fields(const packet::Names &names, const chip::Station &station)
{
    std::vector<const char *> families;
    for (const auto &[flag, name] : {std::pair{pipeline::STATION_IP4, "IPv4"},
                                     {pipeline::STATION_IP6, "IPv6"},
                                     {pipeline::STATION_ARP, "ARP"}}) {
        if ((station.flags & flag) != 0) {
            families.push_back(name);
        }
    }
    return {{"MAC", masked_mac(station)},
            {"VLAN", station.vlan_mask == 0 ? "any" : fmt::to_string(station.vlan)},
            {"port", station.src_port_mask == 0 ? "any" : names.port(station.src_port)},
            {"takes", families.empty() ? "nothing" : fmt::format("{}", fmt::join(families, " "))}};
}

/** What kind of MAC a station has; whose it is stands in a field. */
std::string station_title(const packet::StationOwner &owner)
{
    return owner.is_router ? "router MAC" : owner.is_virtual ? "virtual MAC" : "station";
}

} // namespace

std::size_t ObjectBook::add(ChipObject object, const std::string &entry, bool exists)
{
    const auto [found, is_new] =
        known_.try_emplace({object.table, object.id}, page_.objects.size());
    if (!is_new) {
        return found->second;
    }
    object.missing = !exists;
    object.authors = chip().authors.of(object.table, entry);
    if (object.authors.size() > AUTHORS_SHOWN) {
        object.more_authors = object.authors.size() - AUTHORS_SHOWN;
        object.authors.resize(AUTHORS_SHOWN);
    }
    page_.objects.push_back(std::move(object));
    return found->second;
}

std::size_t ObjectBook::port(int port)
{
    return add({"port", fmt::format("port {}", port), names_.port(port), port_fields(chip(), port)},
               fmt::to_string(port));
}

std::size_t ObjectBook::trunk(int trunk)
{
    const chip::Trunk *found = chip().trunks.find(trunk);
    Fields fields;
    if (found != nullptr) {
        fields = {{"members", fmt::to_string(found->members.size())},
                  {"selection", fmt::to_string(found->psc)}};
    }
    return add({"trunk", fmt::format("trunk {}", trunk), names_.trunk(trunk), std::move(fields)},
               fmt::to_string(trunk), found != nullptr);
}

std::size_t ObjectBook::vlan(int vlan)
{
    const chip::Vlan *found = chip().vlans.find(vlan);
    return add({"vlan", fmt::to_string(vlan), packet::Names::vlan(vlan),
                found == nullptr ? Fields{} : vlan_fields(names_, *found)},
               fmt::to_string(vlan), found != nullptr);
}

std::size_t ObjectBook::translation(const chip::TranslationKey &key)
{
    const chip::TranslationAction *found = chip().vlan_translations.find(key);
    Fields fields;
    if (found != nullptr) {
        fields = {{"on", names_.gport(key.gport)},
                  {"VLAN", fmt::to_string(key.outer_vlan)},
                  {"becomes", fmt::to_string(found->new_outer_vlan)},
                  {"ingress", fmt::to_string(found->ingress_if)}};
    }
    return add(
        {"vlan_translation", packet::key_text(names_, key), "VLAN translation", std::move(fields)},
        chip::text(key), found != nullptr);
}

std::size_t ObjectBook::ingress(int iif)
{
    const chip::L3Ingress *found = chip().l3_ingresses.find(iif);
    Fields fields;
    if (found != nullptr) {
        fields = {{"VRF", names_.vrf(found->vrf)},
                  {"reverse path", urpf_text(found->urpf_mode)},
                  {"class", fmt::to_string(found->intf_class)},
                  {"flags", fmt::format("{:#x}", found->flags)}};
        if (chip().kind() == chip::Kind::trident2) {
            fields.emplace_back("IPv4", on_or_off((found->flags & pipeline::INGRESS_IP4_OFF) == 0));
            fields.emplace_back("IPv6", on_or_off((found->flags & pipeline::INGRESS_IP6_OFF) == 0));
        }
    }
    return add({"l3_ingress", fmt::to_string(iif), "L3 ingress", std::move(fields)},
               fmt::to_string(iif), found != nullptr);
}

std::size_t ObjectBook::interface(int iif)
{
    const chip::L3Interface *found = chip().l3_interfaces.find(iif);
    Fields fields;
    if (found != nullptr) {
        fields = {{"MAC", chip::text(found->mac)},
                  {"VLAN", fmt::to_string(found->vlan)},
                  {"VRF", names_.vrf(found->vrf)},
                  {"MTU", fmt::to_string(found->mtu)}};
        if (found->ttl != 0) {
            fields.emplace_back("lowest TTL", fmt::to_string(found->ttl));
        }
        if (found->tunnel != 0) {
            fields.emplace_back("tunnel", fmt::to_string(found->tunnel));
        }
    }
    return add({"l3_interface", fmt::to_string(iif), "L3 interface", std::move(fields)},
               fmt::to_string(iif), found != nullptr);
}

std::size_t ObjectBook::tunnel(int iif)
{
    const chip::Tunnel *found = chip().tunnels.find(iif);
    Fields fields;
    if (found != nullptr) {
        fields = {{"from", dotted(found->source_ip)}, {"to", dotted(found->dest_ip)}};
    }
    return add({"tunnel", found == nullptr ? "0" : fmt::to_string(found->index), "tunnel initiator",
                std::move(fields)},
               fmt::to_string(iif), found != nullptr);
}

std::size_t ObjectBook::station(int station)
{
    const chip::Station *found = chip().stations.find(station);
    const packet::StationOwner owner = owners_.of(station);
    Fields fields;
    if (found != nullptr) {
        fields = station_fields(names_, *found);
    }
    if (!owner.interface.empty()) {
        fields.insert(fields.begin(), {"of", owner.interface});
    }
    return add({"station", fmt::to_string(station), station_title(owner), std::move(fields)},
               fmt::to_string(station), found != nullptr);
}

std::size_t ObjectBook::egress(int egress)
{
    const chip::Egress *found = chip().egresses.find(egress);
    Fields fields;
    std::string title = packet::next_hop_text(names_, egress);
    // The way out is a field of its own.
    title.resize(std::min(title.size(), title.find(" on ")));
    if (found != nullptr) {
        if (!packet::leads_to_cpu(*found)) {
            fields = {{"MAC", chip::text(found->mac)}, {"by", packet::way_out(names_, *found)}};
        }
        if (found->vlan != 0) {
            fields.emplace_back("VLAN", fmt::to_string(found->vlan));
        }
    }
    return add(
        {"egress", fmt::to_string(egress), title.empty() ? "next hop" : title, std::move(fields)},
        fmt::to_string(egress), found != nullptr);
}

std::size_t ObjectBook::more(const std::string &what, const std::vector<std::string> &names)
{
    return add({"more",
                fmt::format("{}", fmt::join(names, ", ")),
                fmt::format("{} more {}", names.size(), what),
                {}},
               "");
}

} // namespace lab::page
