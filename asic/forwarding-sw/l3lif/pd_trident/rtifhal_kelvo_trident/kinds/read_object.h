/*
 * read_object.h: reading an interface's L3 interface object back from the chip
 * before it is changed or taken away.
 */
#pragma once

#include "frame/trace.h"

#include <sdk/l3.h>

/**
 * Reads the object of a number and holds the answer against the number. The
 * caller has flushed the queue: this is a direct read.
 *
 * @param operation  whose step this is; its messages bear the name
 * @param unit       SDK unit
 * @param printed    number that the message of a failed read prints
 * @param id         the object's number
 * @param object     receives the object
 * @return 0; -1 when it can't be read or is another's
 */
inline int read_object(const char *operation, int unit, int printed, int id, bcm_l3_intf_t &object)
{
    object.l3a_intf_id = id;
    const int rc = bcm_l3_intf_get(unit, &object);
    if (rc < 0) {
        REPORT_NAMED(operation, "itf get (%d) failed: %s\n", printed, rtifhal_errtext(rc));
        return -1;
    }
    if (object.l3a_intf_id != id) {
        REPORT_NAMED(operation, "itf get (%d) mismatch\n", id);
        return -1;
    }
    return 0;
}
