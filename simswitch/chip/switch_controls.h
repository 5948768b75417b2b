/*
 * switch_controls.h: the controls of the chip as a whole, by number. All are 0
 * at boot; routed interfaces set 230, 232 and others.
 */
#pragma once

#include "chip/outcome.h"

#include <map>
#include <string>

namespace simswitch::chip
{

inline constexpr int LAST_SWITCH_CONTROL = 1023; ///< the highest number that the SDK takes

/** The switch controls. */
class SwitchControls
{
public:
    // Controls are neither created nor removed.

    /** Sets a control. -4 for a control out of 0..1023. */
    Outcome set(int control, int value);
    /** What set would refuse, for who queues the write. */
    static Outcome check(int control);

    /** The value of a control, 0 when it was never set. */
    int get(int control) const;
    /** The controls that aren't 0. */
    const std::map<int, int> &all() const { return values_; }

private:
    std::map<int, int> values_;
};

} // namespace simswitch::chip
