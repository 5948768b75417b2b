/*
 * vlan.cpp: the null platform's VLANs: controls in the chip and in the wrappers' cache, block
 * masks, spanning tree groups, members and translations.
 */
#include "calls.h"
#include "tables.h"

#include <fwm/vlan.h>
#include <fwmpd/platform.h>
#include <fwmpd/wrappers.h>
#include <sdk/stg.h>

using namespace null_platform;
using recording::handle;
using recording::in;
using recording::out;
using recording::value;

namespace
{

constexpr int EXISTS = -8;

Vlan &vlan_of(bcm_vlan_t vlan)
{
    return tables.vlans[vlan % VLANS];
}

} // namespace

extern "C" {

int bcm_vlan_create(int unit, bcm_vlan_t vlan)
{
    CALLED(bcm_vlan_create, unit, vlan);
    Vlan &record = vlan_of(vlan);
    if (record.exists) {
        return EXISTS;
    }
    record.exists = true;
    return 0;
}

int fwmpd_bcm_vlan_destroy(int unit, bcm_vlan_t vlan)
{
    CALLED(fwmpd_bcm_vlan_destroy, unit, vlan);
    Vlan &record = vlan_of(vlan);
    record.exists = false;
    record.control = {};
    record.cached_control = {};
    return 0;
}

void bcm_vlan_control_vlan_t_init(bcm_vlan_control_vlan_t *control)
{
    CALLED(bcm_vlan_control_vlan_t_init, out(control));
    *control = {};
}

int bcm_vlan_control_vlan_get(int unit, bcm_vlan_t vlan, bcm_vlan_control_vlan_t *control)
{
    CALLED(bcm_vlan_control_vlan_get, unit, vlan, out(control));
    *control = vlan_of(vlan).control;
    return 0;
}

int bcm_vlan_control_vlan_set(int unit, bcm_vlan_t vlan, bcm_vlan_control_vlan_t control)
{
    CALLED(bcm_vlan_control_vlan_set, unit, vlan, value(control));
    vlan_of(vlan).control = control;
    return 0;
}

bcm_vlan_control_vlan_t *fwmpd_bcm_vlan_control_vlan_get_from_cache(bcm_vlan_t vlan)
{
    CALLED(fwmpd_bcm_vlan_control_vlan_get_from_cache, vlan);
    return GIVES(&vlan_of(vlan).cached_control);
}

int fwmpd_bcm_vlan_control_vlan_set(int unit, bcm_vlan_t vlan, bcm_vlan_control_vlan_t control)
{
    CALLED(fwmpd_bcm_vlan_control_vlan_set, unit, vlan, value(control));
    Vlan &record = vlan_of(vlan);
    record.control = control;
    record.cached_control = control;
    return 0;
}

int fwmpd_trident_vlan_bvcvt_store(bcm_vlan_t vlan)
{
    CALLED(fwmpd_trident_vlan_bvcvt_store, vlan);
    return 0;
}

void bcm_vlan_block_t_init(bcm_vlan_block_t *block)
{
    CALLED(bcm_vlan_block_t_init, out(block));
    *block = {};
}

bcm_vlan_block_t *fwmpd_trident_get_bvbt(bcm_vlan_t vlan)
{
    CALLED(fwmpd_trident_get_bvbt, vlan);
    return GIVES(&vlan_of(vlan).block);
}

int fwmpd_bcm_vlan_block_set(int unit, bcm_vlan_t vlan, bcm_vlan_block_t *block)
{
    CALLED(fwmpd_bcm_vlan_block_set, unit, vlan, in(block));
    return 0;
}

int fwmpd_bcm_vlan_port_add(int unit, bcm_vlan_t vlan, bcm_pbmp_t pbmp, bcm_pbmp_t ubmp)
{
    CALLED(fwmpd_bcm_vlan_port_add, unit, vlan, value(pbmp), value(ubmp));
    return 0;
}

int fwmpd_bcm_vlan_port_remove(int unit, bcm_vlan_t vlan, bcm_pbmp_t pbmp)
{
    CALLED(fwmpd_bcm_vlan_port_remove, unit, vlan, value(pbmp));
    return 0;
}

int fwmpd_bcm_set_vlan_pbmp(bcm_vlan_t vlan, int port)
{
    CALLED(fwmpd_bcm_set_vlan_pbmp, vlan, port);
    return 0;
}

int fwmpd_allocate_stg(bcm_vlan_t vlan, int *stg)
{
    CALLED(fwmpd_allocate_stg, vlan, out(stg));
    *stg = ++tables.stgs;
    return 0;
}

int fwmpd_get_vlan_stg(bcm_vlan_t vlan)
{
    CALLED(fwmpd_get_vlan_stg, vlan);
    return vlan_of(vlan).stg;
}

int bcm_stg_vlan_add(int unit, int stg, bcm_vlan_t vlan)
{
    CALLED(bcm_stg_vlan_add, unit, stg, vlan);
    vlan_of(vlan).stg = stg;
    return 0;
}

void bcm_vlan_action_set_t_init(bcm_vlan_action_set_t *action)
{
    CALLED(bcm_vlan_action_set_t_init, out(action));
    *action = {};
}

int fwmpd_bcm_vlan_translate_action_add(int unit, bcm_gport_t gport, int key_type, int outer_vlan,
                                        int inner_vlan, bcm_vlan_action_set_t *action)
{
    CALLED(fwmpd_bcm_vlan_translate_action_add, unit, gport, key_type, outer_vlan, inner_vlan,
           in(action));
    return 0;
}

int fwmpd_bcm_vlan_translate_action_delete(int unit, bcm_gport_t gport, int key_type,
                                           int outer_vlan, int inner_vlan)
{
    CALLED(fwmpd_bcm_vlan_translate_action_delete, unit, gport, key_type, outer_vlan, inner_vlan);
    return 0;
}

struct fwm_fwim_vlan *FWM_FWIM_FIND_VLAN(int instance, uint16_t vlan)
{
    CALLED(FWM_FWIM_FIND_VLAN, instance, vlan);
    VlanRecord &record = tables.vlan_records[vlan % VLANS];
    return GIVES(record.known ? reinterpret_cast<struct fwm_fwim_vlan *>(&record) : nullptr);
}

struct fwm_fwim_pvlan *FWM_FWIM_VLAN_PVLAN(struct fwm_fwim_vlan *vlan)
{
    CALLED(FWM_FWIM_VLAN_PVLAN, handle(vlan));
    auto *const record = reinterpret_cast<VlanRecord *>(vlan);
    return GIVES(record->kind != PrivateVlan::none
                     ? reinterpret_cast<struct fwm_fwim_pvlan *>(record)
                     : nullptr);
}

int FWM_FWIM_PVLAN_IS_PRIMARY(struct fwm_fwim_pvlan *pvlan)
{
    CALLED(FWM_FWIM_PVLAN_IS_PRIMARY, handle(pvlan));
    return reinterpret_cast<const VlanRecord *>(pvlan)->kind == PrivateVlan::primary ? 1 : 0;
}
}
