/*
 * check.h: whether the store, the chip and the library's tables agree after the
 * end of a forwarding process, and where not, the likely cause.
 *
 * The library's tables are those that a restore makes of the store. What the
 * design leaves on purpose is no difference but a note: parked objects of an
 * interface that was deleted with its number kept, numbers held back, the
 * record of a port-channel that its subinterface's has replaced.
 *
 * Beside it: check_parts.h, the subjects one by one.
 */
#pragma once

#include "config/description.h"
#include "l3lif/restart.h"

#include "switch.h"

#include <cstddef>
#include <string>
#include <vector>

namespace lab::check
{

/** A difference. */
struct Difference {
    std::string what;  ///< what is where, and what isn't
    std::string cause; ///< what has likely happened

    bool operator==(const Difference &) const = default;
};

/** What a check came to. */
struct CheckResult {
    std::size_t stored = 0;        ///< interfaces in the store
    std::size_t l3_interfaces = 0; ///< L3 interfaces in the chip
    std::vector<Difference> differences;
    std::vector<std::string> notes; ///< what stays on purpose
};

/**
 * Compares. The chip is not written to; the library's tables and the wrappers'
 * caches are those of a restore afterwards.
 *
 * @param hardware  just opened on a state folder, or on a copy of one
 * @param config    whose names interfaces have; null for none
 * @throws std::runtime_error when the state can't be read
 */
CheckResult check(simswitch::Switch &hardware, const config::Description *config);

} // namespace lab::check
