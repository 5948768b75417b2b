/*
 * road.h: a process that brings a whole configuration up, or takes it down
 * again, and is killed at one moment of that.
 *
 * A moment is when a platform call has returned, and when the host has written
 * to the chip: what the call or the write has left is in the state folder by
 * then. Moment 0 is before the first call. point.h looks at what is found
 * after a moment.
 */
#pragma once

#include "sweep/engine/processes.h"

#include "config/description.h"
#include "switch.h"

#include <cstddef>
#include <filesystem>
#include <limits>
#include <string>

namespace sweep
{

/** What a process was at when it was killed. */
enum class Direction : std::uint8_t { up, down };

/** A road. */
struct Road {
    simswitch::chip::Kind chip = simswitch::chip::Kind::trident;
    Direction direction = Direction::up;
    const lab::config::Description *config = nullptr;
};

/** "Trident up". */
std::string name(const Road &road);

/** What the last call was at each moment of a road; the last entry is the road's end. */
Lines moments_of(const Road &road);

/** Goes a road on a state folder and dies at a moment, at the latest at the end. */
[[noreturn]] void die_at(const Road &road, const std::filesystem::path &state, std::size_t moment);

} // namespace sweep
