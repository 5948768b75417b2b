/*
 * fwmpd/pss.h: the persistent record of a routed interface.
 */
#ifndef FWMPD_PSS_H
#define FWMPD_PSS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

struct l3lif;

/**
 * Stores an interface's record under its ifindex, new or again. What a restart
 * needs back of the l3lif: ifindex, int_vlan, si_encap_vlan, pc_member_tree,
 * the properties (ipv4_en, ipv6_en, urpf_mode, vrf, ipv6_vrf), and the context
 * with l3intf_id and acl_qos_label_ingress.
 *
 * @param pss_context  g_fwm_pss_context
 * @param mode         1
 * @param l3lif        the interface, left as it is
 * @return 0; nonzero on failure
 */
int rtifhal_pss_l3port_store(void *pss_context, int mode, struct l3lif *l3lif);

/**
 * Removes an interface's record.
 *
 * @param pss_context  g_fwm_pss_context
 * @param mode         1
 * @param ifindex      the interface
 * @return 0; nonzero on failure
 */
int rtifhal_pss_l3port_delete(void *pss_context, int mode, uint32_t ifindex);

#ifdef __cplusplus
}
#endif

#endif
