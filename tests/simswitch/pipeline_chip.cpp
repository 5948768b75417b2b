/*
 * pipeline_chip.cpp: a chip with its packet pipeline for tests.
 */
#include "pipeline_chip.h"

namespace simswitch::chip::pipeline
{

namespace
{

void done(const Outcome &outcome)
{
    EXPECT_THAT(outcome, Done());
}

} // namespace

PipelineTest::PipelineTest(Kind kind) : chip(kind)
{
    done(chip.vlans.create(ROUTED_VLAN));
}

void PipelineTest::interface(int iif, int vlan, const L3Ingress &ingress)
{
    done(chip.l3_interfaces.create(
        iif, {.vrf = 1, .mac = ROUTER_MAC, .vlan = static_cast<std::uint16_t>(vlan), .mtu = 1500}));
    done(chip.l3_ingresses.create(iif, ingress));
}

void PipelineTest::off_flood_lists(int port)
{
    for (const int from_top : {1, 3, 4, 5, 8}) {
        const int entry = static_cast<int>(chip.limits().rule_region) - from_top;
        PortSet ports;
        done(chip.field_entries.get_port_action(entry, ACTION_REDIRECT_PORTS, ports));
        ports.remove(port);
        done(chip.field_entries.remove_action(entry, ACTION_REDIRECT_PORTS));
        done(chip.field_entries.add_port_action(entry, ACTION_REDIRECT_PORTS, ports));
        done(chip.field_entries.install(entry));
    }
}

void PipelineTest::routed_port(int port, int iif, const L3Ingress &ingress)
{
    interface(iif, ROUTED_VLAN, ingress);
    done(chip.vlans.add_ports(ROUTED_VLAN, {0, port}, {port}));
    done(chip.ports.set_control(port, PORT_CONTROL_IP4, 1));
    done(chip.ports.set_control(port, PORT_CONTROL_IP6, 1));
    done(chip.ports.set_untagged_vlan(port, ROUTED_VLAN));
    done(chip.ports.set_control(port, PORT_CONTROL_INGRESS, iif));
    done(chip.ports.set_vlan_control(port, VLAN_CONTROL_TRANSLATES, 1));
    done(chip.ports.set_vlan_control(port, VLAN_CONTROL_DROPS_ON_MISS, 1));
    off_flood_lists(port);
}

void PipelineTest::subinterface(int gport, const std::vector<int> &ports, int vlan, int iif)
{
    interface(iif, vlan);
    if (chip.vlans.find(vlan) == nullptr) {
        done(chip.vlans.create(vlan));
        done(chip.vlans.set_controls(vlan, {.flags = 0x278}));
    }
    for (const int port : ports) {
        done(chip.vlans.add_ports(vlan, {0, port}, {}));
        done(chip.ports.set_vlan_control(port, VLAN_CONTROL_TRANSLATE_KEY, KEY_TYPE_PORT_OUTER));
    }
    done(chip.vlan_translations.create(
        {gport, KEY_TYPE_PORT_OUTER, vlan, ANY_INNER_VLAN},
        {.new_outer_vlan = ROUTED_VLAN, .ingress_if = iif, .outer_tag_action = OUTER_TAG_REPLACE}));
}

void PipelineTest::svi(int vlan, int iif, const PortSet &ports)
{
    interface(iif, vlan);
    bridged_vlan(vlan, ports);
    done(chip.vlans.set_controls(vlan, {.vrf = 1, .ingress_if = static_cast<std::uint32_t>(iif)}));
}

void PipelineTest::bridged_vlan(int vlan, const PortSet &ports, const PortSet &untagged)
{
    done(chip.vlans.create(vlan));
    done(chip.vlans.add_ports(vlan, ports, untagged));
}

void PipelineTest::trunk(int id, const std::vector<int> &ports)
{
    Trunk record;
    for (const int port : ports) {
        record.members.push_back({.gport = module_port(0, port)});
    }
    done(chip.trunks.create(id, record));
}

int PipelineTest::router_mac(std::uint32_t flags)
{
    int id = 0;
    done(chip.stations.create({.flags = flags, .mac = ROUTER_MAC, .mac_mask = BROADCAST}, id));
    return id;
}

int PipelineTest::next_hop(int iif, int port)
{
    int id = 0;
    done(chip.egresses.create({.interface = iif, .mac = OTHER_MAC, .port = port}, id));
    return id;
}

void PipelineTest::route(const std::string &prefix, int next_hop, int vrf)
{
    const std::size_t slash = prefix.find('/');
    const std::string net = prefix.substr(0, slash);
    Address mask{};
    for (int bit = 0; bit < std::stoi(prefix.substr(slash + 1)); ++bit) {
        mask.at(static_cast<std::size_t>(bit / 8)) |= static_cast<std::uint8_t>(0x80 >> (bit % 8));
    }
    RouteKey key = ip6_key(vrf, address(net), mask);
    key.ip6 = net.find(':') != std::string::npos;
    done(chip.routes.create(
        key, {.next_hop = next_hop, .multipath = next_hop >= FIRST_MULTIPATH_GROUP}));
}

std::string PipelineTest::send(int port, const Bytes &frame)
{
    trace = {};
    pipeline.trace(port, frame, result, trace);
    const Verdict traced = result.verdict;
    const Reason reason = result.reason;
    const PortSet tagged = result.tagged;
    const PortSet untagged = result.untagged;
    pipeline.run(port, frame, result);
    EXPECT_EQ(result.verdict, traced);
    EXPECT_EQ(text(result.reason), std::string(text(reason)));
    EXPECT_EQ(result.tagged, tagged);
    EXPECT_EQ(result.untagged, untagged);
    return trace.verdict();
}

Bytes PipelineTest::got(int port) const
{
    Bytes bytes(result.size_on(port));
    EXPECT_EQ(result.write(port, bytes), bytes.size());
    return bytes;
}

std::string PipelineTest::line(Stage stage) const
{
    constexpr std::array<const char *, 3> MARKS = {"HIT", "MISS", "-"};
    for (const Line &line : trace.lines()) {
        if (line.stage == stage) {
            return fmt::format("{} {} {} {}", MARKS.at(static_cast<std::size_t>(line.mark)),
                               line.table, line.id, line.text);
        }
    }
    return "";
}

} // namespace simswitch::chip::pipeline
