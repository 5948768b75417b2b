/*
 * packet.cpp: see packet.h.
 */
#include "commands/packet.h"

#include "commands/looked_at.h"
#include "config/names.h"
#include "config/shown.h"
#include "packet/capture.h"
#include "packet/explain.h"
#include "packet/frame_values.h"
#include "packet/make_frame.h"
#include "packet/report.h"
#include "session/errors.h"
#include "session/state.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <sstream>
#include <utility>

namespace lab::commands
{

namespace
{

/** "Vlan100,10.1.0.9,02:00:00:00:00:09,Ethernet16". */
routing::Neighbor parse_neighbor(const std::string &text)
{
    std::vector<std::string> parts;
    std::istringstream in(text);
    for (std::string part; std::getline(in, part, ',');) {
        parts.push_back(part);
    }
    constexpr std::size_t NEEDED = 3;
    if (parts.size() < NEEDED || parts.size() > NEEDED + 1) {
        throw session::UsageError(
            fmt::format("--neighbor {} is no INTERFACE,ADDRESS,MAC or INTERFACE,ADDRESS,MAC,PORT",
                        config::in_quotes(text)));
    }
    const auto address = config::parse_ip(parts[1]);
    if (!address) {
        throw session::UsageError(
            fmt::format("--neighbor: {} is no IP address", config::in_quotes(parts[1])));
    }
    return {parts[0], *address, packet::mac_of("--neighbor", parts[2]),
            parts.size() > NEEDED ? parts[NEEDED] : "", 0};
}

void add_neighbors(session::State &state, const PacketOptions &options)
{
    for (const std::string &text : options.neighbors) {
        try {
            state.routing.set_neighbor(parse_neighbor(text));
        } catch (const routing::UnknownName &error) {
            throw session::UsageError(fmt::format("--neighbor: {}", error.what()));
        }
    }
}

int play(session::State &state, const PacketOptions &options, const Terminal &terminal)
{
    const auto *in = packet::find_option(options.words, "--in");
    if (in == nullptr) {
        throw session::UsageError("where the frames come in is missing: --in PORT");
    }
    const std::string port = packet::find_in(in->front(), state).port_name;
    const auto result = packet::play_capture(state, {port, options.capture, options.out});
    if (options.json) {
        packet::print_json(result, terminal.out);
    } else {
        packet::print_text(result, terminal.out);
    }
    return result.ok() ? EXIT_DONE : EXIT_REFUSED;
}

int explain(session::State &state, const PacketOptions &options, const Terminal &terminal)
{
    const auto told = packet::explain(state, packet::make_frame(options.words, state));
    if (options.json) {
        packet::print_json(told, terminal.out);
    } else {
        packet::print_text(told, {terminal.width, terminal.colour}, terminal.out);
    }
    return EXIT_DONE;
}

} // namespace

int packet(const PacketOptions &options, const Terminal &terminal)
{
    simswitch::Switch hardware({.chip = options.chip});
    return packet_on(hardware, options, terminal);
}

int packet_on(simswitch::Switch &hardware, const PacketOptions &options, const Terminal &terminal)
{
    try {
        session::State state{hardware};
        const bool up = bring_up_open(state, options.config, terminal);
        add_neighbors(state, options);
        const int code = options.capture.empty() ? explain(state, options, terminal)
                                                 : play(state, options, terminal);
        return up ? code : EXIT_REFUSED;
    } catch (const session::UsageError &error) {
        fmt::print(terminal.err, "{}\n", config::harmless_lines(error.what()));
        return EXIT_USAGE;
    }
}

} // namespace lab::commands
