/*
 * up.h: the command `rtif up`: brings the routed interfaces of a configuration
 * up on an embedded switch, and shows what the chip then holds.
 */
#pragma once

#include "report/up_result.h"

#include "switch.h"

#include <filesystem>
#include <iosfwd>

namespace lab::commands
{

/** What the user asked for. */
struct UpOptions {
    std::filesystem::path config = {};
    simswitch::chip::Kind chip = simswitch::chip::Kind::trident;
    std::filesystem::path state_dir = {}; ///< folder of chip and store; empty: in memory
    bool json = false;
    bool then_down = false; ///< takes everything down again and compares
    bool progress = false;  ///< shows on standard error how far it is
    report::View view = {};
    std::filesystem::path record = {}; ///< file that receives a recording; empty: none
};

/**
 * Runs the command.
 *
 * @param options  what was asked for
 * @param out      receives the result
 * @return 0; 1 when an interface or the router MAC failed, or something was
 *         left behind
 * @throws config::UnusableFile when the configuration can't be used
 * @throws std::runtime_error when the state folder can't be used, or the recording can't be
 *         written
 */
int up(const UpOptions &options, std::ostream &out);

/**
 * What a layer that has brought a configuration up came to.
 *
 * @param config  must outlive the result, as must the layer
 */
report::UpResult result_of(const simswitch::Switch &hardware, const config::Description &config,
                           const l3lif::Layer &layer);

/** The same on a switch that is there already. */
int up_on(simswitch::Switch &hardware, const UpOptions &options, std::ostream &out);

} // namespace lab::commands
