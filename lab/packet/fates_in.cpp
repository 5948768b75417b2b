/*
 * fates_in.cpp: what else is dropped where a frame was dropped on its way in.
 * See fates_parts.h.
 */
#include "packet/fates_parts.h"

#include "config/names.h"

#include "chip/pipeline/numbers.h"
#include "chip/trunks.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace lab::packet
{

namespace chip = simswitch::chip;
namespace pipeline = simswitch::chip::pipeline;
using pipeline::Line;
using pipeline::Reason;
using pipeline::Stage;

namespace
{

constexpr std::size_t VLANS_SHOWN = 6;

std::string translation_miss(const End &end)
{
    const chip::Chip &chip = end.names.chip();
    const int own = chip::module_port(0, end.port);
    const auto trunk = chip.trunks.trunk_of(own);
    std::vector<std::string> vlans;
    for (const auto &[key, action] : chip.vlan_translations.all()) {
        if (key.gport == own || (trunk && key.gport == chip::trunk_gport(*trunk))) {
            vlans.push_back(fmt::to_string(key.outer_vlan));
        }
    }
    const std::string port = end.names.port(end.port);
    return vlans.empty()
               ? fmt::format("every tagged frame on {}: it has no translation at all", port)
               : fmt::format("every frame on {} with a tag of another VLAN than {}", port,
                             first_of(vlans, VLANS_SHOWN));
}

std::string not_a_member(const End &end)
{
    const chip::Vlan *vlan = end.names.chip().vlans.find(end.wire_vlan);
    return fmt::format("every frame of VLAN {} on {}; its ports are {}", end.wire_vlan,
                       end.names.port(end.port),
                       end.names.ports(vlan == nullptr ? chip::PortSet() : vlan->members));
}

std::string spanning_tree(const End &end)
{
    const chip::Vlan *own = end.names.chip().vlans.find(end.wire_vlan);
    std::vector<std::string> vlans;
    for (const auto &[id, vlan] : end.names.chip().vlans.all()) {
        if (own != nullptr && vlan.stg == own->stg && vlan.members.has(end.port)) {
            vlans.push_back(fmt::to_string(id));
        }
    }
    return fmt::format("every frame on {} in the VLANs of its spanning tree group: {}",
                       end.names.port(end.port), first_of(vlans, VLANS_SHOWN));
}

std::string family_off(const End &end)
{
    const char *family = pipeline::text(end.frame.payload);
    const Line *line = line_of(end, Stage::family);
    if (line != nullptr && line->table == "vlan") {
        return vlan_of(end) == config::VLAN_OF_ROUTED_PORTS
                   ? fmt::format("all {} on routed ports, port-channels and subinterfaces", family)
                   : fmt::format("all {} in VLAN {}", family, vlan_of(end));
    }
    const std::string where = where_in(end);
    const std::string port = end.names.port(end.port);
    return line != nullptr && line->table == "port" && where != port
               ? fmt::format("all {} of {} on {}", family, where, port)
               : fmt::format("all {} on {}", family, where);
}

/** Of the frames that have an interface of their own, on which nothing is bridged. */
std::optional<Fates> not_routable(Reason reason, const End &end)
{
    const std::string where = where_in(end);
    switch (reason) {
    case Reason::no_interface:
        return Fates{fmt::format("every IP packet in VLAN {}: nothing routes there", vlan_of(end))};
    case Reason::not_ip:
        return Fates{fmt::format("everything on {} but IPv4, IPv6 and what the CPU takes", where)};
    case Reason::bad_header:
        return Fates{fmt::format("every packet on {} whose IP header is bad", where)};
    case Reason::group_address:
        return Fates{
            fmt::format("every multicast and broadcast on {} that the CPU doesn't take", where)};
    case Reason::no_station:
        return Fates{fmt::format("every frame to {} in VLAN {} on {}",
                                 chip::text(end.frame.destination), vlan_of(end),
                                 end.names.port(end.port))};
    case Reason::station_class:
        return Fates{fmt::format("every {} packet to {}", pipeline::text(end.frame.payload),
                                 chip::text(end.frame.destination))};
    case Reason::family_off:
        return Fates{family_off(end)};
    case Reason::bad_address:
        return Fates{fmt::format("every packet on {} from or to loopback, link-local and other "
                                 "addresses that nobody routes",
                                 where)};
    default:
        return std::nullopt;
    }
}

} // namespace

std::optional<Fates> fates_in(Reason reason, const End &end)
{
    const std::string port = end.names.port(end.port);
    switch (reason) {
    case Reason::bad_frame:
        return Fates{"every frame shorter than 14 bytes or cut off in its tags, on any port"};
    case Reason::too_long:
        return Fates{
            fmt::format("every frame longer than {} bytes, on any port", pipeline::FRAME_MAX)};
    case Reason::discard_all:
        return Fates{fmt::format("every frame on {}", port)};
    case Reason::discard_untagged:
        return Fates{fmt::format("every untagged frame on {}", port)};
    case Reason::discard_tagged:
        return Fates{fmt::format("every tagged frame on {}", port)};
    case Reason::translation_miss:
        return Fates{translation_miss(end)};
    case Reason::no_vlan:
        return Fates{fmt::format("every frame of VLAN {}, on any port", end.wire_vlan)};
    case Reason::not_a_member:
        return Fates{not_a_member(end)};
    case Reason::stp_in:
        return Fates{spanning_tree(end)};
    default:
        return not_routable(reason, end);
    }
}

} // namespace lab::packet
