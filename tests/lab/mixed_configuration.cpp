/*
 * mixed_configuration.cpp: see mixed_configuration.h.
 *
 * The 104 ports are dealt once and for all: 40 are routed, 32 make 16
 * port-channels of two, 32 are bridged to VLANs. What grows with the number of
 * interfaces are VLAN interfaces (a fifth), tunnels (a hundredth) and, for the
 * rest, subinterfaces of the ports and port-channels in turn.
 */
#include "mixed_configuration.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

namespace lab_test
{

namespace
{

using simswitch::chip::Kind;

constexpr std::size_t ROUTED_PORTS = 40;
constexpr std::size_t PORT_CHANNELS = 16;
constexpr std::size_t FIRST_MEMBER_PORT = ROUTED_PORTS;
constexpr std::size_t FIRST_BRIDGED_PORT = FIRST_MEMBER_PORT + 2 * PORT_CHANNELS;
constexpr std::size_t PORTS = 104;
constexpr std::size_t BRIDGED_PORTS = PORTS - FIRST_BRIDGED_PORT;
constexpr std::size_t VRFS = 8;

constexpr std::size_t FIRST_SUBINTERFACE_VLAN = 2;
constexpr std::size_t FIRST_SVI_VLAN = 2001;
constexpr std::size_t FIRST_SECONDARY_VLAN = 3901;
constexpr std::size_t PAIRS_MAX = 64;

/** How many there are of each. */
struct Counts {
    std::size_t svis;
    std::size_t tunnels;
    std::size_t subinterfaces;
    std::size_t pairs;        ///< the first VLAN interfaces are primaries of one secondary each
    std::size_t virtual_macs; ///< of VLAN interfaces; one per station of the chip
};

Counts counts_of(std::size_t interfaces, Kind chip)
{
    const std::size_t stations = chip == Kind::trident2 ? 1024 : 512;
    Counts counts{};
    counts.svis = interfaces / 5;
    counts.tunnels = interfaces / 100;
    const std::size_t others = ROUTED_PORTS + PORT_CHANNELS + counts.svis + counts.tunnels;
    counts.subinterfaces = interfaces - std::min(interfaces, others);
    counts.pairs = std::min(PAIRS_MAX, counts.svis / 4);
    // One in a primary has a second station, in the secondary.
    counts.virtual_macs = std::min(counts.svis / 2, stations / 4);
    return counts;
}

/** Writes a configuration table by table. */
class Writer
{
public:
    void begin(std::string_view table)
    {
        text_ += text_.empty() ? "{\n" : "\n  },\n";
        fmt::format_to(std::back_inserter(text_), "  \"{}\": {{\n", table);
        first_ = true;
    }
    /** @param fields  the inside of the row's object */
    void row(std::string_view name, std::string_view fields = {})
    {
        fmt::format_to(std::back_inserter(text_), "{}    \"{}\": {{{}}}", first_ ? "" : ",\n", name,
                       fields);
        first_ = false;
    }
    std::string end() { return std::move(text_) + "\n  }\n}\n"; }

private:
    std::string text_;
    bool first_ = true;
};

std::string port_name(std::size_t port)
{
    return fmt::format("Ethernet{}", port);
}

std::string port_channel_name(std::size_t number)
{
    return fmt::format("PortChannel{}", number + 1);
}

std::string svi_name(std::size_t number)
{
    return fmt::format("Vlan{}", FIRST_SVI_VLAN + number);
}

std::string secondary_name(std::size_t number)
{
    return fmt::format("Vlan{}", FIRST_SECONDARY_VLAN + number);
}

/** A VRF for three interfaces of four. */
std::string vrf_field(std::size_t number)
{
    return number % 4 == 0 ? "" : fmt::format("\"vrf_name\": \"Vrf_{}\"", number % VRFS);
}

/** An IPv4 network of its own for an interface; every third has IPv6 too. */
void write_addresses(Writer &out, std::string_view name, unsigned net, std::size_t number)
{
    out.row(fmt::format("{}|{}.{}.{}.1/24", name, net, number / 256, number % 256));
    if (number % 3 == 0) {
        out.row(fmt::format("{}|fd00:{}:{:x}::1/64", name, net, number));
    }
}

void write_device(Writer &out)
{
    out.begin("DEVICE_METADATA");
    out.row("localhost", R"("hostname": "mixed-1", "mac": "02:00:00:00:0a:01")");
    out.begin("PORT");
    for (std::size_t port = 0; port < PORTS; ++port) {
        out.row(port_name(port), R"("mtu": "9100")");
    }
    out.begin("VRF");
    for (std::size_t vrf = 0; vrf < VRFS; ++vrf) {
        out.row(fmt::format("Vrf_{}", vrf));
    }
}

void write_ports(Writer &out)
{
    out.begin("INTERFACE");
    for (std::size_t port = 0; port < ROUTED_PORTS; ++port) {
        out.row(port_name(port), vrf_field(port));
        write_addresses(out, port_name(port), 11, port);
    }
    out.begin("PORTCHANNEL");
    for (std::size_t number = 0; number < PORT_CHANNELS; ++number) {
        out.row(port_channel_name(number), R"("mtu": "9100")");
    }
    out.begin("PORTCHANNEL_MEMBER");
    for (std::size_t number = 0; number < PORT_CHANNELS; ++number) {
        for (std::size_t member = 0; member < 2; ++member) {
            out.row(fmt::format("{}|{}", port_channel_name(number),
                                port_name(FIRST_MEMBER_PORT + 2 * number + member)));
        }
    }
    out.begin("PORTCHANNEL_INTERFACE");
    for (std::size_t number = 0; number < PORT_CHANNELS; ++number) {
        out.row(port_channel_name(number), vrf_field(number));
        write_addresses(out, port_channel_name(number), 12, number);
    }
}

void write_vlans(Writer &out, const Counts &counts)
{
    out.begin("VLAN");
    for (std::size_t number = 0; number < counts.svis; ++number) {
        out.row(svi_name(number), R"("mtu": "9000")");
    }
    for (std::size_t number = 0; number < counts.pairs; ++number) {
        out.row(secondary_name(number));
    }
    out.begin("VLAN_MEMBER");
    for (std::size_t number = 0; number < counts.svis; ++number) {
        const std::size_t port = FIRST_BRIDGED_PORT + number % BRIDGED_PORTS;
        out.row(fmt::format("{}|{}", svi_name(number), port_name(port)),
                R"("tagging_mode": "tagged")");
    }
    out.begin("VLAN_INTERFACE");
    for (std::size_t number = 0; number < counts.svis; ++number) {
        out.row(svi_name(number), vrf_field(number));
        write_addresses(out, svi_name(number), 13, number);
    }
    out.begin("PVLAN");
    for (std::size_t number = 0; number < counts.pairs; ++number) {
        out.row(fmt::format("{}|{}", svi_name(number), secondary_name(number)));
    }
    out.begin("VRRP");
    for (std::size_t number = 0; number < counts.virtual_macs; ++number) {
        out.row(fmt::format("{}|{}", svi_name(number), 1 + number % 255),
                fmt::format("\"vip\": [\"13.{}.{}.2\"]", number / 256, number % 256));
    }
}

void write_subinterfaces(Writer &out, const Counts &counts)
{
    out.begin("VLAN_SUB_INTERFACE");
    constexpr std::size_t mains = ROUTED_PORTS + PORT_CHANNELS;
    for (std::size_t number = 0; number < counts.subinterfaces; ++number) {
        const std::size_t main = number % mains;
        const std::string name = fmt::format(
            "{}.{}", main < ROUTED_PORTS ? port_name(main) : port_channel_name(main - ROUTED_PORTS),
            FIRST_SUBINTERFACE_VLAN + number / mains);
        out.row(name, vrf_field(number));
        write_addresses(out, name, 14, number);
    }
}

void write_tunnels(Writer &out, const Counts &counts)
{
    out.begin("TUNNEL");
    for (std::size_t number = 0; number < counts.tunnels; ++number) {
        out.row(fmt::format("Tunnel{}", number + 1),
                fmt::format(R"("tunnel_type": "IPINIP", "dst_ip": "15.0.{}.{}")", number / 256,
                            number % 256));
    }
}

} // namespace

std::string mixed_configuration(std::size_t interfaces, Kind chip)
{
    const Counts counts = counts_of(interfaces, chip);
    Writer out;
    write_device(out);
    write_ports(out);
    write_vlans(out, counts);
    write_subinterfaces(out, counts);
    write_tunnels(out, counts);
    return out.end();
}

} // namespace lab_test
