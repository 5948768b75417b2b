/*
 * switch_controls.h: the controls of the chip as a whole, by number. All are 0
 * at boot; routed interfaces set 230, 232 and others.
 */
#pragma once

#include "chip/changes.h"
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
    /** The value of a control when it isn't 0, else null. */
    const int *find(int control) const;

    // For who keeps a copy of the controls across a restart.

    /** Sets all controls to 0. */
    void clear();
    /** Sets a control as the copy has it. */
    Outcome restore(int id, int record) { return set(id, record); }
    /** Which controls were written. */
    Changes<int> &changes() { return changes_; }

private:
    Changes<int> changes_;
    std::map<int, int> values_;
};

} // namespace simswitch::chip
