/*
 * forward.cpp: the switch of the tests of forwarding, and its frames in words.
 */
#include "forward.h"

#include "session/words.h"
#include "support/library_test.h"

#include <fmt/ranges.h>

#include <algorithm>
#include <utility>

namespace lab_test
{

namespace
{

namespace chip = simswitch::chip;
namespace pipeline = simswitch::chip::pipeline;
using Bytes = std::vector<std::uint8_t>;
using pipeline::Frame;

constexpr std::size_t MACS = 12;

/** What a frame has behind its IP header, or behind its tags. */
std::span<const std::uint8_t> content(const Frame &frame, bool routed)
{
    const std::size_t header = frame.is_ip6() ? 40 : 20;
    return frame.bytes.subspan(frame.l3 + (routed ? header : 0));
}

/** The packet in a tunnel's packet, as a frame of its own. */
Bytes unwrapped(const Frame &outer)
{
    const auto packet = outer.bytes.subspan(outer.l3 + pipeline::IP4_HEADER);
    Bytes frame(outer.bytes.begin(), outer.bytes.begin() + MACS);
    const std::uint16_t type = packet[0] >> 4 == 6 ? pipeline::TYPE_IP6 : pipeline::TYPE_IP4;
    frame.push_back(static_cast<std::uint8_t>(type >> 8));
    frame.push_back(static_cast<std::uint8_t>(type & 0xff));
    frame.insert(frame.end(), packet.begin(), packet.end());
    return frame;
}

std::string packet_text(const Frame &frame)
{
    if (!frame.is_ip() || frame.fault != nullptr) {
        return fmt::format("type {:#06x}{}{}", frame.type, frame.fault == nullptr ? "" : ", ",
                           frame.fault == nullptr ? "" : frame.fault);
    }
    return fmt::format("{} > {} ttl {}", pipeline::address_text(frame.is_ip6(), frame.from),
                       pipeline::address_text(frame.is_ip6(), frame.to), frame.ttl);
}

/** A word of a flow's number. */
void add_word(std::uint32_t &number, std::uint32_t word)
{
    number = (number ^ word) * 0x85ebca6bU;
    number ^= number >> 13;
}

} // namespace

Traffic::Traffic(simswitch::Switch &hardware, const lab::config::Description &config)
    : pipeline(hardware.chip)
{
    names_[chip::CPU_PORT] = "CPU";
    for (const auto &[name, port] : config.ports) {
        names_[static_cast<int>(port.chip_port)] = name;
    }
}

std::string Traffic::name(int port) const
{
    const auto found = names_.find(port);
    return found == names_.end() ? fmt::format("port {}", port) : found->second;
}

std::string Traffic::tell(std::span<const std::uint8_t> frame)
{
    if (result_.verdict != pipeline::Verdict::sent) {
        return fmt::format("{}: {}",
                           result_.verdict == pipeline::Verdict::to_cpu ? "cpu" : "dropped",
                           pipeline::text(result_.reason));
    }
    Lines ports;
    std::string looks;
    Frame came;
    pipeline::parse(frame, came);
    for (int port = 0; port <= chip::LAST_PORT; ++port) {
        if (!result_.left_on(port)) {
            continue;
        }
        Bytes wire(result_.size_on(port));
        EXPECT_EQ(result_.write(port, wire), wire.size());
        Frame left;
        EXPECT_TRUE(pipeline::parse(wire, left));
        ports.push_back(
            fmt::format("{} {}", name(port),
                        left.tags == 0 ? "untagged" : fmt::format("tagged {}", left.tag_vlan())));
        std::string seen = fmt::format("{} > {}, {}", chip::text(left.source),
                                       chip::text(left.destination), packet_text(left));
        if (result_.outer != 0) {
            const Bytes inside = unwrapped(left);
            Frame inner;
            EXPECT_TRUE(pipeline::parse(inside, inner));
            seen += fmt::format(" around {}", packet_text(inner));
            EXPECT_EQ(inside.size() - inner.l3, came.l3_length);
        } else {
            const bool is_routed = result_.reason == pipeline::Reason::routed;
            EXPECT_TRUE(std::ranges::equal(content(left, is_routed), content(came, is_routed)))
                << seen;
        }
        EXPECT_TRUE(looks.empty() || seen == looks) << "ports get different frames";
        looks = std::move(seen);
    }
    return fmt::format("{}: {}{}", fmt::join(ports, ", "), looks, result_.cpu ? ", and cpu" : "");
}

std::string Traffic::send(int port, std::span<const std::uint8_t> frame)
{
    pipeline::Trace trace;
    pipeline.trace(port, frame, result_, trace);
    const std::string told = tell(frame);
    pipeline.run(port, frame, result_);
    std::string done = tell(frame);
    EXPECT_EQ(done, told);
    return done;
}

const std::vector<Place> &places()
{
    static const std::vector<Place> ALL = {
        {"port",
         "Ethernet0",
         "--in Ethernet0",
         "10.0.0.9",
         "2001:db8::9",
         "02:aa:00:00:00:00",
         "untagged",
         {"Ethernet0"}},
        {"port_channel",
         "PortChannel1",
         "--in Ethernet12",
         "10.0.1.9",
         "2001:db8:1::9",
         "02:aa:00:00:00:01",
         "untagged",
         {"Ethernet8", "Ethernet12"}},
        {"svi",
         "Vlan100",
         "--in Ethernet20 --vlan 100",
         "10.0.100.9",
         "2001:db8:100::9",
         "02:aa:00:00:01:00",
         "tagged 100",
         {"Ethernet20"}},
        {"subinterface",
         "Ethernet24.10",
         "--in Ethernet24 --vlan 10",
         "10.0.10.9",
         "2001:db8:10::9",
         "02:aa:00:00:00:10",
         "tagged 10",
         {"Ethernet24"}},
        {"subinterface_of_port_channel",
         "PortChannel3.20",
         "--in Ethernet60 --vlan 20",
         "10.0.20.9",
         "2001:db8:20::9",
         "02:aa:00:00:00:20",
         "tagged 20",
         {"Ethernet28", "Ethernet32", "Ethernet60"}},
        {"tunnel",
         "Tunnel1",
         "",
         "10.30.0.9",
         "2001:db8:30::9",
         "02:aa:00:00:00:04",
         "untagged",
         {"Ethernet4"}},
    };
    return ALL;
}

const Place &peer()
{
    static const Place PEER = {"peer",     "Ethernet4",     "--in Ethernet4",
                               "10.0.4.9", "2001:db8:4::9", "02:aa:00:00:00:04",
                               "untagged", {"Ethernet4"}};
    return PEER;
}

const Place &place(std::string_view label)
{
    return *std::ranges::find(places(), label, &Place::label);
}

std::uint32_t flow_number(std::string_view from, std::string_view to, int source_port)
{
    constexpr std::uint32_t DESTINATION_PORT = 20000;
    std::uint32_t number = 0x9e3779b9U;
    for (const std::string_view text : {from, to}) {
        const auto address = lab::config::parse_ip(text).value();
        for (std::size_t i = 0; i < (address.ipv6 ? 16U : 4U); i += 4) {
            add_word(number, std::uint32_t{address.bytes[i]} << 24 |
                                 std::uint32_t{address.bytes[i + 1]} << 16 |
                                 std::uint32_t{address.bytes[i + 2]} << 8 | address.bytes[i + 3]);
        }
    }
    add_word(number, 17);
    add_word(number, static_cast<std::uint32_t>(source_port) << 16 | DESTINATION_PORT);
    return number ^ number >> 16;
}

std::string routed(const Place &to, std::string_view from, std::string_view target,
                   const std::string &port)
{
    const std::size_t member = (flow_number(from, target) / 256) % to.ports.size();
    const bool tunnel = std::string_view(to.label) == "tunnel";
    return fmt::format("{} {}: {} > {}, {}{} > {} ttl 63", port.empty() ? to.ports[member] : port,
                       to.tag, OWN_MAC, to.mac, tunnel ? "10.9.1.1 > 10.9.0.1 ttl 64 around " : "",
                       from, target);
}

Lab::Lab(Kind chip, const std::filesystem::path &state_dir, std::string_view config)
    : hardware((rtifhal_test::reset_library(),
                simswitch::Options{.chip = chip, .state_dir = state_dir})),
      session(hardware, state_dir, RTIFHAL_SOURCE_DIR),
      traffic{(run({fmt::format("up {} open", config), "ipv6 on"}), hardware),
              session.state().config.value()}
{
    EXPECT_EQ(session.state().config->skipped.size(), 0U);
    EXPECT_EQ(session.state().routing.problems(), Lines{});
}

void Lab::run(const Lines &lines)
{
    for (const std::string &line : lines) {
        const auto outcome = session.execute(line);
        EXPECT_FALSE(outcome.refused) << line << "\n" << outcome.shown;
    }
}

lab::packet::MadeFrame Lab::frame(const std::string &words) const
{
    return lab::packet::make_frame(lab::packet::read_frame_words(lab::session::split(words)),
                                   session.state());
}

std::string Lab::send(const std::string &words)
{
    const auto made = frame(words);
    return traffic.send(made.port, made.bytes);
}

std::string Lab::from_to(const Place &from, const Place &to, bool ip6)
{
    return send(
        fmt::format("{} --ip {} {}", from.in, ip6 ? from.ip6 : from.ip4, ip6 ? to.ip6 : to.ip4));
}

int Lab::iif(std::string_view interface) const
{
    return session.state().interface(interface).lif->iif();
}

std::string chip_name(Kind chip)
{
    return chip == Kind::trident ? "Trident" : "Trident2";
}

} // namespace lab_test
