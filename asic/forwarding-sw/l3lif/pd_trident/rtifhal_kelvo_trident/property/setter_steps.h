/*
 * setter_steps.h: the steps that the property setters of all kinds share. Each
 * setter orders and flushes in its own way.
 *
 * `operation` is the setter whose step it is; its messages bear the name.
 */
#pragma once

#include "rtifhal_types.h"

#include <sdk/l3.h>

/** Whether an interface has all that a setter works on; reported if not. */
bool has_state(const char *operation, const struct l3lif *l3lif);

/**
 * Makes the object ready to be read by the interface's number.
 *
 * @param operation  see above
 * @param l3lif      an interface that has_state
 * @param object     receives the SDK's defaults and the number
 * @return the number; 0, reported, when the interface has none
 */
int start_object(const char *operation, const struct l3lif *l3lif, bcm_l3_intf_t &object);

/** Writes the L3 interface again; a refusal is only reported. */
void rewrite_interface(const char *operation, int unit, struct l3lif *l3lif, bcm_l3_intf_t &object,
                       int id);

/**
 * Writes the ingress object again; a refusal is reported.
 *
 * @param printed  the number that the report prints
 * @return what the create gave
 */
int rewrite_ingress(const char *operation, struct l3lif *l3lif, int printed);
