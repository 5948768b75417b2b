/*
 * vlan_roads.h: stretches of platform calls and messages that the VLAN
 * operations share, for comparisons of whole lists.
 *
 * library_test.h has the comparisons. All stretches are those of unit 0, of a
 * switch whose CPU port is 0 and on which nobody has filed further flood
 * entries.
 */
#pragma once

#include "support/library_test.h"

#include <initializer_list>
#include <string>
#include <vector>

namespace rtifhal_test
{

using Calls = std::vector<std::string>;
using Messages = std::vector<Message>;

/** Several stretches one after the other. */
template <class Line> std::vector<Line> join(std::initializer_list<std::vector<Line>> stretches)
{
    std::vector<Line> joined;
    for (const auto &stretch : stretches) {
        joined.insert(joined.end(), stretch.begin(), stretch.end());
    }
    return joined;
}

/** What stands behind the first call of that text; everything when it isn't there. */
Calls calls_after(const Calls &calls, const std::string &text);

/** The ports of a set are counted, word by word. */
Calls popcounts(const std::vector<int> &ports);

/** Block masks as the journal prints them: the same ports, "{0,5}", in all but the first set. */
std::string masks(const std::string &ports);

/**
 * A port leaves the flood lists, which the ports in `gone` have left before.
 * The size of the region is asked for by the first to leave.
 */
Calls flood_list_calls(Kind chip, int port, const std::vector<int> &gone = {});
Messages flood_list_messages(Kind chip, int port);

/** A port's routed mode goes on: VXLAN where the chip has it, translation, flood lists. */
Calls mode_on_calls(Kind chip, int port, const std::vector<int> &gone = {});
Messages mode_on_messages(Kind chip, int port);
/** A port's routed mode goes off; the flood lists stay. */
Calls mode_off_calls(Kind chip, int port);
Messages mode_off_messages(int port);

/** A port is the first user of a VLAN. */
Calls first_use_calls(int vlan, int port);
Messages first_use_messages(int vlan, int port);
/** A port was the last user of a VLAN, which ends. */
Calls last_use_calls(int vlan, int port);
Messages last_use_messages(int vlan, int port);

/** A VLAN's controls are read from the chip into the cache and written again; flags: "0x278". */
Calls refreshed_controls_calls(int vlan, const std::string &flags);

namespace vlan_road
{

inline constexpr std::uint16_t ROUTED = 4094;
inline constexpr std::uint16_t VLAN = 100;
inline constexpr int PORT = 5;
/** The first group that is allocated: group 1 is the chip's own. */
inline constexpr int GROUP = 2;
inline const std::string FLUSH = "fwmpd_trident_batch_flush() = 0";

/** The first calls of a VLAN create. */
Calls creates(int vlan, int code = 0);
/** A new VLAN gets its flags and joins the routed group. */
Calls becomes_routed(int vlan, const std::string &flags);
/** The port joins the VLAN and forwards; untagged: "{}" or "{5}". */
Calls adds_port(int vlan, int port, const std::string &untagged);

/** Whether a port's table entry has a VLAN. */
bool holds(int port, unsigned vlan);

/** A test of the VLAN operations. */
class VlanTest : public LibraryTest
{
protected:
    /** The ports are in VLAN 4094, and so the routed group is there. */
    void routed_ports(const std::vector<int> &ports);
    /** Ports 5 and 9 are in VLAN 4094, port 9 in VLAN 100 too. */
    void vlan_on_port_9();
};

} // namespace vlan_road

} // namespace rtifhal_test
