/*
 * answers.c: the calls of a routed port that only need an answer: what an ifindex means, the kind
 * of chip and start, writes that nobody asks back, the store, messages, heap, records of zeroes.
 *
 * host.c has those that keep something. The header of each function states its contract.
 */
#include "host.h"

#include <fwm/state.h>
#include <fwm/trace.h>
#include <fwmpd/l3_cache.h>
#include <fwmpd/platform.h>
#include <fwmpd/pss.h>
#include <fwmpd/wrappers.h>
#include <l3lif/l3lif_layer.h>
#include <sdk/error.h>
#include <sdk/field.h>
#include <sdk/stg.h>
#include <sdk/switch.h>
#include <services/cmd.h>
#include <services/debug.h>
#include <services/if_index.h>
#include <services/mts.h>
#include <services/system.h>
#include <stdarg.h>
#include <stdlib.h>
#include <string.h>

int host_errors;

/* ---- Data of the host that the library reads or writes ---- */

int g_fwm_pss_restore_mode;              /* 0: the library programs the chip */
void *g_fwm_pss_context;                 /* your store's handle; handed to each store call */
int fwmpd_asic_cpu_port;                 /* port 0 */
int fwmpd_trident_unit;                  /* unit 0 */
unsigned char fwmpd_global_config[1068]; /* stored as a whole by fwmpd_pss_globalc_store */
unsigned char l3lif_global_data[1056];   /* no field entries of yours to flood by */
FILE *dbg_out_file;                      /* null: no stream */
const char *sdwrap_dbg_modname = "host";
int printf_curr_idx;
struct mts_queue *fwm_q_mts;

/* Entry n is the text of the code -n, the last one that of any other; they go into messages. */
const char *const _shr_errmsg[20] = {
    "no error",      "internal error",  "out of memory", "no such unit",
    "out of range",  "table empty",     "table full",    "no such entry",
    "exists",        "timed out",       "busy",          "failed",
    "switched off",  "bad identifier",  "no resources",  "bad configuration",
    "not available", "not initialised", "bad port",      "unknown error",
};

/* ---- What an ifindex means. Here 1 is the Ethernet port of that number, and the only one. ---- */

/* The type that the library takes for an Ethernet port, its subinterfaces included. */
enum { ETHERNET_PORT = 26 };

int if_index_get_type(uint32_t ifindex, uint8_t *type)
{
    (void)ifindex;
    *type = ETHERNET_PORT;
    return 0;
}

/* Ports count from 0 here; the chip's port is one more. */
int if_index_get_port(uint32_t ifindex, uint8_t *port)
{
    *port = (uint8_t)(ifindex - 1);
    return 0;
}

int if_index_is_eth_port_channel_intf(uint32_t ifindex)
{
    return (void)ifindex, 0;
}
int if_index_is_sub_intf(uint32_t ifindex)
{
    return (void)ifindex, 0;
}
int if_index_is_physical_interface(uint32_t ifindex)
{
    return ifindex == 1;
}
int if_index_is_tunnel_intf(uint32_t ifindex)
{
    return (void)ifindex, 0;
}

/* ---- Chip, start and heap ---- */

int rtifhal_get_bcm_unit(int number)
{
    return number;
}
int bcm_pd_is_device_trident2(void)
{
    return 0;
}
int fwmpd_inband_init(void)
{
    return 0;
}
int sysmgr_is_fastboot_restart(void)
{
    return 0;
}
void mtrack_free(void *memory)
{
    free(memory);
}

/* ---- Writes that nobody asks back ---- */

int fwmpd_trident_batch_flush(void)
{
    return 0; /* this host's wrappers write at once */
}

int fwmpd_bcm_switch_control_set(int unit, int control, int value)
{
    HOST_TOLD("unit %d, control %d = %d", unit, control, value);
    return 0;
}

int bcm_switch_control_set(int unit, int control, int value)
{
    HOST_TOLD("unit %d, control %d = %d", unit, control, value);
    return 0;
}

int fwmpd_bcm_port_stp_set(int unit, int port, int state)
{
    HOST_TOLD("unit %d, port %d, state %d", unit, port, state);
    return 0;
}

int fwmpd_bcm_port_discard_set(int unit, int port, int mode)
{
    HOST_TOLD("unit %d, port %d, mode %d", unit, port, mode);
    return 0;
}

int fwmpd_bcm_port_untagged_vlan_set(int unit, int port, bcm_vlan_t vlan)
{
    HOST_TOLD("unit %d, port %d, VLAN %d", unit, port, vlan);
    return 0;
}

int bcm_vlan_control_port_set(int unit, int port, int control, int value)
{
    HOST_TOLD("unit %d, port %d, control %d = %d", unit, port, control, value);
    return 0;
}

/* Which group a VLAN goes to is the host's choice. */
int fwmpd_allocate_stg(bcm_vlan_t vlan, int *stg)
{
    (void)vlan;
    *stg = 2;
    return 0;
}

int bcm_stg_vlan_add(int unit, int stg, bcm_vlan_t vlan)
{
    HOST_TOLD("unit %d, group %d, VLAN %d", unit, stg, vlan);
    return 0;
}

/* ---- The store: what a restart takes up again. Yours writes to a disk or a shared memory. ---- */

int rtifhal_pss_l3port_store(void *pss_context, int mode, struct l3lif *l3lif)
{
    (void)pss_context, (void)mode, (void)l3lif;
    HOST_TOLD("the port's record");
    return 0;
}

int rtifhal_pss_l3port_delete(void *pss_context, int mode, uint32_t ifindex)
{
    (void)pss_context, (void)mode;
    HOST_TOLD("the record of ifindex %u", ifindex);
    return 0;
}

int fwmpd_pss_globalc_store(void *pss_context, const unsigned char *config, int whole)
{
    (void)pss_context, (void)config, (void)whole;
    HOST_TOLD("the global configuration");
    return 0;
}

/* ---- The rules that flood. A host that makes them at its start, by entry numbers counted back
 * from the end of the rule memory, has the port taken off their lists here. This one has none, and
 * the library goes on. ---- */

enum { RULES = 128 }; /* how many there is room for */

int fwmpd_trident_get_sup_tcam_default_size(int *size)
{
    *size = RULES;
    return 0;
}

int bcm_field_action_ports_get(int unit, int entry, int action, bcm_pbmp_t *pbmp)
{
    (void)unit, (void)entry, (void)action, (void)pbmp;
    return HOST_NOT_FOUND;
}

int bcm_field_action_remove(int unit, int entry, int action)
{
    (void)unit, (void)entry, (void)action;
    return HOST_NOT_FOUND;
}

int bcm_field_action_ports_add(int unit, int entry, int action, bcm_pbmp_t pbmp)
{
    (void)unit, (void)entry, (void)action, (void)pbmp;
    return HOST_NOT_FOUND;
}

int bcm_field_qualify_InPorts_get(int unit, int entry, bcm_pbmp_t *data, bcm_pbmp_t *mask)
{
    (void)unit, (void)entry, (void)data, (void)mask;
    return HOST_NOT_FOUND;
}

int bcm_field_qualifier_delete(int unit, int entry, int qualifier)
{
    (void)unit, (void)entry, (void)qualifier;
    return HOST_NOT_FOUND;
}

int bcm_field_qualify_InPorts(int unit, int entry, bcm_pbmp_t data, bcm_pbmp_t mask)
{
    (void)unit, (void)entry, (void)data, (void)mask;
    return HOST_NOT_FOUND;
}

int bcm_field_entry_reinstall(int unit, int entry)
{
    (void)unit, (void)entry;
    return HOST_NOT_FOUND;
}

/* ---- Messages: every one goes to the trace buffer, errors to the error buffer too. ---- */

void fwm_ds_trace_add(const char *file, const char *function, int line, int zero,
                      const char *format, ...)
{
    (void)file, (void)function, (void)line, (void)zero, (void)format;
}

void fwm_ds_add(const char *file, const char *function, int line, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    fprintf(stderr, "%s:%d %s: ", file, line, function);
    vfprintf(stderr, format, arguments);
    va_end(arguments);
    host_errors++;
}

/* Neither the history of events nor debug output is wanted. */
int sdwrap_hist_event_subtype_check(int type, int subtype)
{
    return (void)type, (void)subtype, 1;
}

int sdwrap_chk_int(int level, int a, int b, int c)
{
    (void)level, (void)a, (void)b, (void)c;
    return 0;
}

/* ---- Records as the SDK starts them: all fields 0. ---- */

void bcm_l3_intf_t_init(bcm_l3_intf_t *intf)
{
    memset(intf, 0, sizeof *intf);
}
void bcm_l3_ingress_t_init(bcm_l3_ingress_t *ingress)
{
    memset(ingress, 0, sizeof *ingress);
}
void bcm_l3_egress_t_init(bcm_l3_egress_t *egress)
{
    memset(egress, 0, sizeof *egress);
}
void bcm_vlan_control_vlan_t_init(bcm_vlan_control_vlan_t *control)
{
    memset(control, 0, sizeof *control);
}
