/*
 * bring_up.h: a whole configuration brought up, in the order that the layer
 * above keeps: router MAC, VLANs, interfaces, private-VLAN pairs, virtual MACs.
 * layer.h does the single requests.
 */
#pragma once

#include "config/description.h"
#include "l3lif/layer.h"
#include "l3lif/progress.h"

#include "switch.h"

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace lab::l3lif
{

/**
 * Drops what an earlier run has left in the state folder: an ordinary start
 * finds chip and store as after power-on.
 *
 * @param state_dir  the folder; empty: nothing is done
 * @return a note when there was something, else nothing
 */
std::vector<std::string> forget_earlier_run(simswitch::Switch &hardware,
                                            const std::filesystem::path &state_dir);

/** @throws std::runtime_error when the state folder has taken nothing more, with why */
void check_state(const simswitch::Switch &hardware);

/**
 * Brings everything up.
 *
 * @param after_each  called with each interface that has been brought up; may be empty
 * @param progress    told of each VLAN, interface, pair and virtual MAC
 */
void bring_all_up(const config::Description &config, Layer &layer,
                  const std::function<void(const Interface &)> &after_each = {},
                  const Progress &progress = {});

/** A request and what was asked. */
struct NamedRequest {
    std::string asked;
    const Request *request;
    bool gives_station = false; ///< its code is a station's number
};

/** The requests that brought everything up, in their order. */
std::vector<NamedRequest> requests_up(const Layer &layer);

} // namespace lab::l3lif
