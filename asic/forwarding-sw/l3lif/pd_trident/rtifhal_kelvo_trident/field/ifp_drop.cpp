/*
 * ifp_drop.cpp: the one field entry that drops what isn't L3-routable, on the
 * ports that asked for it.
 *
 * A port never leaves the rule, and nothing is undone: a group that was made
 * before a failed step is refused by the SDK when the next call makes it again.
 */
#include "field/ifp_drop.h"

#include "frame/trace.h"
#include "rtifhal_trident.h"
#include "vlan/accounting.h"

#include <fwmpd/wrappers.h>
#include <sdk/field.h>

uint32_t ifp_drop_installed;
bcm_field_entry_t ifp_drop_entry;

namespace
{

constexpr int DROP_GROUP = 11;
constexpr int DROP_GROUP_PRIORITY = 0;

constexpr unsigned FIELD_QUALIFIER_IN_PORTS = 13;
constexpr unsigned FIELD_QUALIFIER_L3_ROUTABLE = 82;
constexpr int FIELD_ACTION_DROP = 39;

void qset_add(bcm_field_qset_t &qset, unsigned qualifier)
{
    qset.w[qualifier / 32] |= 1U << (qualifier % 32);
}

int entry_id()
{
    return static_cast<int>(ifp_drop_entry);
}

/** Makes the group, and the entry with all but its ports. */
int build_rule(int unit, int port)
{
    bcm_field_qset_t qset;
    sal_memset(&qset, 0, sizeof qset);
    qset_add(qset, FIELD_QUALIFIER_IN_PORTS);
    qset_add(qset, FIELD_QUALIFIER_L3_ROUTABLE);
    int rc = bcm_field_group_create_id(unit, qset, DROP_GROUP_PRIORITY, DROP_GROUP);
    if (rc < 0) {
        REPORT_OF(rtifhal_install_ifp_drop, "group_create(%d) failed: %s\n", port,
                  rtifhal_errtext(rc));
        return -1;
    }
    rc = bcm_field_entry_create(unit, DROP_GROUP, &ifp_drop_entry);
    if (rc < 0) {
        REPORT_OF(rtifhal_install_ifp_drop, "entry_create(%d) failed: %s\n", port,
                  rtifhal_errtext(rc));
        return -1;
    }
    rc = bcm_field_qualify_L3Routable(unit, entry_id(), 0, 1);
    if (rc < 0) {
        REPORT_OF(rtifhal_install_ifp_drop, "rtb_create(%d) failed: %s\n", port,
                  rtifhal_errtext(rc));
        return -1;
    }
    rc = bcm_field_action_add(unit, entry_id(), FIELD_ACTION_DROP, 0, 0);
    if (rc < 0) {
        REPORT_OF(rtifhal_install_ifp_drop, "action_add(%d) failed: %s\n", port,
                  rtifhal_errtext(rc));
        return -1;
    }
    ifp_drop_installed = 1;
    return 0;
}

} // namespace

void *sal_memset(void *destination, int byte, size_t count)
{
    // Volatile: it stays a plain fill, whatever the compiler would make of the loop.
    auto *const bytes = static_cast<volatile unsigned char *>(destination);
    for (size_t i = 0; i < count; ++i) {
        bytes[i] = static_cast<unsigned char>(byte);
    }
    return destination;
}

int rtifhal_install_ifp_drop(int unit, int port)
{
    (void)fwmpd_trident_batch_flush();
    bcm_pbmp_t data = {};
    bcm_pbmp_t mask = {};
    int rc = 0;
    if (ifp_drop_installed == 0) {
        if (build_rule(unit, port) != 0) {
            return -1;
        }
        pbmp_add(mask, port);
    } else {
        rc = bcm_field_qualify_InPorts_get(unit, entry_id(), &data, &mask);
        if (rc < 0) {
            REPORT("action_add(%d) failed: %s\n", port, rtifhal_errtext(rc));
            return -1;
        }
    }
    // A later port is in the data alone: the mask keeps the first.
    pbmp_add(data, port);
    rc = bcm_field_qualify_InPorts(unit, entry_id(), data, mask);
    if (rc < 0) {
        REPORT("action_add(%d) failed: %s\n", port, rtifhal_errtext(rc));
        return -1;
    }
    rc = bcm_field_entry_install(unit, entry_id());
    if (rc < 0) {
        REPORT("action_add(%d) failed: %s\n", port, rtifhal_errtext(rc));
        return -1;
    }
    return 0;
}

int rtifhal_rm_ifp_drop(int unit, int port)
{
    (void)unit;
    (void)port;
    return 0;
}
