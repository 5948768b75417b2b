/*
 * l3_interface.cpp: the L3 interface object in which every kind of routed
 * interface ends, and the life of the context and record that go with it.
 *
 * A record is created with a new number, taken down with the number parked, or
 * destroyed with the number held back. The stored record follows: written at
 * every creation, removed at every delete.
 *
 * frame/iif_table.cpp has the numbers, working_lif.h the choice of the record.
 */
#include "frame/iif_table.h"
#include "frame/properties.h"
#include "frame/trace.h"
#include "l3_objects/working_lif.h"
#include "rtifhal_trident.h"

#include <fwmpd/l3_cache.h>
#include <services/system.h>
#include <stdlib.h>
#include <string.h>
#include <syslog.h>

namespace
{

/** Object flags: the number is ours; an object of that number is replaced. */
constexpr uint32_t INTF_WITH_ID = 0x40;
constexpr uint32_t INTF_REPLACE = 0x100;

/** The group bit of a MAC's first byte. */
constexpr uint8_t MAC_GROUP_BIT = 0x01;

constexpr int EXHAUSTED_PRIORITY = LOG_CRIT;

/** Name of the interface that got no number. */
char exhausted_name[256];

/** What rtifhal_l3_intf_create hands from step to step. */
struct creation {
    int unit;
    struct l3lif *working;
    bcm_l3_intf_t object;
    uint32_t iif;
};

/** The interface whose record is programmed. */
struct l3lif *choose_working(struct l3lif *inl3lif)
{
    if (inl3lif->main_l3lif == nullptr) {
        return inl3lif;
    }
    struct l3lif *const main = find_port_channel_main(inl3lif);
    if (main != nullptr) {
        TRACE_OF(rtifhal_l3_intf_create, "context set in l3iif for intf 0x%x\n", main->ifindex);
        return main;
    }
    REPORT_OF(rtifhal_l3_intf_create, "No context set in l3iif for intf 0x%x\n",
              inl3lif->main_l3lif->ifindex);
    return inl3lif;
}

/** MAC, VLAN and the values that don't depend on the properties. */
void fill_address(creation &step)
{
    struct l3lif *const working = step.working;
    step.object.l3a_flags |= INTF_WITH_ID;
    memcpy(step.object.l3a_mac_addr, working->mac, sizeof step.object.l3a_mac_addr);
    // An interface's own MAC is never a group address.
    step.object.l3a_mac_addr[0] &= static_cast<uint8_t>(~MAC_GROUP_BIT);

    if (working->int_vlan == 0) {
        REPORT_OF(rtifhal_l3_intf_create, "No int_vlan set in l3iif for intf 0x%x\n",
                  working->ifindex);
        working->int_vlan = RTIFHAL_VLAN_ROUTED;
    }
    TRACE_OF(rtifhal_l3_intf_create, "create internal_vlan = %d si_encap_vlan = %d\n",
             working->int_vlan, working->si_encap_vlan);
    step.object.l3a_vid = working->si_encap_vlan != 0 ? working->si_encap_vlan : working->int_vlan;
    step.object.l3a_vrf = DEFAULT_VRF;
    step.object.l3a_ttl = 0;
}

/** Says in all places that no number is left. */
void report_exhausted(const struct l3lif *working)
{
    memset(exhausted_name, 0, sizeof exhausted_name);
    (void)snprintf_if_index(exhausted_name, sizeof exhausted_name, working->ifindex);
    syslog(EXHAUSTED_PRIORITY, "Interface %s has not been created ,hardware l3lif has exhausted \n",
           exhausted_name);
    REPORT_OF(rtifhal_l3_intf_create, "Failed to create l3iif for intf 0x%x\n", working->ifindex);
}

/** The number of a new object: the parked one while it is held back, else a new one. */
int take_number(creation &step)
{
    const struct l3_pd *const l3_pd = find_l3_pd(step.working);
    if (l3_pd != nullptr && l3_pd->prev_l3_if_index != 0 &&
        is_iif_preserved(l3_pd->prev_l3_if_index)) {
        take_preserved_iif(l3_pd->prev_l3_if_index);
        step.iif = l3_pd->prev_l3_if_index;
        TRACE_OF(rtifhal_l3_intf_create, "Reusing l3a_intf_id %d\n", step.iif);
        return 0;
    }
    const int rc = rtifhal_alloc_l3iif(&step.iif);
    if (rc != 0) {
        report_exhausted(step.working);
    }
    return rc;
}

/** Context and record, where there is no context; the number stays taken on failure. */
int allocate_records(struct l3lif *working)
{
    if (working->l3lif_pd_ctxt != nullptr) {
        return 0;
    }
    TRACE_OF(rtifhal_l3_intf_create, "Allocating l3lif_pd_ctxt\n");
    auto *const context = static_cast<l3lif_pd_ctxt *>(malloc(sizeof(struct l3lif_pd_ctxt)));
    if (context == nullptr) {
        REPORT_OF(rtifhal_l3_intf_create, "%s:Failed to allocate memory", "rtifhal_l3_intf_create");
        return -1;
    }
    *context = {};
    working->l3lif_pd_ctxt = context;

    TRACE_OF(rtifhal_l3_intf_create, "Allocating l3_pd\n");
    context->l3_pd = static_cast<struct l3_pd *>(malloc(sizeof(struct l3_pd)));
    if (context->l3_pd == nullptr) {
        REPORT_OF(rtifhal_l3_intf_create, "%s:Failed to create L3PD context for intf 0x%x",
                  "rtifhal_l3_intf_create", working->ifindex);
        return -1;
    }
    *context->l3_pd = {};
    return 0;
}

/** The number of an object that is programmed again. */
int reuse_number(creation &step)
{
    step.object.l3a_flags |= INTF_REPLACE;
    const struct l3_pd *const l3_pd = find_l3_pd(step.working);
    if (l3_pd == nullptr) {
        REPORT_OF(rtifhal_l3_intf_create, " NULL l3lif pd context for intf 0x%x",
                  step.working->ifindex);
        return -1;
    }
    step.iif = live_iif(*l3_pd);
    TRACE_OF(rtifhal_l3_intf_create, "Reusing l3a_intf_id from existind pd ctxt %d\n", step.iif);
    return 0;
}

/** VRF and MTU; a label that waited for the record moves into it. */
void fill_properties(creation &step, struct l3_pd &l3_pd)
{
    int vrf = DEFAULT_VRF;
    int mtu = DEFAULT_MTU;
    struct l3lif_pi_ctxt *const properties = step.working->l3lif_pi_ctxt;
    if (properties != nullptr) {
        vrf = properties->vrf;
        mtu = mtu_of_property(properties->mtu);
        if (properties->acl_qos_label_pending != 0) {
            l3_pd.acl_qos_label_ingress = properties->acl_qos_label_pending;
            properties->acl_qos_label_pending = 0;
        }
    }
    step.object.l3a_vrf = vrf == 0 || vrf == -1 ? DEFAULT_VRF : vrf;
    step.object.l3a_mtu = mtu;
    step.object.l3a_intf_id = static_cast<int>(step.iif);
}

/** Writes the object; on success the record says so and is stored. */
int program(creation &step, struct l3_pd &l3_pd, bcm_l3_intf_t *object)
{
    TRACE_OF(rtifhal_l3_intf_create,
             " Calling bcm_l3_intf_create for %d intf-id %x, mtu %d, vrf %d\n", step.object.l3a_vid,
             step.object.l3a_intf_id, step.object.l3a_mtu, step.object.l3a_vrf);
    const int rc = rtifhal_bcm_l3_intf_create(step.unit, &step.object);
    if (rc < 0) {
        REPORT_OF(rtifhal_l3_intf_create, "rtifhal_bcm_l3_intf_create(0x%x) failed: %s\n",
                  step.working->ifindex, rtifhal_errtext(rc));
        return -1;
    }

    l3_pd.brcm_prog_complete = 0;
    l3_pd.prev_l3_if_index = 0;
    l3_pd.l3intf_id = static_cast<uint16_t>(step.iif);
    if (object != nullptr) {
        *object = step.object;
    }
    TRACE_OF(rtifhal_l3_intf_create, "Created l3-intf with intf-id as 0x%x\n", step.iif);
    (void)rtifhal_trident_l3port_add_pss(step.working);
    return 0;
}

/** Frees the record and the context, and clears the interface's pointer. */
void release_records(struct l3lif *l3lif)
{
    struct l3lif_pd_ctxt *const context = l3lif->l3lif_pd_ctxt;
    if (context->l3_pd != nullptr) {
        mtrack_free(context->l3_pd);
        context->l3_pd = nullptr;
    }
    if (context->unused_owned != nullptr) {
        mtrack_free(context->unused_owned);
        context->unused_owned = nullptr;
    }
    mtrack_free(context);
    l3lif->l3lif_pd_ctxt = nullptr;
}

} // namespace

int rtifhal_l3_intf_create(int unit, struct l3lif *inl3lif, bcm_l3_intf_t *object, int create)
{
    if (inl3lif == nullptr) {
        return -1;
    }
    creation step = {};
    step.unit = unit;
    if (object != nullptr) {
        step.object = *object;
    } else {
        bcm_l3_intf_t_init(&step.object);
    }

    step.working = choose_working(inl3lif);
    TRACE("inl3lif->ifindex = %x l3lif->ifindex = %x create = %d\n", inl3lif->ifindex,
          step.working->ifindex, create);
    fill_address(step);

    if (create != 0) {
        if (const int rc = take_number(step); rc != 0) {
            return rc;
        }
        if (allocate_records(step.working) != 0) {
            return -1;
        }
    } else if (reuse_number(step) != 0) {
        return -1;
    }

    if (struct l3_pd *const l3_pd = find_l3_pd(step.working); l3_pd != nullptr) {
        fill_properties(step, *l3_pd);
        if (program(step, *l3_pd, object) == 0) {
            return 0;
        }
    }
    if (create != 0) {
        (void)rtifhal_free_l3iif(static_cast<int>(step.iif), 0);
    }
    return -1;
}

int rtifhal_l3_intf_delete(struct l3lif *l3lif, bcm_l3_intf_t *object, int destroy)
{
    if (l3lif == nullptr) {
        return -1;
    }
    const int unit = rtifhal_get_bcm_unit(0);
    TRACE("l3lif->ifindex = %x destroy = %d\n", l3lif->ifindex, destroy);
    if (l3lif->l3lif_pd_ctxt == nullptr) {
        REPORT("Failed to create l3lif pd context for intf 0x%x", l3lif->ifindex);
        return -1;
    }
    struct l3_pd *const l3_pd = l3lif->l3lif_pd_ctxt->l3_pd;
    if (l3_pd == nullptr) {
        return -1;
    }

    bcm_l3_intf_t local;
    if (object != nullptr) {
        local = *object;
    } else {
        bcm_l3_intf_t_init(&local);
        local.l3a_intf_id = l3_pd->l3intf_id;
    }

    if (l3_pd->brcm_prog_complete == 0) {
        TRACE("intf-delete for %x\n", l3lif->ifindex);
        (void)rtifhal_bcm_l3_intf_delete(unit, &local);
    }
    if (destroy != 0) {
        (void)rtifhal_free_l3iif(local.l3a_intf_id, 1);
        release_records(l3lif);
        TRACE("intf-pd-ctx deleted for %x\n", l3lif->ifindex);
    } else {
        l3_pd->brcm_prog_complete = 1;
        l3_pd->l3intf_id = 0;
        l3_pd->prev_l3_if_index = static_cast<uint16_t>(local.l3a_intf_id);
    }
    (void)rtifhal_trident_l3port_del_pss(l3lif->ifindex);
    return 0;
}

int rtifhal_l3_destroy(struct l3lif *l3lif)
{
    if (l3lif == nullptr) {
        return -1;
    }
    const int unit = rtifhal_get_bcm_unit(0);
    TRACE("Entering %s, lif 0x%x\n", __func__, l3lif->ifindex);
    uint8_t type = 0;
    if (if_index_get_type(l3lif->ifindex, &type) != 0) {
        REPORT("bcm_l3_ing_create(%d) get type failed\n", l3lif->ifindex);
    }
    const struct l3_pd *const l3_pd = find_l3_pd(l3lif);
    if (l3_pd == nullptr) {
        return -1;
    }

    const int iif = l3_pd->prev_l3_if_index;
    TRACE("iftype = %x iif = %x prev_l3_if_index = %x\n", type, iif, iif);
    const int rc = rtifhal_bcm_l3_ingress_destroy(unit, iif);
    (void)rtifhal_free_l3iif(iif, 1);
    release_records(l3lif);
    return rc;
}
