/*
 * objects.h: what an object of the chip is, with names (names.h). describe.h
 * tells with it what a stage did.
 */
#pragma once

#include "packet/names.h"

#include "chip/chip.h"

#include <string>
#include <string_view>

namespace lab::packet
{

/** What next_hop_text says of a route that drops. */
inline constexpr std::string_view BLACK_HOLE = "black hole";

/** The number of an id, 0 for one that is no number. */
int number_of(const std::string &id);

/** Whether an egress object hands packets to the CPU. */
bool leads_to_cpu(const simswitch::chip::Egress &egress);

/** The egress object's way out: "PortChannel0001", "Ethernet4", "the CPU". */
std::string way_out(const Names &names, const simswitch::chip::Egress &egress);

/** Where an egress object leads: "10.0.0.9 on Ethernet4", "the CPU"; empty when there is none. */
std::string next_hop_text(const Names &names, int egress);

/** The route of a trace's id, "vrf 1 10.0.0.0/8"; null when there is none. */
const simswitch::chip::Route *find_route(const simswitch::chip::Chip &chip, const std::string &id);

/** What an object of a table says; empty for one that there isn't, and for other tables. */
std::string object_text(const Names &names, std::string_view table, const std::string &id);

/** The translation of a trace's id; null when there is none. */
const simswitch::chip::TranslationKey *find_translation(const simswitch::chip::Chip &chip,
                                                        const std::string &id);

/** "Ethernet4 VLAN 10". */
std::string key_text(const Names &names, const simswitch::chip::TranslationKey &key);

} // namespace lab::packet
