/*
 * fwmpd/platform.h: what else the forwarding manager's platform layer for the
 * chip offers: the chip's kind, spanning tree groups, the port numbering, the
 * rule memory's size, the in-band set-up and the global configuration.
 */
#ifndef FWMPD_PLATFORM_H
#define FWMPD_PLATFORM_H

#include <sdk/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The CPU's port number, below 256. */
extern int fwmpd_asic_cpu_port;

/** The SDK unit for writes that go past the wrappers on behalf of private VLANs. */
extern int fwmpd_trident_unit;

/**
 * The global configuration record, persisted as a whole. The 1024 bytes from
 * byte 44 on are the library's: the interface numbers that are held back.
 */
extern unsigned char fwmpd_global_config[];

/**
 * Tells the chip's kind.
 *
 * @return nonzero on a Trident2, 0 on a Trident; it doesn't change
 */
int bcm_pd_is_device_trident2(void);

/**
 * Sets the in-band path of the forwarding platform up. It is called again and
 * again, and must be harmless from the second time on.
 *
 * @return 0; the library doesn't look at it
 */
int fwmpd_inband_init(void);

/**
 * Allocates a spanning tree group for a VLAN, at once.
 *
 * @param vlan  the VLAN that it is meant for; the VLAN is not yet put into it
 * @param stg   receives the group's id; left alone on failure
 * @return 0; nonzero when no group is left
 */
int fwmpd_allocate_stg(bcm_vlan_t vlan, int *stg);

/**
 * Tells which spanning tree group a VLAN is in.
 *
 * @param vlan  VLAN id
 * @return the group's id in the low 16 bits, the only ones that count
 */
int fwmpd_get_vlan_stg(bcm_vlan_t vlan);

/**
 * Turns a platform interface number into the chip's port number.
 *
 * @param pif  platform interface number
 * @return the port, of which the low 8 bits count
 */
int fwmpd_pif_to_asic_port(int pif);

/**
 * Tells the size of the default region of the chip's rule memory.
 *
 * @param size  receives the number of entries; left alone on failure
 * @return 0; nonzero when the size isn't known yet
 */
int fwmpd_trident_get_sup_tcam_default_size(int *size);

/**
 * Writes the global configuration record to the persistent store.
 *
 * @param pss_context  g_fwm_pss_context
 * @param config       fwmpd_global_config
 * @param whole        1: the record as a whole
 * @return 0; nonzero on failure, which the library hands up and nobody looks at
 */
int fwmpd_pss_globalc_store(void *pss_context, const unsigned char *config, int whole);

#ifdef __cplusplus
}
#endif

#endif
