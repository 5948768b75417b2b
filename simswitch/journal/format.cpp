/*
 * format.cpp: the text of each kind of argument. Beside it: call.h, which has
 * the table.
 */
#include "journal/format.h"

#include "rtifhal_types.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <bit>
#include <charconv>

namespace simswitch
{

namespace
{

constexpr std::uint32_t ROUTE_FLAG_IP6 = 0x20000;
constexpr int PORTS = 256;
// A run of fewer neighbours is written out port by port.
constexpr int SHORTEST_RANGE = 3;

void append_number(std::string &out, auto value, int base = 10)
{
    std::array<char, 24> digits{};
    const auto end = std::to_chars(digits.begin(), digits.end(), value, base).ptr;
    out.append(digits.begin(), end);
}

void append_hex(std::string &out, std::uint32_t value)
{
    out += "0x";
    append_number(out, value, 16);
}

void append_hex_byte(std::string &out, std::uint8_t byte)
{
    constexpr std::string_view DIGITS = "0123456789abcdef";
    const std::array<char, 2> digits = {DIGITS[byte >> 4U], DIGITS[byte & 0xFU]};
    out.append(digits.data(), digits.size());
}

/** The first port from one on that is in a set, or with `there` false that isn't; PORTS for none.
 */
int next_port(const bcm_pbmp_t &ports, int from, bool there)
{
    while (from < PORTS) {
        const auto bit = static_cast<unsigned>(from);
        const std::uint32_t word = ports.pbits[bit / 32];
        const std::uint32_t rest = (there ? word : ~word) >> (bit % 32);
        if (rest != 0) {
            return from + std::countr_zero(rest);
        }
        from += 32 - static_cast<int>(bit % 32);
    }
    return PORTS;
}

/** Writes the fields of a record: "{name=value name=value}". */
class Fields
{
public:
    explicit Fields(std::string &out) : out_(out) { out_ += '{'; }
    ~Fields() { out_ += '}'; }
    Fields(const Fields &) = delete;
    Fields &operator=(const Fields &) = delete;

    Fields &name(std::string_view name)
    {
        if (out_.back() != '{') {
            out_ += ' ';
        }
        out_ += name;
        out_ += '=';
        return *this;
    }
    Fields &hex(std::string_view field, std::uint32_t value)
    {
        name(field);
        append_hex(out_, value);
        return *this;
    }
    Fields &number(std::string_view field, auto value)
    {
        name(field);
        append_number(out_, value);
        return *this;
    }
    Fields &value(std::string_view field, const auto &record)
    {
        name(field);
        append_value(out_, record);
        return *this;
    }
    /** "name=value/mask", for what matches under a mask. */
    Fields &masked(std::string_view field, const auto &value, const auto &mask)
    {
        name(field);
        append_value(out_, value);
        out_ += '/';
        append_value(out_, mask);
        return *this;
    }

private:
    std::string &out_;
};

/** Leading one bits of a mask of IPv6; what stands behind a gap doesn't count. */
int prefix_length(const std::uint8_t (&mask)[16])
{
    int length = 0;
    for (const std::uint8_t byte : mask) {
        length += std::countl_one(byte);
        if (byte != 0xFF) {
            break;
        }
    }
    return length;
}

void append_prefix(std::string &out, const bcm_l3_route_t &route)
{
    std::array<char, INET6_ADDRSTRLEN> address{};
    int length = 0;
    if ((route.l3a_flags & ROUTE_FLAG_IP6) != 0) {
        inet_ntop(AF_INET6, route.l3a_ip6_net, address.data(), address.size());
        length = prefix_length(route.l3a_ip6_mask);
    } else {
        const std::uint32_t network = htonl(route.l3a_subnet);
        inet_ntop(AF_INET, &network, address.data(), address.size());
        length = std::countl_one(route.l3a_ip_mask);
    }
    out += address.data();
    out += '/';
    append_number(out, length);
}

void append_named(std::string &out, const void *pointer, std::string_view name)
{
    out += pointer == nullptr ? std::string_view("null") : name;
}

bool needs_escape(char letter)
{
    return static_cast<unsigned char>(letter) < 0x20 || letter == 0x7F || letter == '"' ||
           letter == '\\';
}

void append_escaped(std::string &out, char letter)
{
    switch (letter) {
    case '\n':
        out += "\\n";
        break;
    case '\t':
        out += "\\t";
        break;
    case '\r':
        out += "\\r";
        break;
    case '"':
    case '\\':
        out += '\\';
        out += letter;
        break;
    default:
        out += "\\x";
        append_hex_byte(out, static_cast<std::uint8_t>(letter));
    }
}

} // namespace

void append_value(std::string &out, int value)
{
    append_number(out, value);
}
void append_value(std::string &out, std::uint32_t value)
{
    append_hex(out, value);
}
void append_value(std::string &out, long value)
{
    append_number(out, value);
}
void append_value(std::string &out, unsigned long value)
{
    append_number(out, value);
}

void append_value(std::string &out, const char *text)
{
    if (text == nullptr) {
        out += "null";
    } else {
        append_value(out, std::string_view(text));
    }
}

void append_value(std::string &out, std::string_view text)
{
    out += '"';
    while (!text.empty()) {
        const auto end = std::find_if(text.begin(), text.end(), needs_escape);
        const auto plain = static_cast<std::size_t>(end - text.begin());
        out += text.substr(0, plain);
        text.remove_prefix(plain);
        if (!text.empty()) {
            append_escaped(out, text.front());
            text.remove_prefix(1);
        }
    }
    out += '"';
}

void append_value(std::string &out, Word word)
{
    out += word.text;
}

void append_value(std::string &out, const bcm_pbmp_t &ports)
{
    out += '{';
    for (int port = next_port(ports, 0, true); port < PORTS;) {
        int last = next_port(ports, port, false) - 1;
        if (last - port + 1 < SHORTEST_RANGE) {
            last = port;
        }
        if (out.back() != '{') {
            out += ',';
        }
        append_number(out, port);
        if (last > port) {
            out += '-';
            append_number(out, last);
        }
        port = next_port(ports, last + 1, true);
    }
    out += '}';
}

void append_value(std::string &out, const bcm_mac_t &mac)
{
    for (std::size_t i = 0; i < sizeof(bcm_mac_t); ++i) {
        if (i != 0) {
            out += ':';
        }
        append_hex_byte(out, mac[i]);
    }
}

void append_value(std::string &out, const bcm_l2_station_t &station)
{
    Fields(out)
        .hex("flags", station.flags)
        .masked("mac", station.dst_mac, station.dst_mac_mask)
        .masked("vlan", station.vlan, station.vlan_mask)
        .masked("port", station.src_port, station.src_port_mask);
}

void append_value(std::string &out, const bcm_l3_intf_t &intf)
{
    Fields(out)
        .hex("flags", intf.l3a_flags)
        .number("id", intf.l3a_intf_id)
        .value("mac", intf.l3a_mac_addr)
        .number("vid", intf.l3a_vid)
        .number("vrf", intf.l3a_vrf)
        .number("mtu", intf.l3a_mtu)
        .number("ttl", intf.l3a_ttl)
        .number("tunnel", intf.l3a_tunnel_idx);
}

void append_value(std::string &out, const bcm_l3_ingress_t &ingress)
{
    Fields(out)
        .hex("flags", ingress.flags)
        .number("vrf", ingress.vrf)
        .number("urpf", ingress.urpf_mode)
        .number("class", ingress.intf_class)
        .number("ipmc", ingress.ipmc_intf_id)
        .number("qos", ingress.qos_map_id);
}

void append_value(std::string &out, const bcm_l3_egress_t &egress)
{
    Fields(out)
        .hex("flags", egress.flags)
        .number("intf", egress.intf)
        .value("mac", egress.mac_addr)
        .number("vlan", egress.vlan)
        .number("module", egress.module)
        .number("port", egress.port)
        .number("trunk", egress.trunk)
        .number("encap", egress.encap_id);
}

void append_value(std::string &out, const bcm_l3_egress_ecmp_t &ecmp)
{
    Fields(out).hex("flags", ecmp.flags).number("id", ecmp.ecmp_intf);
}

void append_value(std::string &out, const bcm_l3_route_t &route)
{
    Fields fields(out);
    fields.hex("flags", route.l3a_flags).number("vrf", route.l3a_vrf).name("net");
    append_prefix(out, route);
    fields.number("intf", route.l3a_intf);
}

void append_value(std::string &out, const bcm_vlan_control_vlan_t &control)
{
    Fields(out)
        .number("vrf", control.vc_vrf)
        .number("iif", control.vc_ingress_if)
        .hex("flags", control.vc_flags)
        .number("class", control.vc_class)
        .number("urpf", control.vc_urpf_mode);
}

void append_value(std::string &out, const bcm_vlan_block_t &block)
{
    Fields(out)
        .value("kmc", block.known_multicast)
        .value("umc", block.unknown_multicast)
        .value("uuc", block.unknown_unicast)
        .value("bc", block.broadcast);
}

void append_value(std::string &out, const bcm_vlan_action_set_t &action)
{
    Fields(out)
        .number("vlan", action.new_outer_vlan)
        .number("iif", action.ingress_if)
        .number("ot_outer", action.ot_outer)
        .number("dt_outer", action.dt_outer);
}

void append_value(std::string &out, const bcm_trunk_info_t &info)
{
    Fields(out)
        .hex("flags", info.flags)
        .number("psc", info.psc)
        .number("ipmc_psc", info.ipmc_psc)
        .number("dlf", info.dlf_index)
        .number("mc", info.mc_index)
        .number("ipmc", info.ipmc_index)
        .number("size", info.dynamic_size);
}

void append_value(std::string &out, const bcm_trunk_member_t &member)
{
    Fields(out).hex("flags", member.flags).hex("gport", static_cast<std::uint32_t>(member.gport));
}

void append_value(std::string &out, const fwm_pc_sdb_value_t &value)
{
    Fields(out).hex("ifindex", value.ifindex).number("tid", value.tid);
}

void append_value(std::string &out, const l3lif *lif)
{
    if (lif == nullptr) {
        out += "null";
        return;
    }
    out += "lif(";
    append_hex(out, lif->ifindex);
    out += ')';
}

void append_value(std::string &out, const avl_tree_t *tree)
{
    append_named(out, tree, "tree");
}
void append_value(std::string &out, const avl_node_t *node)
{
    append_named(out, node, "node");
}

void append_value(std::string &out, avl_compare_t compare)
{
    out += compare == nullptr ? "null" : "compare";
}

void append_value(std::string &out, const void *pointer)
{
    append_named(out, pointer, "record");
}
void append_value(std::string &out, std::nullptr_t)
{
    out += "null";
}

void append_value(std::string &out, std::span<const int> ids)
{
    out += '[';
    for (const int id : ids) {
        if (out.back() != '[') {
            out += ',';
        }
        append_number(out, id);
    }
    out += ']';
}

void append_value(std::string &out, std::span<const bcm_trunk_member_t> members)
{
    out += '[';
    for (const bcm_trunk_member_t &member : members) {
        if (out.back() != '[') {
            out += ',';
        }
        append_value(out, member);
    }
    out += ']';
}

void append_output(std::string &outputs, std::string_view name, std::string_view value)
{
    if (!outputs.empty()) {
        outputs += ' ';
    }
    outputs += name;
    outputs += '=';
    outputs += value;
}

} // namespace simswitch
