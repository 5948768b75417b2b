/*
 * replay.h: runs what a recording has again, on a switch of its own, and
 * records it anew. compare.h tells whether both are the same.
 */
#pragma once

#include "record/recording.h"

#include "switch.h"

#include <optional>

namespace lab::record
{

/**
 * Runs a recording's requests again: its configuration comes up, and goes down where it did; of a
 * session each command is done. The library must be as it is after loading.
 *
 * @param recording  what was recorded
 * @param chip       the kind of chip, with its own table sizes; nothing: as recorded
 * @return the new run as a recording, whose name is "now"
 * @throws config::UnusableFile when its configuration can't be used
 */
Recording replay(const Recording &recording, std::optional<simswitch::chip::Kind> chip = {});

} // namespace lab::record
