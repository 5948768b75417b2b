/*
 * frame_words.cpp: see frame_words.h.
 */
#include "packet/frame_words.h"

#include "session/errors.h"
#include "session/nearest.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <utility>

namespace lab::packet
{

namespace
{

constexpr std::array OPTIONS = {
    FrameOption{"--in", "PORT", 1,
                "Where it comes in: a port, a port-channel (its first member), a subinterface (its "
                "port, with its VLAN)"},
    FrameOption{"--vlan", "N", 1, "Its tag's VLAN; 0 is a tag with a priority only"},
    FrameOption{"--dmac", "MAC", 1,
                "Its destination: a MAC, router, broadcast, or an interface: its virtual MAC where "
                "it has one, else its own (default router)"},
    FrameOption{"--smac", "MAC", 1, "Its source MAC (default 02:00:00:00:00:fe)"},
    FrameOption{"--ip", "SRC DST", 2, "An IPv4 or IPv6 packet between these addresses"},
    FrameOption{"--ttl", "N", 1, "The packet's TTL or hop limit (default 64)"},
    FrameOption{"--size", "BYTES", 1,
                "Bytes of the frame without its FCS, up to 9600 (default 64, or what the headers "
                "need)"},
    FrameOption{"--proto", "PROTO", 1,
                "What the packet carries: udp, tcp, icmp or a number (default udp)"},
    FrameOption{"--sport", "N", 1, "Source port of UDP or TCP (default 10000)"},
    FrameOption{"--dport", "N", 1, "Destination port of UDP or TCP (default 20000)"},
    FrameOption{"--mpls", "LABEL", 1, "A label in front of the packet"},
    FrameOption{"--arp", "SENDER TARGET", 2, "An ARP request of SENDER for TARGET"},
    FrameOption{"--hex", "BYTES", 1, "The frame's bytes in hex; nothing but --in goes with it"},
};

const FrameOption &option(const std::string &name)
{
    const auto *const found =
        std::find_if(OPTIONS.begin(), OPTIONS.end(),
                     [&name](const FrameOption &known) { return known.name == name; });
    if (found == OPTIONS.end()) {
        throw session::UsageError(session::unknown("option", name, frame_option_names()));
    }
    return *found;
}

} // namespace

std::span<const FrameOption> frame_options()
{
    return OPTIONS;
}

std::vector<std::string> frame_option_names()
{
    std::vector<std::string> names;
    names.reserve(OPTIONS.size());
    for (const FrameOption &known : OPTIONS) {
        names.emplace_back(known.name);
    }
    return names;
}

FrameWords read_frame_words(const std::vector<std::string> &words)
{
    FrameWords read;
    for (auto at = words.begin(); at != words.end();) {
        const FrameOption &known = option(*at);
        if (read.contains(known.name)) {
            throw session::UsageError(fmt::format("{} is given twice", known.name));
        }
        ++at;
        std::vector<std::string> values;
        while (values.size() < known.count && at != words.end() && !at->starts_with("--")) {
            values.push_back(*at++);
        }
        if (values.size() < known.count) {
            throw session::UsageError(fmt::format("behind {} stands {}", known.name, known.values));
        }
        read.emplace(known.name, std::move(values));
    }
    return read;
}

} // namespace lab::packet
