/*
 * floodlist.cpp: the flood lists and in-port sets of the field entries at the
 * top of the rule memory's default region.
 *
 * The entries are made elsewhere and only addressed here, by index counted
 * back from the region's size. A failed edit of one entry never stops the
 * others, and what can't be read is written back as an empty set.
 */
#include "field/floodlist.h"

#include "frame/trace.h"
#include "rtifhal_trident.h"
#include "vlan/accounting.h"

#include <fwmpd/l3_cache.h>
#include <fwmpd/platform.h>
#include <fwmpd/wrappers.h>
#include <l3lif/l3lif_layer.h>
#include <sdk/field.h>
#include <string.h>

int tcam_sup_default_size = 128;
int tcam_sup_size_stale = 1;

namespace
{

constexpr int FIELD_ACTION_REDIRECT_PORTS = 32;
constexpr int FIELD_QUALIFIER_IN_PORTS = 13;

constexpr int PORT_MASK = 255;

/** Entries, counted back from the region's size, in the order in which they are edited. */
constexpr int FLOOD_LIST_ENTRIES[] = {3, 5, 4, 1, 8};
constexpr int IN_PORTS_ENTRIES[] = {5, 4, 8};
/** The entry whose ports are the model for link-local frames. */
constexpr int MODEL_ENTRY = 5;

/** Further entries, in the data of the layer above. */
constexpr int GLOBAL_DATA_ENTRIES = 672;
constexpr int GLOBAL_DATA_ENTRIES_END = 1056;
/** Bytes of them that are looked at as one. */
constexpr int GLOBAL_DATA_ROW = 64;

void move_port(bcm_pbmp_t &pbmp, int l3, int port)
{
    if (l3 != 0) {
        pbmp_remove(pbmp, port & PORT_MASK);
    } else {
        pbmp_add(pbmp, port & PORT_MASK);
    }
}

/** Replaces an entry's redirect ports. */
int set_redirect_ports(int unit, int entry, const bcm_pbmp_t &pbmp)
{
    (void)bcm_field_action_remove(unit, entry, FIELD_ACTION_REDIRECT_PORTS);
    (void)bcm_field_action_ports_add(unit, entry, FIELD_ACTION_REDIRECT_PORTS, pbmp);
    return bcm_field_entry_reinstall(unit, entry);
}

/** Asks for the region's size; as a rule once. */
[[gnu::noinline]] void fetch_default_size()
{
    const int rc = fwmpd_trident_get_sup_tcam_default_size(&tcam_sup_default_size);
    if (rc != 0) {
        REPORT_OF(rtifhal_brcm_tcam_sup_default_size,
                  "%s: FWMPD sup tcam size fetch returned error %d\n",
                  "rtifhal_brcm_tcam_sup_default_size", rc);
    } else {
        tcam_sup_size_stale = 0;
    }
}

/** Whether none of a row of further entries is in use, as most aren't. */
bool is_row_free(const unsigned char *row)
{
    uint64_t any = 0;
    for (int at = 0; at < GLOBAL_DATA_ROW; at += 8) {
        uint64_t entries;
        memcpy(&entries, row + at, sizeof entries);
        any |= entries;
    }
    return any == 0;
}

/** Edits the further entries. */
void update_global_entries(int unit, int l3, int port)
{
    for (int row = GLOBAL_DATA_ENTRIES; row < GLOBAL_DATA_ENTRIES_END; row += GLOBAL_DATA_ROW) {
        if (is_row_free(&l3lif_global_data[row])) {
            continue;
        }
        for (int at = row; at < row + GLOBAL_DATA_ROW; at += 4) {
            int entry;
            memcpy(&entry, &l3lif_global_data[at], sizeof entry);
            if (entry != 0) {
                (void)rtifhal_add_remove_port_to_floodlist(unit, entry, l3, port);
            }
        }
    }
}

} // namespace

int rtifhal_brcm_tcam_sup_default_size()
{
    if (tcam_sup_size_stale != 0) [[unlikely]] {
        fetch_default_size();
    }
    return tcam_sup_default_size;
}

int rtifhal_update_linklocal_entry(int entry)
{
    const int unit = rtifhal_get_bcm_unit(0);
    bcm_pbmp_t pbmp = {};
    (void)bcm_field_action_ports_get(unit, rtifhal_brcm_tcam_sup_default_size() - MODEL_ENTRY,
                                     FIELD_ACTION_REDIRECT_PORTS, &pbmp);
    return set_redirect_ports(unit, entry, pbmp);
}

int rtifhal_add_remove_port_to_floodlist(int unit, int entry, int l3, int port)
{
    TRACE("Tcam index = %d l3 = %d port = %d\n", entry, l3, port);
    bcm_pbmp_t pbmp = {};
    (void)bcm_field_action_ports_get(unit, entry, FIELD_ACTION_REDIRECT_PORTS, &pbmp);
    move_port(pbmp, l3, port);
    return set_redirect_ports(unit, entry, pbmp);
}

int rtifhal_add_remove_port_from_inports(int unit, int entry, int l3, int port)
{
    TRACE("Tcam index = %d l3 = %d port = %d\n", entry, l3, port);
    bcm_pbmp_t data = {};
    bcm_pbmp_t mask = {};
    (void)bcm_field_qualify_InPorts_get(unit, entry, &data, &mask);
    move_port(data, l3, port);
    (void)bcm_field_qualifier_delete(unit, entry, FIELD_QUALIFIER_IN_PORTS);
    (void)bcm_field_qualify_InPorts(unit, entry, data, mask);
    return bcm_field_entry_reinstall(unit, entry);
}

int rtifhal_update_llm_acl_floodlist(int port, int l2)
{
    const int unit = rtifhal_get_bcm_unit(0);
    const int l3 = l2 == 0 ? 1 : 0;
    const int low_port = port & PORT_MASK;
    TRACE(" Update IFP default redirect bmp with port %d l3:%d\n", port, l3);

    for (const int back : FLOOD_LIST_ENTRIES) {
        const int entry = rtifhal_brcm_tcam_sup_default_size() - back;
        (void)rtifhal_add_remove_port_to_floodlist(unit, entry, l3, low_port);
    }
    update_global_entries(unit, l3, low_port);
    int rc = 0;
    for (const int back : IN_PORTS_ENTRIES) {
        const int entry = rtifhal_brcm_tcam_sup_default_size() - back;
        rc = rtifhal_add_remove_port_from_inports(unit, entry, l3, low_port);
    }
    return rc;
}

int rtifhal_l2port_fld_chg(int pif, int l2)
{
    const int port = fwmpd_pif_to_asic_port(pif);
    (void)fwmpd_trident_batch_flush();
    return rtifhal_update_llm_acl_floodlist(port, l2);
}
