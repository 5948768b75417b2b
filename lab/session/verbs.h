/*
 * verbs.h: the commands of a session: their names, what stands behind them, and
 * the functions that do them.
 *
 * interface_verbs.cpp has those on interfaces, address_verbs.cpp router MACs,
 * virtual MACs and private-VLAN pairs, routing_verbs.cpp hosts and routes, port_verbs.cpp and
 * vxlan_verbs.cpp the drop rule, member ports, dumps and VXLAN ports, restart_verbs.cpp the
 * restart, packet_verbs.cpp packets, explain_verb.cpp numbers of the chip, session_verbs.cpp all
 * others.
 */
#pragma once

#include "session/state.h"
#include "session/words.h"

#include <cstddef>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace lab::session
{

/** As many arguments as one likes. */
inline constexpr std::size_t ANY_NUMBER = std::numeric_limits<std::size_t>::max();

/** A command. */
struct Verb {
    std::string_view name;
    std::string_view usage; ///< "del NAME [keep]"
    std::string_view help;  ///< what it does, a sentence without a full stop
    std::size_t min;        ///< arguments at least
    std::size_t max;        ///< arguments at most
    /** Does it. @param words  the arguments, without the command's name */
    Outcome (*run)(State &state, const Words &words);
    bool looks = false; ///< it only looks: a recording does without
};

/** All commands, in the order of help. */
std::span<const Verb> verbs();

/** Their names. */
std::vector<std::string> verb_names();

/** The command of a name. @throws UsageError for an unknown one, with the nearest */
const Verb &verb(std::string_view name);

/** Whether a command only looks at the switch; an unknown one does nothing at all. */
bool only_looks(std::string_view name);

// On interfaces. All throw UsageError and Impossible.
Outcome run_up(State &state, const Words &words);
Outcome run_add(State &state, const Words &words);
Outcome run_del(State &state, const Words &words);
Outcome run_set(State &state, const Words &words);
Outcome run_get(State &state, const Words &words);
Outcome run_disable(State &state, const Words &words);
// On addresses.
Outcome run_rmac(State &state, const Words &words);
Outcome run_vmac(State &state, const Words &words);
Outcome run_pvlan(State &state, const Words &words);
// On ports, and the dumps.
Outcome run_drop(State &state, const Words &words);
Outcome run_member_port(State &state, const Words &words);
Outcome run_vxlan(State &state, const Words &words);
Outcome run_dump(State &state, const Words &words);
// On hosts and routes.
Outcome run_neighbor(State &state, const Words &words);
Outcome run_route(State &state, const Words &words);
// Packets.
Outcome run_packet(State &state, const Words &words);
// Numbers of the chip.
Outcome run_explain(State &state, const Words &words);
// All others; run_expect throws Unmet too.
Outcome run_ipv6(State &state, const Words &words);
Outcome run_fail(State &state, const Words &words);
Outcome run_show(State &state, const Words &words);
Outcome run_expect(State &state, const Words &words);
Outcome run_restart(State &state, const Words &words);
Outcome run_save(State &state, const Words &words);
Outcome run_quit(State &state, const Words &words);
Outcome run_help(State &state, const Words &words);

/** The words before the values behind `vxlan add NAME`. */
std::vector<std::string> vxlan_keys();

/** The last packet with its trace, as `show packet` has it. */
std::string packet_text(const State &state);

/** The words that may follow those behind `packet`. */
std::vector<std::string> packet_continuations(const Words &words, const State &state);

/**
 * Checks what a number stands for.
 *
 * @param words   "explain KIND N", and perhaps a text that has to be in one of its lines
 * @param wanted  whether it has to stand for something, or to have the text
 * @throws UsageError for anything else, and for a number that the chip can't have; Unmet
 */
void check_explanation(const State &state, const Words &words, bool wanted);

/** The words that may follow those behind `explain`. */
std::vector<std::string> explain_continuations(const Words &words, const State &state);

/** The words behind `show`. */
std::vector<std::string> show_names();

/** A command as it was typed, its words between single blanks. */
std::string command_text(std::string_view verb, const Words &words);

/** Whether the first argument adds (true) or deletes. @throws UsageError for any other word */
bool adds(const Words &words);

/** Whether a word is on (true) or off. @throws UsageError for any other word */
bool is_on(std::string_view word);

/** How many interfaces are up, in a few words. */
std::string count_up(const Scene &scene);

/** What `restart` has asked for, in the process that comes after; see Session::restart. */
Outcome begin_again(State &state, l3lif::RestartMode mode);

} // namespace lab::session
