/*
 * failing_calls.h: which calls of a request can fail at all. A call that no
 * platform lets fail is left out of a sweep, and page.h tells why.
 */
#pragma once

#include "journal/journal.h"

#include <span>
#include <string_view>

namespace lab::faults
{

/** Functions that no platform lets fail, for one reason. */
struct NeverFail {
    std::string_view why;                        ///< "it answers with a number …"
    std::span<const std::string_view> functions; ///< sorted
    std::string_view pattern = {};               ///< of others: "`…_t_init`"; or empty
};

/** All reasons. */
std::span<const NeverFail> never_fail();

/** Whether a call can fail: it answers with a code, a record or an allocation. */
bool can_fail(const simswitch::CallRecord &record);

/**
 * The name under which a call is known: that of its function, and `malloc` of
 * any allocation. An optimising compiler makes one calloc of malloc and memset.
 */
std::string_view known_name(const simswitch::CallRecord &record);

/** Whether its result is a code; else it is a record or memory, and null when it fails. */
bool gives_code(const simswitch::CallRecord &record);

} // namespace lab::faults
