/*
 * switch.cpp: the switch as a whole, and which one the platform's functions
 * work on.
 */
#include "switch.h"

#include <fwm/state.h>
#include <fwm/trace.h>
#include <fwmpd/platform.h>
#include <l3lif/l3lif_layer.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace simswitch
{

namespace
{

/** The switch that was made last and still lives. */
Switch *latest = nullptr;

void reset_platform_data(void *store_context)
{
    g_fwm_pss_restore_mode = 0;
    g_fwm_pss_context = store_context;
    dbg_out_file = nullptr;
    fwmpd_asic_cpu_port = 0;
    fwmpd_trident_unit = 0;
    std::fill_n(fwmpd_global_config, services::GLOBAL_CONFIG_BYTES, std::uint8_t{0});
    std::fill_n(l3lif_global_data, services::LAYER_DATA_BYTES, std::uint8_t{0});
}

} // namespace

// cppcheck-suppress passedByValue  // the name of the folder is moved out of it
Switch::Switch(Options options)
    : chip(options.chip, options.limits), wrappers(chip), store(std::move(options.state_dir)),
      previous_(std::exchange(latest, this))
{
    reset_platform_data(store.context());
    // The platform makes this group itself, and leaves it off.
    chip.field_groups.create(chip::ND_GROUP, {.enabled = false});
}

Switch::~Switch()
{
    Switch **place = &latest;
    while (*place != this) {
        place = &(*place)->previous_;
    }
    *place = previous_;
    g_fwm_pss_context = latest == nullptr ? nullptr : latest->store.context();
}

Switch &Switch::current()
{
    if (latest == nullptr) {
        std::fputs("simswitch: a platform function was called without an embedded switch; make a "
                   "simswitch::Switch first\n",
                   stderr);
        std::abort();
    }
    return *latest;
}

Switch *Switch::find_current()
{
    return latest;
}

} // namespace simswitch
