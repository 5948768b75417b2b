/*
 * fates_parts.h: the parts that the sentences of fates.h are made of.
 * fates_in.cpp has the reasons of the way in, fates_out.cpp those of the way out.
 */
#pragma once

#include "packet/fates.h"

#include <optional>
#include <string>
#include <vector>

namespace lab::packet
{

using Fates = std::vector<std::string>;

/** The sentences of the reasons that end a frame on its way in; nothing for other reasons. */
std::optional<Fates> fates_in(simswitch::chip::pipeline::Reason reason, const End &end);

/** The same of frames that are to be routed or bridged and don't leave. */
std::optional<Fates> fates_out(simswitch::chip::pipeline::Reason reason, const End &end);

/** The same of frames that the CPU gets. */
std::optional<Fates> fates_at_cpu(simswitch::chip::pipeline::Reason reason, const End &end);

/** The same of frames that leave. */
std::optional<Fates> fates_of_sent(simswitch::chip::pipeline::Reason reason, const End &end);

/** The last line of a stage; null when the frame didn't get there. */
const simswitch::chip::pipeline::Line *line_of(const End &end,
                                               simswitch::chip::pipeline::Stage stage);

/** The interface that it came in on, "Ethernet0"; its port when it has none. */
std::string where_in(const End &end);

/** "Ethernet0, Ethernet4 and 3 more (VRF default)": where the same routes count. */
std::string same_vrf(const End &end);

/** The prefix of a route's line, "10.2.0.0/16"; of a host its address alone. */
std::string prefix_in(const simswitch::chip::pipeline::Line &line, const End &end);

/** The prefix of the route that was found, "10.2.0.0/16"; empty for none. */
std::string prefix_of(const End &end);

/** The number of a line's object, 0 when the frame didn't get there. */
int number_at(const End &end, simswitch::chip::pipeline::Stage stage);

/** VLAN in which it was, after translation. */
int vlan_of(const End &end);

} // namespace lab::packet
