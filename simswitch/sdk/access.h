/*
 * access.h: how the SDK's functions reach the chip: the unit is checked, and
 * what the chip takes is counted.
 *
 *     int bcm_vlan_create(int unit, bcm_vlan_t vlan)
 *     {
 *         Call call(Layer::sdk, __func__, unit, vlan);
 *         return sdk::write(call, unit, [&](chip::Chip &chip) { return chip.vlans.create(vlan); });
 *     }
 */
#pragma once

#include "chip/chip.h"
#include "journal/call.h"

namespace simswitch::sdk
{

inline constexpr int UNIT = 0; ///< the one SDK unit of the switch

/** The chip of the switch that now stands in for the hardware. */
chip::Chip &chip_in_use();

/** -3 for a unit other than 0. */
Outcome check_unit(int unit);

/**
 * Runs a call that leaves the chip as it is: it reads, or edits what the SDK
 * alone keeps. The body takes the chip and gives an Outcome.
 */
template <class Body> int read(Call &call, int unit, Body &&body)
{
    return call.run([&]() -> Outcome {
        Outcome outcome = check_unit(unit);
        if (outcome.ok()) {
            outcome = body(chip_in_use());
        }
        return outcome;
    });
}

/** The same for a call that writes to the chip. */
template <class Body> int write(Call &call, int unit, Body &&body)
{
    return read(call, unit, [&](chip::Chip &chip) -> Outcome {
        Outcome outcome = body(chip);
        if (outcome.ok()) {
            ++chip.writes;
        }
        return outcome;
    });
}

/** The body of a function that gives a record the SDK's defaults: all fields 0. */
template <class Record> void clear_record(const char *function, Record *record)
{
    Call call(Layer::sdk, function);
    call.run_void([&] { *record = Record{}; });
}

} // namespace simswitch::sdk
