/*
 * verbs.cpp: see verbs.h.
 */
#include "session/verbs.h"

#include "session/errors.h"
#include "session/nearest.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <iterator>

namespace lab::session
{

namespace
{

constexpr std::array VERBS = {
    Verb{"up", "up FILE [open]",
         "reads a configuration and brings all of it up, with open the families of its addresses",
         1, 2, run_up},
    Verb{"add", "add NAME", "brings an interface up; one that is up is programmed again in place",
         1, 1, run_add},
    Verb{"del", "del NAME [keep]",
         "takes an interface down for good, or with its record and number kept", 1, 2, run_del},
    Verb{"set", "set NAME PROPERTY VALUE", "changes a property of an interface", 3, 3, run_set},
    Verb{"get", "get NAME PROPERTY", "reads a property back from the library", 2, 2, run_get},
    Verb{"ipv6", "ipv6 on|off", "switches IPv6 of the whole switch", 1, 1, run_ipv6},
    Verb{"disable", "disable NAME",
         "stops an interface from routing; the next set brings routing back", 1, 1, run_disable},
    Verb{"rmac", "rmac add|del MAC", "installs or removes a router MAC", 2, 2, run_rmac},
    Verb{"vmac", "vmac add|del NAME MAC", "installs or removes a virtual MAC of an interface", 3, 3,
         run_vmac},
    Verb{"pvlan", "pvlan add|del VLAN VLAN", "makes or ends a private-VLAN pair, the primary first",
         3, 3, run_pvlan},
    Verb{"neighbor", "neighbor add INTERFACE ADDRESS MAC [PORT] | del INTERFACE ADDRESS",
         "makes a host known, or forgets it", 3, 5, run_neighbor},
    Verb{"route",
         "route add PREFIX [vrf VRF] via NEXT-HOP … | blackhole; route del PREFIX [vrf VRF]",
         "adds or removes a static route", 2, ANY_NUMBER, run_route},
    Verb{"drop", "drop add|del PORT",
         "drops what isn't L3-routable on a port; the library lets none go again", 2, 2, run_drop},
    Verb{"member-port", "member-port NAME [clear]",
         "puts a port into VLAN 4094 without an interface, or takes it out", 1, 2, run_member_port},
    Verb{"vxlan", "vxlan add NAME KEY VALUE … | del VPN ID",
         "makes a VXLAN port (vpn, vni, port, vlan; egress, mc, criteria, flags), or removes one",
         3, ANY_NUMBER, run_vxlan},
    Verb{
        "dump", "dump [NAME]",
        "prints a port's virtual MACs, or the tables of interface numbers, as the library has them",
        0, 1, run_dump},
    Verb{"packet", "packet --in PORT --ip SRC DST …",
         "traces a packet, and tells where it goes; docs/packets.md has the options", 1, ANY_NUMBER,
         run_packet, true},
    Verb{"explain", "explain KIND N",
         "tells what a number stands for: of an iif, vlan, station, port or egress", 2, 2,
         run_explain, true},
    Verb{"fail", "fail FUNCTION [N|always] CODE | fail off",
         "makes the next, the N-th or each call of a function of the platform fail", 1, 3,
         run_fail},
    Verb{"show", "show TABLE [KEY]", "shows what the chip holds, or the calls of the last command",
         1, 2, run_show, true},
    Verb{"expect", "expect [no] WHAT …", "checks something; a script fails when it isn't so", 1,
         ANY_NUMBER, run_expect, true},
    Verb{"save", "save", "writes out what waits, and tells what is stored (--state)", 0, 0,
         run_save, true},
    Verb{"restart", "restart restore|fast|cold",
         "ends the process and begins another one on what it leaves (scripts, --state)", 1, 1,
         run_restart},
    Verb{"help", "help [COMMAND]", "lists the commands, or tells of one", 0, 1, run_help, true},
    Verb{"quit", "quit", "ends the session", 0, 0, run_quit, true},
};

} // namespace

std::span<const Verb> verbs()
{
    return VERBS;
}

std::vector<std::string> verb_names()
{
    std::vector<std::string> names;
    names.reserve(std::size(VERBS));
    for (const Verb &known : VERBS) {
        names.emplace_back(known.name);
    }
    return names;
}

bool only_looks(std::string_view name)
{
    const auto *const found = std::ranges::find(VERBS, name, &Verb::name);
    return found == VERBS.end() || found->looks;
}

const Verb &verb(std::string_view name)
{
    const auto *found = std::find_if(VERBS.begin(), VERBS.end(),
                                     [name](const Verb &known) { return known.name == name; });
    if (found == VERBS.end()) {
        throw UsageError(unknown("command", name, verb_names()));
    }
    return *found;
}

std::string command_text(std::string_view verb, const Words &words)
{
    return words.empty() ? std::string(verb) : fmt::format("{} {}", verb, fmt::join(words, " "));
}

bool adds(const Words &words)
{
    if (words.front() != "add" && words.front() != "del") {
        throw UsageError(unknown("word", words.front(), {"add", "del"}) + " (add or del)");
    }
    return words.front() == "add";
}

bool is_on(std::string_view word)
{
    if (word != "on" && word != "off") {
        throw UsageError(unknown("word", word, {"on", "off"}) + " (on or off)");
    }
    return word == "on";
}

} // namespace lab::session
