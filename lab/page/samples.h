/*
 * samples.h: sample packets of each interface, traced through the chip's
 * pipeline while the page is made: the page itself can't forward any.
 * packet/explain.h traces them.
 */
#pragma once

#include "page/records.h"
#include "session/state.h"

#include <cstddef>

namespace lab::page
{

/** Interfaces whose sample packets are traced; the fates of many take long to tell. */
inline constexpr std::size_t SAMPLED_INTERFACES = 100;

/**
 * Adds the sample packets of the first interfaces that are up and have an IPv4
 * address: to that address, and to a host behind another interface of its VRF.
 *
 * @param state  of the switch, whose chip stays as it is; with a configuration
 * @param page   that has its interfaces
 */
void add_samples(session::State &state, Page &page);

} // namespace lab::page
