/*
 * step.h: a step of a lifecycle: a line of the session language, and perhaps a call of the
 * platform that fails meanwhile. steps.cpp draws them.
 */
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace model_test
{

/** A call that fails: as `fail FUNCTION NTH CODE`. */
struct FailingCall {
    std::string function = {};
    int nth = 1;
    int code = -1;

    bool operator==(const FailingCall &) const = default;
};

/** A step. */
struct Step {
    std::vector<std::string> words;      ///< "del", "Ethernet0", "keep"
    std::vector<FailingCall> fault = {}; ///< one, or none

    bool operator==(const Step &) const = default;
    /** "del Ethernet0 keep". */
    std::string line() const;
    /** "fail bcm_l3_intf_get 1 -1"; only of a step with a fault. */
    std::string fault_line() const;
};

std::ostream &operator<<(std::ostream &out, const Step &step);

} // namespace model_test
