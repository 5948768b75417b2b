/*
 * kept.h: the addresses of an interface, as the routes have them; after a
 * restart, which brings no routes back, as the configuration has them.
 */
#pragma once

#include "routing/records.h"

#include <string>
#include <vector>

namespace lab::session
{
struct State;
}

namespace lab::explain
{

/** The switch's addresses on an interface that is up, with those of its virtual MACs. */
std::vector<routing::OwnAddress> addresses_of(const session::State &state,
                                              const std::string &interface);

} // namespace lab::explain
