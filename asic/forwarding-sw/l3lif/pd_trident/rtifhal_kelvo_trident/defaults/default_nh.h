/*
 * default_nh.h: the module-private side of the default routes of a fast
 * restart.
 */
#pragma once

#include "rtifhal_trident.h"

/** Nonzero once the file has been looked for. */
extern uint32_t def_routes_loaded;
