/*
 * property_requests.h: the requests by which the layer above brings a change of
 * property to the chip, reads a property, stops an interface from routing.
 *
 * The layer changes l3lif_pi_ctxt first; each kind of interface has a setter of
 * its own. layer.h has the requests that bring interfaces up and take them down.
 */
#pragma once

#include "l3lif/lif.h"
#include "l3lif/request.h"

#include "switch.h"

#include <cstdint>
#include <string>

namespace lab::l3lif
{

/**
 * Brings an interface into line with its properties, by the setter of its kind.
 *
 * @param name    the request in words
 * @param svi_id  the identifier of the changed property, for an SVI's setter; 0 for
 *                one without an identifier: all of the SVI is programmed again
 * @param value   its new value
 */
Request set_property(simswitch::Switch &hardware, Lif &lif, const std::string &name,
                     std::uint32_t svi_id, std::uint32_t value);

/** Gives an interface a class label. One that isn't up keeps it for its next add. */
Request set_label(simswitch::Switch &hardware, Lif &lif, const std::string &name,
                  std::uint16_t label);

/** Reads a property by its identifier. @param value  receives it */
Request get_property(simswitch::Switch &hardware, Lif &lif, const std::string &name,
                     std::uint32_t id, std::uint32_t &value);

/** Stops an interface from routing; a property setter brings routing back. */
Request disable(simswitch::Switch &hardware, Lif &lif, const std::string &name);

} // namespace lab::l3lif
