/*
 * switch.cpp: the switch as a whole, and which one the platform's functions
 * work on.
 */
#include "switch.h"

#include <fwm/state.h>
#include <fwm/trace.h>
#include <fwmpd/platform.h>
#include <l3lif/l3lif_layer.h>
#include <services/cmd.h>

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
    printf_curr_idx = 0;
    std::fill_n(fwmpd_global_config, services::GLOBAL_CONFIG_BYTES, std::uint8_t{0});
    std::fill_n(l3lif_global_data, services::LAYER_DATA_BYTES, std::uint8_t{0});
}

/** Takes the state folder, if there is to be one. */
std::unique_ptr<state::Folder> take_folder(const std::filesystem::path &path)
{
    return path.empty() ? nullptr : std::make_unique<state::Folder>(path);
}

/** Opens the store; what SQLite refuses is told as the folder's failure. */
services::Store open_store(state::Folder *folder)
{
    if (folder == nullptr) {
        return services::Store();
    }
    try {
        return services::Store(folder);
    } catch (const services::sqlite::Error &error) {
        throw folder->unusable(error);
    }
}

/** The platform makes this group itself, and leaves it off. */
void make_platform_groups(chip::Chip &chip)
{
    chip.field_groups.create(chip::ND_GROUP, {.enabled = false});
}

} // namespace

// The folder has its owner.
// NOLINTBEGIN(clang-analyzer-cplusplus.NewDeleteLeaks)
Switch::Switch(const Options &options)
    : folder_(take_folder(options.state_dir)), chip(options.chip, options.limits), wrappers(chip),
      store(open_store(folder_.get()))
{
    make_platform_groups(chip);
    if (folder_) {
        open_state();
    }
    // From here on nothing fails, and the platform's functions may find this switch.
    previous_ = std::exchange(latest, this);
    reset_platform_data(store.context());
}
// NOLINTEND(clang-analyzer-cplusplus.NewDeleteLeaks)

Switch::~Switch()
{
    save();
    Switch **place = &latest;
    while (*place != this) {
        place = &(*place)->previous_;
    }
    *place = previous_;
    g_fwm_pss_context = latest == nullptr ? nullptr : latest->store.context();
}

void Switch::open_state()
{
    try {
        chip_file_ = std::make_unique<state::ChipFile>(*folder_, chip, wrappers, host);
    } catch (const services::sqlite::Error &error) {
        throw folder_->unusable(error);
    }
    wrappers.after_host_writes([this] { save(); });
    if (chip_file_->is_new()) {
        power_cycle();
    }
    if (!state_error().empty()) {
        throw state::Error(state_error());
    }
}

const std::string &Switch::state_error() const
{
    static const std::string none;
    return folder_ ? folder_->failure() : none;
}

void Switch::power_cycle()
{
    store.clear();
    chip.power_cycle();
    make_platform_groups(chip);
    wrappers.power_cycle();
    host.clear_trunk_ids();
    host.vlans.clear();
    save();
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
