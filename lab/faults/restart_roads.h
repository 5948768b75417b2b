/*
 * restart_roads.h: the roads that begin where an earlier process has ended.
 * roads.h has the ordinary one.
 */
#pragma once

#include "faults/road.h"

#include "config/description.h"
#include "switch.h"

namespace lab::faults
{

/**
 * The ports come up on a fast restart, and rebuild an IPv4 route over each of
 * them and an IPv6 one over the first. It needs a folder /mnt/pss of its own.
 */
Road fast_restart_road(const config::Description &config, simswitch::chip::Kind chip);

/** What an earlier process has stored comes back in restore mode. */
Road restore_road(const config::Description &config, simswitch::chip::Kind chip);

} // namespace lab::faults
