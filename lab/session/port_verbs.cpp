/*
 * port_verbs.cpp: the commands on ports that need no routed interface, and the
 * library's own dumps. vxlan_verbs.cpp has VXLAN ports.
 */
#include "session/verbs.h"

#include "l3lif/dump.h"
#include "l3lif/port_requests.h"
#include "session/errors.h"
#include "session/nearest.h"

#include <fmt/format.h>

#include <cstdint>
#include <utility>

namespace lab::session
{

Outcome run_drop(State &state, const Words &words)
{
    const bool add = adds(words);
    const int port = static_cast<int>(state.port(words[1]).chip_port);
    const std::string command = command_text("drop", words);
    Outcome outcome = state.finish(
        command, {{command, add ? l3lif::add_drop_port(state.hardware, command, port)
                                : l3lif::remove_drop_port(state.hardware, command, port)}});
    if (!add) {
        outcome.summary += "; no port leaves the drop rule, it stays as it is";
    }
    return outcome;
}

Outcome run_member_port(State &state, const Words &words)
{
    if (words.size() == 2 && words[1] != "clear") {
        throw UsageError(unknown("word", words[1], {"clear"}) + " (clear, or nothing)");
    }
    const std::uint32_t ifindex = state.ifindex(words[0]);
    const std::string command = command_text("member-port", words);
    Outcome outcome = state.finish(
        command,
        {{command, l3lif::set_member_port(state.hardware, command, ifindex, words.size() == 2)}});
    const l3lif::Interface *interface = state.layer.routed().find(words[0]);
    if (outcome.refused && interface != nullptr && interface->lif->plan().chip_port == 0) {
        outcome.shown += fmt::format(
            "    {} is no port: the library goes on all the same, with the number -1\n", words[0]);
    }
    return outcome;
}

Outcome run_dump(State &state, const Words &words)
{
    const std::string command = command_text("dump", words);
    if (words.empty()) {
        l3lif::Dump dump = l3lif::dump_numbers(state.hardware, command);
        Outcome outcome = state.finish(command, {{command, std::move(dump.request)}});
        outcome.shown += dump.text;
        return outcome;
    }
    const l3lif::Lif &lif = *state.interface(words.front()).lif;
    l3lif::Dump dump = l3lif::dump_interface(state.hardware, lif, command);
    Outcome outcome = state.finish(command, {{command, std::move(dump.request)}});
    outcome.shown += dump.text;
    const std::string why = l3lif::why_no_dump(lif.plan());
    if (outcome.refused && !why.empty()) {
        outcome.shown += fmt::format("    {}; 'show stations' has all\n", why);
    } else if (!outcome.refused && dump.text.empty()) {
        outcome.summary += ", no virtual MAC";
    }
    return outcome;
}

} // namespace lab::session
