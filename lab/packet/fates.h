/*
 * fates.h: what else meets the fate of a frame: for each reason of the pipeline
 * a sentence or two, computed from the chip's tables.
 */
#pragma once

#include "packet/names.h"

#include "chip/pipeline/frame.h"
#include "chip/pipeline/result.h"
#include "chip/pipeline/trace.h"

#include <string>
#include <vector>

namespace lab::packet
{

/** A frame's end, and what it met on the way. */
struct End {
    const Names &names;
    const simswitch::chip::pipeline::Frame &frame;
    const simswitch::chip::pipeline::Result &result;
    const simswitch::chip::pipeline::Trace &trace;
    int port = 0;      ///< port on which it came in
    int wire_vlan = 0; ///< VLAN of its tag, else the port's untagged VLAN
};

/**
 * What else meets the same fate.
 *
 * @param reason  why the frame ended as it did, or why the CPU got a copy
 * @return sentences, without full stops; none when there is nothing to say
 */
std::vector<std::string> fates_of(simswitch::chip::pipeline::Reason reason, const End &end);

/** Of a frame that its VLAN bridged though the VLAN is routed: why it wasn't; else empty. */
std::string why_bridged(const End &end);

} // namespace lab::packet
