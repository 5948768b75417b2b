/*
 * egress.h: the module-private side of the egress step.
 */
#pragma once

#include <stdint.h>

/** Number of egress steps that succeeded; only there for a debugger. */
extern uint32_t l3_egress_count;
