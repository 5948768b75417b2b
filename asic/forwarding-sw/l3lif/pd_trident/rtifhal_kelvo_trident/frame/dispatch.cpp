/*
 * dispatch.cpp: the ingress and egress steps of every add and delete, by the
 * kind of the interface.
 *
 * The steps themselves are in l3_objects; the kinds that call here in kinds.
 */
#include "frame/if_types.h"
#include "frame/trace.h"
#include "rtifhal_trident.h"

#include <services/if_index.h>

namespace
{

enum class dispatch_kind { routed_port, svi, tunnel, none };

/** The kind of an interface, by tests in a fixed order of which the first that holds decides. */
dispatch_kind kind_of(uint32_t ifindex, uint8_t type)
{
    if (if_index_is_eth_port_channel_intf(ifindex) != 0 || if_index_is_sub_intf(ifindex) != 0) {
        return dispatch_kind::routed_port;
    }
    if (type == IF_TYPE_SVI) {
        return dispatch_kind::svi;
    }
    if (type == IF_TYPE_TUNNEL) {
        return dispatch_kind::tunnel;
    }
    return if_index_is_physical_interface(ifindex) != 0 ? dispatch_kind::routed_port
                                                        : dispatch_kind::none;
}

/** Tells an interface's kind; gives the value of a failing if_index_get_type. */
int take_kind(uint32_t ifindex, dispatch_kind &kind)
{
    uint8_t type = 0;
    const int rc = if_index_get_type(ifindex, &type);
    if (rc == 0) {
        kind = kind_of(ifindex, type);
    }
    return rc;
}

} // namespace

int rtifhal_trident_add_ingress(struct l3lif *l3lif, int aux, int create)
{
    if (l3lif == nullptr) {
        return -1;
    }
    TRACE("\n%s: L3LIF: 0x%x, %d, %d\n", __func__, l3lif->ifindex, aux, create);
    dispatch_kind kind = dispatch_kind::none;
    if (const int rc = take_kind(l3lif->ifindex, kind); rc != 0) {
        return rc;
    }
    switch (kind) {
    case dispatch_kind::routed_port:
        return rtifhal_l3_ing_create(l3lif, create);
    case dispatch_kind::svi:
        // The SVI's own add writes its ingress object.
        return 0;
    case dispatch_kind::tunnel:
        // A tunnel without ingress object still sends.
        (void)rtifhal_l3_ing_create(l3lif, create);
        return 0;
    default:
        return -1;
    }
}

int rtifhal_trident_del_ingress(struct l3lif *l3lif, int aux, int destroy)
{
    if (l3lif == nullptr) {
        return -1;
    }
    TRACE("\n%s: L3LIF: 0x%x, %d, %d\n", __func__, l3lif->ifindex, aux, destroy);
    dispatch_kind kind = dispatch_kind::none;
    if (const int rc = take_kind(l3lif->ifindex, kind); rc != 0) {
        return rc;
    }
    switch (kind) {
    case dispatch_kind::routed_port:
        return rtifhal_l3_ing_delete(l3lif, destroy);
    case dispatch_kind::svi:
        return rtifhal_l3_ing_update_vlan_label(l3lif);
    case dispatch_kind::tunnel:
        (void)rtifhal_l3_ing_delete(l3lif, destroy);
        return 0;
    default:
        return -1;
    }
}

int rtifhal_trident_add_egress(struct l3lif *l3lif, int aux, int create)
{
    if (l3lif == nullptr) {
        return -1;
    }
    TRACE("\n%s: L3LIF: 0x%x, %d, %d\n", __func__, l3lif->ifindex, aux, create);
    dispatch_kind kind = dispatch_kind::none;
    if (const int rc = take_kind(l3lif->ifindex, kind); rc != 0) {
        return rc;
    }
    if (kind == dispatch_kind::none) {
        return -1;
    }
    return rtifhal_l3_egr_create(l3lif);
}

int rtifhal_trident_del_egress(struct l3lif *l3lif, int aux, int destroy)
{
    if (l3lif == nullptr) {
        return -1;
    }
    TRACE("\n%s: L3LIF: 0x%x, %d, %d\n", __func__, l3lif->ifindex, aux, destroy);
    dispatch_kind kind = dispatch_kind::none;
    if (const int rc = take_kind(l3lif->ifindex, kind); rc != 0) {
        return rc;
    }
    switch (kind) {
    case dispatch_kind::routed_port:
    case dispatch_kind::tunnel:
        return rtifhal_l3_egr_delete(l3lif);
    case dispatch_kind::svi:
        return 0;
    default:
        return -1;
    }
}
