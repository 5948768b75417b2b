/*
 * rtifhal_trident.h: the exported functions and data, by family.
 *
 * Calling order: no set-up call is needed. An interface is added before it is
 * deleted. No two functions may run at the same time: nothing here is locked.
 */
#ifndef RTIFHAL_TRIDENT_H
#define RTIFHAL_TRIDENT_H

#include "rtifhal_data.h"
#include "rtifhal_defaults.h"
#include "rtifhal_diag.h"
#include "rtifhal_field.h"
#include "rtifhal_frame.h"
#include "rtifhal_kinds.h"
#include "rtifhal_objects.h"
#include "rtifhal_property.h"
#include "rtifhal_station.h"
#include "rtifhal_store.h"
#include "rtifhal_vlan.h"

#endif
