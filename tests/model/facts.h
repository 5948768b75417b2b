/*
 * facts.h: what is compared after each step, as facts: a key and a value. Both the switch
 * (seen(), here) and the naive model (naive_switch.h) give theirs.
 *
 * A key is what stands behind `expect` in a script, "interface Ethernet0 iif", so that a difference
 * is a line of the language. One that the language has no words for begins with "# " and becomes a
 * comment.
 */
#pragma once

#include "session/state.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace model_test
{

/** Values by their keys. A fact that isn't there has the value "". */
using Facts = std::map<std::string, std::string>;

/** A fact of which two sides have different values. */
struct Difference {
    std::string key;
    std::string expected;
    std::string seen;

    /** "expect interface Ethernet0 iif = 3  # seen 4", or a comment with both values. */
    std::string line() const;
};

/** The facts in which two sides differ, those that a script can check first. */
std::vector<Difference> differences(const Facts &expected, const Facts &seen);

/** "0,2-5"; empty for none: how the session's tables write ports and numbers. */
std::string list_text(const std::set<int> &numbers);

/**
 * The facts of a switch with a configuration that is up: the interfaces' states and numbers, the
 * VLANs with their members and uses, the VLANs of the ports, trunks, stations, numbers that are
 * held back, and those that are taken by nobody.
 *
 * @param state  of a session; its library tables are this process's
 */
Facts seen(const lab::session::State &state);

/** Where the stations of a MAC match: VLAN and port of each, "4094/2", "any/any". */
std::multiset<std::string> station_places(const simswitch::chip::Chip &chip,
                                          const std::string &mac);

/** The numbers that the library has for interfaces, kept or in use; 0 for none. */
std::map<std::string, int> owned_numbers(const lab::session::State &state);

/** The numbers that the library holds back until nothing else is left. */
std::set<int> numbers_held_back();

/** The numbers below the chip's reserved range that are taken, not held back and nobody's. */
std::set<int> numbers_lost(const lab::session::State &state);

} // namespace model_test
