/*
 * interface_state.h: how a routed interface is doing, in one word, for whoever
 * shows it: tables of a session, explanations, the page.
 */
#pragma once

#include "l3lif/readback.h"
#include "l3lif/routed_interfaces.h"

#include "chip/chip.h"

#include <string_view>

namespace lab::l3lif
{

/**
 * The state of an interface.
 *
 * @param chip       of its switch
 * @param interface  the interface as the layer above has it
 * @param view       what the chip holds of it, as of now
 * @return "up": the chip has all of it. "stopped": the same, and its ingress object lets no family
 *         in since it was stopped from routing. "failed": its add was refused, or the chip lacks a
 *         part. "kept": deleted, its number waits for the next add. "down": deleted for good, or
 *         never added
 */
std::string_view state_of(const simswitch::chip::Chip &chip, const Interface &interface,
                          const HardwareView &view);

} // namespace lab::l3lif
