/*
 * packet_verbs.cpp: the command that sends a packet through the pipeline, as a
 * trace. packet/explain.h tells where it goes, packet_table.cpp what expectations
 * see of it.
 */
#include "session/verbs.h"

#include "packet/explain.h"
#include "packet/frame_words.h"
#include "packet/make_frame.h"
#include "packet/report.h"
#include "session/errors.h"

#include <algorithm>
#include <cstddef>
#include <sstream>

namespace lab::session
{

namespace
{

/** The addresses that a session knows: of hosts and of the switch. */
std::vector<std::string> known_addresses(const State &state)
{
    std::vector<std::string> addresses;
    for (const auto &neighbor : state.routing.neighbors()) {
        addresses.push_back(neighbor.address.text());
    }
    for (const auto &own : state.routing.addresses()) {
        addresses.push_back(own.prefix.address.text());
    }
    return addresses;
}

std::vector<std::string> values_of(std::string_view option, const State &state)
{
    if (option == "--in") {
        return packet::in_names(state);
    }
    if (option == "--dmac") {
        return packet::destination_names(state);
    }
    if (option == "--proto") {
        return {"udp", "tcp", "icmp"};
    }
    return option == "--ip" || option == "--arp" ? known_addresses(state)
                                                 : std::vector<std::string>{};
}

} // namespace

std::string packet_text(const State &state)
{
    if (!state.packet) {
        return "no packet yet: send one by packet --in PORT --ip SRC DST\n";
    }
    std::ostringstream out;
    packet::print_text(*state.packet, {state.width, state.colour}, out);
    return out.str();
}

Outcome run_packet(State &state, const Words &words)
{
    const auto frame = packet::make_frame(packet::read_frame_words(words), state);
    state.packet = packet::explain(state, frame);
    if (state.tells_packets) {
        return {"", packet_text(state)};
    }
    return {state.packet->summary()};
}

std::vector<std::string> packet_continuations(const Words &words, const State &state)
{
    // How far behind the last option are we?
    const auto last = std::find_if(words.rbegin(), words.rend(),
                                   [](const std::string &word) { return word.starts_with("--"); });
    if (last != words.rend()) {
        const auto behind = static_cast<std::size_t>(last - words.rbegin());
        for (const packet::FrameOption &option : packet::frame_options()) {
            if (option.name == *last && behind < option.count) {
                return values_of(option.name, state);
            }
        }
    }
    std::vector<std::string> names = packet::frame_option_names();
    std::erase_if(names, [&words](const std::string &name) {
        return std::find(words.begin(), words.end(), name) != words.end();
    });
    return names;
}

} // namespace lab::session
