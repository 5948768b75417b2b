/*
 * get.cpp: reading a property, as the layer above set it and never from the
 * chip.
 */
#include "frame/trace.h"
#include "rtifhal_trident.h"

#include <l3lif/l3lif_layer.h>

namespace
{

/** Reads a property's field; false for one that can't be read. */
bool read_property(const struct l3lif_pi_ctxt &properties, uint32_t property, uint32_t &value)
{
    switch (property) {
    case RTIFHAL_PROP_IPV4:
        value = properties.ipv4_en;
        return true;
    case RTIFHAL_PROP_IPV4_MC:
        value = properties.ipv4_mc_en;
        return true;
    case RTIFHAL_PROP_VRF:
        value = properties.vrf;
        return true;
    case RTIFHAL_PROP_URPF:
        value = properties.urpf_mode;
        return true;
    case RTIFHAL_PROP_INGRESS_FLAG:
        value = properties.ingress_flag_word;
        return true;
    case RTIFHAL_PROP_IPV6:
        value = properties.ipv6_en;
        return true;
    case RTIFHAL_PROP_WORD_7:
        value = properties.l3_prop_word_7;
        return true;
    case RTIFHAL_PROP_WORD_8:
        value = properties.l3_prop_word_8;
        return true;
    case RTIFHAL_PROP_IPV6_VRF:
        value = properties.ipv6_vrf;
        return true;
    case RTIFHAL_PROP_CLASS_HIGH:
        value = properties.class_high_bit;
        return true;
    default:
        return false;
    }
}

} // namespace

int rtifhal_get_kelvo_l3_property(const struct l3lif *l3lif, uint32_t property, uint32_t *value)
{
    if (value == nullptr) {
        return -1;
    }
    *value = 0;
    if (l3lif == nullptr || l3lif->l3lif_pi_ctxt == nullptr ||
        !read_property(*l3lif->l3lif_pi_ctxt, property, *value)) {
        return -1;
    }
    TRACE(" Returning prop %d, value %d \n", property, *value);
    return 0;
}

int rtifhal_get_kelvo_l3_property_svi(uint16_t vlan, uint32_t property, uint32_t *value)
{
    const struct l3lif *const l3lif = l3lif_find_lif_from_int_vlan(vlan);
    if (l3lif == nullptr) {
        return -1;
    }
    return rtifhal_get_kelvo_l3_property(l3lif, property, value);
}
