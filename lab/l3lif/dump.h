/*
 * dump.h: the library's two diagnostic dumps, as the switch's diagnostic command
 * has them printed: the virtual MACs of an interface, the tables of interface
 * numbers.
 */
#pragma once

#include "l3lif/lif.h"
#include "l3lif/request.h"

#include "switch.h"

#include <string>

namespace lab::l3lif
{

/** A dump. */
struct Dump {
    Request request;
    std::string text; ///< what the command has printed: whole lines
};

/**
 * Dumps the virtual MACs of an interface; each line begins with its name. The
 * library gets past the look-up of the port with a port or a subinterface of one.
 *
 * @param name  the request in words
 */
Dump dump_interface(simswitch::Switch &hardware, const Lif &lif, const std::string &name);

/** Why an interface can't be dumped, in a sentence; empty for one on a port. */
std::string why_no_dump(const LifPlan &plan);

/** Dumps the tables of interface numbers: those that aren't free, then those held back. */
Dump dump_numbers(simswitch::Switch &hardware, const std::string &name);

} // namespace lab::l3lif
