/*
 * describe.h: what a stage of the pipeline did, with names (names.h, objects.h):
 * the texts of an explanation's lines.
 */
#pragma once

#include "packet/names.h"

#include "chip/pipeline/observer.h"

#include <string>

namespace lab::packet
{

/** What a stage said. */
std::string describe(const Names &names, const simswitch::chip::pipeline::Line &line);

/** The nearest entry of a miss, with names. */
std::string describe_nearest(const Names &names, const std::string &nearest);

/** The id of a line's object as people read it: of a translation "Ethernet4 VLAN 10". */
std::string shown_id(const Names &names, const simswitch::chip::pipeline::Line &line);

} // namespace lab::packet
