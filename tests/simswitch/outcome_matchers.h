/*
 * outcome_matchers.h: how tests of the chip's tables read an Outcome.
 */
#pragma once

#include "chip/outcome.h"

#include <gmock/gmock.h>

namespace simswitch
{

/** How a failing test prints an Outcome. */
inline void PrintTo(const Outcome &outcome, std::ostream *stream)
{
    *stream << outcome.code << " \"" << outcome.reason << '"';
}

/** The operation was done. */
MATCHER(Done, "is 0 without a reason")
{
    return arg.code == OK && arg.reason.empty();
}

/** The operation was refused with this code and reason. */
MATCHER_P2(Refused, code, reason, "")
{
    return arg.code == code && arg.reason == std::string(reason);
}

} // namespace simswitch
