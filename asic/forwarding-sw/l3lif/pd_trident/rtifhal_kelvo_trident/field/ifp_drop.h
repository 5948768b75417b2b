/*
 * ifp_drop.h: the module-private side of the drop rule: what the process knows
 * of it.
 */
#pragma once

#include <sdk/field.h>
#include <stdint.h>

/** 0 until group, entry and drop action exist, then 1. */
extern uint32_t ifp_drop_installed;

/** The one entry. */
extern bcm_field_entry_t ifp_drop_entry;
