/*
 * access.cpp: the chip that the SDK's functions work on.
 */
#include "sdk/access.h"

#include "switch.h"

#include <fmt/format.h>

namespace simswitch::sdk
{

chip::Chip &chip_in_use()
{
    return Switch::current().chip;
}

Outcome check_unit(int unit)
{
    if (unit != UNIT) {
        return {ERROR_UNIT,
                fmt::format("unit {} does not exist; the switch has unit {}", unit, UNIT)};
    }
    return {};
}

} // namespace simswitch::sdk
