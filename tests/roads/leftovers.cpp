/*
 * leftovers.cpp: see leftovers.h.
 */
#include "roads/leftovers.h"

#include "chip/basics.h"

#include <fmt/format.h>

namespace roads
{

namespace
{

using simswitch::chip::PortSet;

/** The port that is routed all the time, that of Ethernet4. */
constexpr int BYSTANDER = 2;

PortSet without(PortSet ports, const std::vector<int> &gone)
{
    for (const int port : gone) {
        ports.remove(port);
    }
    return ports;
}

/**
 * Ports that were routed and no longer are. Their state is reset in the groups in which they then
 * are: they have left VLAN 4094 and with it its group, where they go on forwarding. Nobody puts
 * them back on the flood lists.
 */
Lines ports_left(Kind chip, const std::vector<int> &ports, bool in_4094)
{
    Lines lines;
    const auto change = [&lines](const auto &line, const PortSet &before, const PortSet &after) {
        lines.push_back("- " + line(before));
        lines.push_back("+ " + line(after));
    };
    const auto group_1 = [](const PortSet &forwarding) {
        return fmt::format("STG 1: forwarding {} blocking {{}} listening {{}} learning {{}}",
                           forwarding.text());
    };
    const PortSet all = PortSet::range(0, simswitch::chip::LAST_FRONT_PORT);
    change(group_1, all, without(all, ports));
    if (in_4094) {
        PortSet routed = PortSet::range(BYSTANDER, BYSTANDER);
        lines.push_back("- STG 2: forwarding {2} blocking {} listening {} learning {}");
        for (const int port : ports) {
            routed.add(port);
        }
        lines.push_back(fmt::format(
            "+ STG 2: forwarding {} blocking {{}} listening {{}} learning {{}}", routed.text()));
    }
    const PortSet flooded = without(PortSet::front(), {BYSTANDER});
    const int first = chip == Kind::trident ? 120 : 248;
    for (const int entry : {0, 3, 4, 5, 7}) {
        const auto rule = [&](const PortSet &list) {
            const std::string looked_at =
                entry < 5 ? fmt::format("in-ports {}/{{0-255}} ", list.text()) : "";
            return fmt::format("field entry {}: group 1 installed ({}action 32 {}) copy the same",
                               first + entry, looked_at, list.text());
        };
        change(rule, flooded, without(flooded, ports));
    }
    return lines;
}

/** A port that is no longer anybody's; on a Trident2 it is open for VXLAN from its first VLAN on.
 */
std::string free_port(Kind chip, int port, std::string controls, const std::string &vlan_controls)
{
    controls += chip == Kind::trident ? "" : " 187=1";
    return fmt::format("+ port {} of nobody: untagged 4094 discard 0 controls{} vlan-controls{}",
                       port, controls, vlan_controls);
}

/** A VLAN of the L2 side before and after: its ports, its flags in the chip and in the cache. */
Lines vlan_left(int vlan, const std::string &ports, const std::string &after,
                const std::string &cached)
{
    Lines lines = {
        fmt::format("- VLAN {} of nobody: stg 1 members {} controls vrf 0 iif 0 flags 0x238 class "
                    "0 urpf 0 blocks kmc {{}} umc {{}} uuc {{}} bc {{}}",
                    vlan, ports),
        fmt::format("+ VLAN {} of nobody: stg 1 members {} controls {} uuc {{}} bc {{}}", vlan,
                    ports, after),
    };
    if (!cached.empty()) {
        lines.push_back(
            fmt::format("- table: VLAN {} cached vrf 0 iif 0 flags 0x238 class 0 urpf 0", vlan));
        lines.push_back(fmt::format("+ table: VLAN {} cached {}", vlan, cached));
    }
    return lines;
}

void append(Lines &lines, const Lines &more)
{
    lines.insert(lines.end(), more.begin(), more.end());
}

/** The delete opens a port for all families, whatever it had, but for IPv6 multicast. */
Lines port_left(Kind chip)
{
    Lines lines = ports_left(chip, {1}, true);
    lines.push_back(free_port(chip, 1, " 8=1 9=1 10=1 14=1", ""));
    return lines;
}

/** Members are opened for IPv6 multicast too; the trunk stays, and the balancing of all trunks. */
Lines port_channel_left(Kind chip)
{
    Lines lines = ports_left(chip, {3, 4}, true);
    lines.push_back(free_port(chip, 3, " 8=1 9=1 10=1 11=1 14=1", ""));
    lines.push_back(free_port(chip, 4, " 8=1 9=1 10=1 11=1 14=1", ""));
    lines.emplace_back("+ switch control 364: 1");
    lines.push_back(
        fmt::format("+ trunk 1: psc {} flags 0x0 members", chip == Kind::trident ? 9 : 15));
    return lines;
}

/**
 * The VRF stays, so does the flag 0x400000, which each add and delete sets. The CPU is blocked from
 * unknown multicast, which both do.
 */
Lines svi_left(Kind /*chip*/)
{
    return vlan_left(100, "{0,14,15} untagged {15}",
                     "vrf 1 iif 0 flags 0x400238 class 0 urpf 0 blocks kmc {} umc {0}",
                     "vrf 1 iif 0 flags 0x400238 class 0 urpf 0");
}

/** Its secondary keeps the mark of routing that was taken back (0x40), and 0x800 in the chip. */
Lines secondary_left()
{
    return vlan_left(201, "{0,13} untagged {13}",
                     "vrf 0 iif 0 flags 0xa78 class 0 urpf 0 blocks kmc {} umc {}",
                     "vrf 0 iif 0 flags 0x278 class 0 urpf 0");
}

Lines primary_left(Kind /*chip*/)
{
    Lines lines = vlan_left(200, "{0,12} untagged {12}",
                            "vrf 1 iif 0 flags 0x400238 class 0 urpf 0 blocks kmc {} umc {0}",
                            "vrf 1 iif 0 flags 0x400238 class 0 urpf 0");
    append(lines, secondary_left());
    return lines;
}

Lines pair_left(Kind /*chip*/)
{
    return secondary_left();
}

/** The CPU is blocked from the VLAN's unknown multicast as from the first use on. */
Lines encapsulation_left()
{
    return vlan_left(10, "{0,14,15} untagged {14}",
                     "vrf 0 iif 0 flags 0x238 class 0 urpf 0 blocks kmc {} umc {0}", "");
}

/** Which key a port's translations have (control 14) is set with the first one. */
Lines subinterface_left(Kind chip)
{
    const std::string vxlan = chip == Kind::trident ? "" : " 187=1";
    const std::string port = "port 7 of Ethernet24: untagged 4094 discard 0 controls 8=1 9=1" +
                             vxlan + " vlan-controls 2=1 4=1";
    Lines lines = {"- " + port, "+ " + port + " 14=8"};
    append(lines, encapsulation_left());
    return lines;
}

/** Under a port that isn't routed: the port stops forwarding, its untagged VLAN stays 4094. */
Lines lone_subinterface_left(Kind chip)
{
    Lines lines = ports_left(chip, {18}, false);
    lines.push_back(free_port(chip, 18, "", " 14=8"));
    append(lines, encapsulation_left());
    return lines;
}

/** It is stored under the port-channel's number and deleted under its own: the record stays. */
Lines channel_subinterface_left(Kind chip)
{
    Lines lines = {"- table: record 0x20003000: iif PortChannel3 VLAN 4094 VRF 1 MTU 9100",
                   "+ table: record 0x20003000: iif nobody's VLAN 20 VRF 1 MTU 9100"};
    for (const int member : {8, 9}) {
        const std::string port = fmt::format(
            "port {} of PortChannel3: untagged 4094 discard 0 controls{} vlan-controls 2=1 4=1",
            member, chip == Kind::trident ? "" : " 187=1");
        append(lines, {"- " + port, "+ " + port + " 14=8"});
    }
    return lines;
}

Lines nothing_left(Kind /*chip*/)
{
    return {};
}

/**
 * An interface that is disabled while MPLS is on has it taken off its VLAN (0x200), and 0x800 is
 * written to the chip alone. The next port that joins the VLAN reads both into the cache.
 */
const std::vector<Change> ROUTED_VLAN_WITHOUT_MPLS = {
    {"VLAN 4094 of", "flags 0x0", "flags 0xa00"},
    {"table: VLAN 4094 cached", "flags 0x0", "flags 0xa00"}};
const std::vector<Change> CACHED_WITHOUT_MPLS = {
    {"VLAN 4094 of", "flags 0x0", "flags 0xa00"},
    {"table: VLAN 4094 cached", "flags 0x0", "flags 0x200"}};
const std::vector<Change> ENCAPSULATION_WITHOUT_MPLS = {
    {"VLAN 10 of", "flags 0x238", "flags 0xa38"},
    {"table: VLAN 10 cached", "flags 0x238", "flags 0xa38"}};
/** An SVI's VLAN keeps the VRF and the reverse-path mode that it had last. */
const std::vector<Change> SVI_AS_LAST = {{"VLAN 100 of", "vrf 1", "vrf 5"},
                                         {"VLAN 100 of", "urpf 0", "urpf 2"},
                                         {"table: VLAN 100 cached", "vrf 1", "vrf 5"},
                                         {"table: VLAN 100 cached", "urpf 0", "urpf 2"}};
const std::vector<Change> PRIMARY_AS_LAST = {{"VLAN 200 of", "vrf 1", "vrf 5"},
                                             {"VLAN 200 of", "urpf 0", "urpf 2"},
                                             {"table: VLAN 200 cached", "vrf 1", "vrf 5"},
                                             {"table: VLAN 200 cached", "urpf 0", "urpf 2"}};
/** The record that stays is of the last add. */
const std::vector<Change> RECORD_AS_LAST = {
    {"table: record 0x20003000", "VRF 1 MTU 9100", "VRF 5 MTU 1400"}};

} // namespace

const std::vector<Case> &cases()
{
    static const std::vector<Case> ALL = {
        {"router_mac", "second router MAC", {}, nothing_left},
        {"port", "Ethernet0", {}, port_left, ROUTED_VLAN_WITHOUT_MPLS},
        {"port_channel", "PortChannel1", {}, port_channel_left, ROUTED_VLAN_WITHOUT_MPLS},
        {"svi", "Vlan100", {}, svi_left, SVI_AS_LAST},
        {"primary_svi", "Vlan200", {"pair 200 201"}, primary_left, PRIMARY_AS_LAST},
        {"subinterface",
         "Ethernet24.10",
         {"Ethernet24"},
         subinterface_left,
         ENCAPSULATION_WITHOUT_MPLS},
        {"lone_subinterface",
         "Ethernet68.10",
         {},
         lone_subinterface_left,
         ENCAPSULATION_WITHOUT_MPLS},
        {"subinterface_of_port_channel",
         "PortChannel3.20",
         {"PortChannel3"},
         channel_subinterface_left,
         RECORD_AS_LAST},
        {"tunnel", "Tunnel1", {}, nothing_left, CACHED_WITHOUT_MPLS},
        {"pair", "pair 200 201", {"Vlan200"}, pair_left},
        {"virtual_mac", "00:00:5e:00:01:08 of Vlan200", {"Vlan200", "pair 200 201"}, nothing_left},
    };
    return ALL;
}

} // namespace roads
