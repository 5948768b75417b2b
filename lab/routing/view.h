/*
 * view.h: the interfaces that are up, as the chip has them: what is there to
 * route over, and the switch's own addresses on them. routing.h keeps them from
 * one sync to the next.
 */
#pragma once

#include "config/description.h"
#include "l3lif/layer.h"
#include "routing/records.h"

#include "chip/chip.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace lab::routing
{

/** An interface that is up. */
struct InterfaceView {
    const l3lif::LifPlan *plan = nullptr; ///< the layer's, which outlives it
    int iif = 0;                          ///< its number in the chip
    std::uint16_t vrf = 0;                ///< as its L3 interface has it
    std::uint16_t vlan = 0;               ///< in which it sends
    config::Mac mac = {};
};

/** The interfaces that are up and have their L3 interface, in the order in which they were made. */
std::vector<InterfaceView> interfaces_up(const l3lif::Layer &layer,
                                         const simswitch::chip::Chip &chip);

/** The interface of a name; null when it isn't among them. */
const InterfaceView *find(const std::vector<InterfaceView> &interfaces, std::string_view name);

/** What a configuration says of an interface; null for a tunnel and an unknown one. */
const config::RoutedInterface *row_of(const config::Description &config, std::string_view name);

/**
 * The switch's addresses on interfaces: their own, and those of the virtual MACs
 * that they have.
 *
 * @param config      gives the addresses
 * @param layer       gives the virtual MACs
 * @param interfaces  those that are up
 */
std::vector<OwnAddress> addresses_on(const config::Description &config, const l3lif::Layer &layer,
                                     const std::vector<InterfaceView> &interfaces);

} // namespace lab::routing
