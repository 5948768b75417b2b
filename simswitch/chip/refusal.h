/*
 * refusal.h: the sentences with which the chip's tables refuse an operation.
 *
 * Each gives the SDK's code and says which object, and what the table would
 * have taken. outcome.h has the codes.
 */
#pragma once

#include "chip/outcome.h"

#include <cstddef>
#include <string_view>

namespace simswitch::chip
{

/** -6: "station table full: 512 of 512". */
Outcome table_full(std::string_view table, std::size_t limit);

/** -7: "VLAN 100 does not exist". */
Outcome unknown(std::string_view kind, long long id);

/** -8: "VLAN 100 exists already". */
Outcome existing(std::string_view kind, long long id);

/** -4: "VLAN 5000 is not in 1..4095". */
Outcome out_of_range(std::string_view kind, long long value, long long first, long long last);

/** -16: "port control 187 is not available on a Trident". */
Outcome unavailable(std::string_view kind, long long id, std::string_view where);

} // namespace simswitch::chip
