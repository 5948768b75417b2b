/*
 * switch_controls.cpp: the controls of the chip as a whole.
 */
#include "chip/switch_controls.h"

#include "chip/refusal.h"

namespace simswitch::chip
{

Outcome SwitchControls::set(int control, int value)
{
    Outcome outcome = check(control);
    if (!outcome.ok()) {
        return outcome;
    }
    changes_.note(control);
    if (value == 0) {
        values_.erase(control);
    } else {
        values_[control] = value;
    }
    return outcome;
}

Outcome SwitchControls::check(int control)
{
    if (control < 0 || control > LAST_SWITCH_CONTROL) {
        return out_of_range("switch control", control, 0, LAST_SWITCH_CONTROL);
    }
    return {};
}

int SwitchControls::get(int control) const
{
    const int *found = find(control);
    return found == nullptr ? 0 : *found;
}

const int *SwitchControls::find(int control) const
{
    auto it = values_.find(control);
    return it == values_.end() ? nullptr : &it->second;
}

void SwitchControls::clear()
{
    for (const auto &[control, value] : values_) {
        changes_.note_end(control);
    }
    values_.clear();
}

} // namespace simswitch::chip
