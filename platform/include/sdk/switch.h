/*
 * sdk/switch.h: the SDK's switch-wide controls, by direct calls.
 */
#ifndef SDK_SWITCH_H
#define SDK_SWITCH_H

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Sets a switch-wide control, at once.
 *
 * @param unit     SDK unit
 * @param control  the control's number; routed interfaces set 232
 * @param value    the control's value
 * @return 0; -4 for a control out of range
 */
int bcm_switch_control_set(int unit, int control, int value);

#ifdef __cplusplus
}
#endif

#endif
