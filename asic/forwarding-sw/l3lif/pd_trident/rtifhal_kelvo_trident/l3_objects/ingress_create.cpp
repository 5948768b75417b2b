/*
 * ingress_create.cpp: the L3 ingress object: what the chip knows of a packet
 * that has just come in on an interface.
 *
 * The object is built from the interface's properties, written under the
 * interface's own number, and then tied to the traffic: ingress_ties.cpp.
 * Nothing here is undone, and a refused object doesn't stop the tie: a caller
 * learns of it from the messages only.
 */
#include "frame/if_types.h"
#include "frame/properties.h"
#include "frame/trace.h"
#include "l3_objects/ingress_ties.h"
#include "l3_objects/working_lif.h"
#include "rtifhal_trident.h"

#include <fwmpd/l3_cache.h>
#include <fwmpd/platform.h>
#include <l3lif/l3lif_layer.h>
#include <string.h>

namespace
{

/** Ingress flags. */
constexpr uint32_t INGRESS_BASE_FLAGS = 6;
constexpr uint32_t INGRESS_TRIDENT2 = 0x400;
constexpr uint32_t INGRESS_IP4_OFF = 0x20;
constexpr uint32_t INGRESS_IP6_OFF = 0x80;
constexpr uint32_t INGRESS_FLAG_WORD = 0x8000;

/** Class bits at the interface, and the width of the class in the chip. */
constexpr uint32_t CLASS_ALWAYS = 64;
constexpr uint32_t CLASS_HIGH = 128;
constexpr int CLASS_MAX = 255;

/** Starts from the cached object, so that what isn't set here keeps its value. */
int start_from_cache(int iif, bcm_l3_ingress_t &l3_iif)
{
    TRACE_OF(rtifhal_l3_ing_create, "Get l3_iif for iif %d\n", iif);
    const bcm_l3_ingress_t *const cached = rtifhal_bcm_l3_ingress_get_from_cache(iif);
    if (cached == nullptr) {
        REPORT_OF(rtifhal_l3_ing_create,
                  "rtifhal_bcm_l3_ingress_get_from_cache returned NULL for iif %d\n", iif);
        return -1;
    }
    l3_iif = *cached;
    l3_iif.flags = INGRESS_BASE_FLAGS;
    TRACE_OF(rtifhal_l3_ing_create, "ipmc_intf_id = %x class %x flags = %x\n", l3_iif.ipmc_intf_id,
             l3_iif.intf_class, l3_iif.flags);
    return 0;
}

/** The class, in the 8 bits that the chip has for it; the label's upper bits are lost. */
void fill_class(const struct l3lif *working, int iif, bcm_l3_ingress_t &l3_iif)
{
    l3_iif.intf_class = static_cast<int>(rtifhal_get_class_id(working));
    l3_iif.qos_map_id = rtifhal_get_qosmap_id();
    TRACE_OF(rtifhal_l3_ing_create,
             " rtifhal_bcm_l3_ing_create(%#x) iif %d, vrf %d rpf %d class %d\n", working->ifindex,
             iif, l3_iif.vrf, l3_iif.urpf_mode, l3_iif.intf_class);
    // The chip gets no class of 0, whatever rtifhal_get_class_id() gives; today that is never 0.
    if (l3_iif.intf_class == 0) {
        TRACE_OF(rtifhal_l3_ing_create, " intf_clas(0) |= 64\n"); // GCOVR_EXCL_LINE
        l3_iif.intf_class |= static_cast<int>(CLASS_ALWAYS);      // GCOVR_EXCL_LINE
    }
    if (l3_iif.intf_class > CLASS_MAX) {
        const int masked = l3_iif.intf_class & CLASS_MAX;
        TRACE_OF(rtifhal_l3_ing_create,
                 "Masking upper bits of l3_iif.intf_class: Earlier 0x%x,after masking 0x%x\n",
                 l3_iif.intf_class, masked);
        l3_iif.intf_class = masked;
    }
}

/** Everything of the object that the properties settle, but for the Trident2's flags. */
void fill_object(const struct l3lif *working, int iif, bcm_l3_ingress_t &l3_iif)
{
    const struct l3lif_pi_ctxt &properties = *working->l3lif_pi_ctxt;
    l3_iif.flags = INGRESS_BASE_FLAGS;
    l3_iif.urpf_mode = urpf_mode_of_property(properties.urpf_mode);
    l3_iif.vrf = vrf_of_lookup(properties);
    l3_iif.ipmc_intf_id = static_cast<uint16_t>(properties.ipv4_mc_en != 0 ? iif : 0);
    TRACE_OF(rtifhal_l3_ing_create,
             "vrf = %d ipv4_en = %d ipv6_en = %d, ipmc_l3iif = %d ipv4_mc_en = %d\n", l3_iif.vrf,
             properties.ipv4_en, properties.ipv6_en, l3_iif.ipmc_intf_id, properties.ipv4_mc_en);
    fill_class(working, iif, l3_iif);
    TRACE_OF(rtifhal_l3_ing_create,
             "Before calling bcm_l3_ingress_create - iif:%d, l3_iif.flags:0x%x, l3_iif.vrf:%d, "
             "l3_iif.urpf_mode:%d, l3_iif.intf_class:%d, l3_iif.ipmc_intf_id:%d, "
             "l3_iif.qos_map_id:%d\n",
             iif, l3_iif.flags, l3_iif.vrf, l3_iif.urpf_mode, l3_iif.intf_class,
             l3_iif.ipmc_intf_id, l3_iif.qos_map_id);
}

/** On a Trident2 the families are switched in the object; on a Trident by port and VLAN only. */
uint32_t family_flags(const struct l3lif_pi_ctxt &properties)
{
    if (bcm_pd_is_device_trident2() == 0) {
        return 0;
    }
    uint32_t flags = INGRESS_TRIDENT2;
    flags |= properties.ipv4_en == 0 ? INGRESS_IP4_OFF : 0;
    flags |= properties.ipv6_en == 0 ? INGRESS_IP6_OFF : 0;
    flags |= properties.ingress_flag_word != 0 ? INGRESS_FLAG_WORD : 0;
    return flags;
}

/** The interface whose object is written. */
struct l3lif *choose_working(struct l3lif *l3lif)
{
    struct l3lif *working = l3lif;
    if (struct l3lif *const main = find_port_channel_main(l3lif); main != nullptr) {
        working = main;
        TRACE_OF(rtifhal_l3_ing_create, "main ifindex = %x\n", working->ifindex);
    }
    TRACE_OF(rtifhal_l3_ing_create, "inl3lif->ifindex = %x l3lif->ifindex = %x\n", l3lif->ifindex,
             working->ifindex);
    return working;
}

/** The number of the working interface's object; -1 where there is none yet. */
int number_of(const struct l3lif *working)
{
    if (working->l3lif_pd_ctxt == nullptr || working->l3lif_pi_ctxt == nullptr) {
        REPORT_OF(rtifhal_l3_ing_create, "Failed to get l3lif pd context for intf 0x%x",
                  working->ifindex);
        return -1;
    }
    const struct l3_pd *const l3_pd = working->l3lif_pd_ctxt->l3_pd;
    if (l3_pd == nullptr) {
        return -1;
    }
    // A parked number doesn't count here: there is no object to tie.
    const int iif = l3_pd->l3intf_id;
    if (iif == 0) {
        TRACE_OF(rtifhal_l3_ing_create, "intf-id is 0. No l3-intf yet\n");
        return -1;
    }
    TRACE_OF(rtifhal_l3_ing_create, "l3_if_index = 0x%x ipmc_intf_id = 0x%x iif = 0x%x\n", iif, iif,
             iif);
    return iif;
}

} // namespace

int rtifhal_l3_ing_create(struct l3lif *l3lif, int create)
{
    if (l3lif == nullptr) {
        return -1;
    }
    int port = -1;
    uint8_t type = 0;
    bcm_l3_ingress_t l3_iif;
    bcm_l3_ingress_t_init(&l3_iif);
    const int unit = rtifhal_get_bcm_unit(0);
    if (if_index_get_type(l3lif->ifindex, &type) != 0) {
        REPORT("bcm_l3_ing_create(%d) get type failed\n", l3lif->ifindex);
    }

    const struct l3lif *const working = choose_working(l3lif);
    int iif = number_of(working);
    if (iif < 0) {
        return -1;
    }
    if (create == 0 && start_from_cache(iif, l3_iif) != 0) {
        return -1;
    }
    fill_object(working, iif, l3_iif);
    l3_iif.flags |= family_flags(*working->l3lif_pi_ctxt);

    const int rc = rtifhal_bcm_l3_ingress_create(unit, &l3_iif, &iif);
    if (rc < 0) {
        REPORT("bcm_l3_ing_create(%x) failed: %s\n", working->ifindex, rtifhal_errtext(rc));
    }
    if (type == IF_TYPE_SVI) {
        if (const int tied = tie_svi(unit, working, iif, l3_iif); tied != 0) {
            return tied;
        }
    } else if (if_index_is_tunnel_intf(l3lif->ifindex) == 0 &&
               if_index_is_sub_intf(l3lif->ifindex) == 0) {
        if (if_index_is_eth_port_channel_intf(l3lif->ifindex) != 0) {
            tie_port_channel(unit, l3lif->ifindex, iif);
        } else {
            tie_port(unit, l3lif->ifindex, working->ifindex, iif, &port);
        }
    }
    TRACE("bcm_l3_ing_create(%x) success: %d, %d\n", l3lif->ifindex, port, iif);
    return 0;
}

uint32_t rtifhal_get_class_id(const struct l3lif *l3lif)
{
    const struct l3_pd *const l3_pd = l3lif != nullptr ? find_l3_pd(l3lif) : nullptr;
    uint32_t class_id = CLASS_ALWAYS;
    if (l3_pd != nullptr) {
        TRACE(" Return 64 | l3_pd->acl_qos_label_ingress(%d)\n", l3_pd->acl_qos_label_ingress);
        class_id |= l3_pd->acl_qos_label_ingress;
    } else {
        TRACE(" Return 64\n");
    }
    if (l3lif != nullptr && l3lif->l3lif_pi_ctxt != nullptr &&
        l3lif->l3lif_pi_ctxt->class_high_bit != 0) {
        class_id |= CLASS_HIGH;
    }
    return class_id;
}

int rtifhal_get_class_id_ifindex(uint32_t ifindex, uint32_t *class_id)
{
    const struct l3lif *const l3lif = l3lif_find_lif_from_ifindex(ifindex);
    if (l3lif == nullptr) {
        TRACE("Failed to get l3lif for ifindex %d\n", ifindex);
        return -1;
    }
    *class_id = rtifhal_get_class_id(l3lif);
    return 0;
}
