/*
 * restart_mode.h: the platform's restore mode, on as long as an object lives.
 * restart.h uses it.
 */
#pragma once

#include <fwm/state.h>

namespace lab::l3lif
{

/** Restore mode: what is asked of the library meanwhile writes nothing to the chip. */
class RestoreMode
{
public:
    RestoreMode() { g_fwm_pss_restore_mode = 1; }
    ~RestoreMode() { g_fwm_pss_restore_mode = 0; }
    RestoreMode(const RestoreMode &) = delete;
    RestoreMode &operator=(const RestoreMode &) = delete;
};

} // namespace lab::l3lif
