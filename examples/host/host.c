/*
 * host.c: the smallest process that the library runs in. It loads the library, brings one routed
 * port up, looks at what the chip holds then, and takes the port down again.
 *
 * Beside main() stand the calls whose effect the library, or this process, asks back: each prints
 * what it was told and keeps as little as it can. answers.c has those that only need an answer,
 * not_provided.c names what a routed port never calls. Yours calls your SDK in each place.
 */
#include "host.h"

#include <dlfcn.h>
#include <fwmpd/l3_cache.h>
#include <fwmpd/wrappers.h>
#include <rtifhal_trident.h>
#include <sdk/vlan.h>
#include <stdlib.h>
#include <string.h>

enum { PORTS = 256, OBJECTS = 16, CONTROL_L3_IIF = 67 };
enum { INTF_REPLACE = 0x100 }; /* in the flags: the interface is there, write it anew */

/* The chip. A real one has 4096 or more objects of each kind, and all VLANs. */
static struct {
    bcm_l3_intf_t interface[OBJECTS];
    int has_interface[OBJECTS];
    int has_ingress[OBJECTS];
    int port_iif[PORTS]; /* port control 67: the ingress object of what comes in on the port */
    int has_vlan;        /* VLAN 4094, the only one that a routed port asks for */
    bcm_pbmp_t vlan_ports;
    bcm_vlan_control_vlan_t vlan_control;
} chip;

static int is_object(int id)
{
    return id >= 0 && id < OBJECTS;
}

/* ---- The wrappers' L3 objects. The number is the library's choice: take it as it stands. ---- */

int rtifhal_bcm_l3_intf_create(int unit, bcm_l3_intf_t *intf)
{
    const int id = intf->l3a_intf_id;
    if (!is_object(id)) {
        return HOST_BAD_PARAMETER;
    }
    if (chip.has_interface[id] && (intf->l3a_flags & INTF_REPLACE) == 0) {
        return HOST_EXISTS;
    }
    HOST_TOLD("unit %d, id %d, VLAN %d, VRF %d, MTU %d", unit, id, intf->l3a_vid, intf->l3a_vrf,
              intf->l3a_mtu);
    chip.interface[id] = *intf;
    chip.has_interface[id] = 1;
    return 0;
}

int rtifhal_bcm_l3_intf_delete(int unit, bcm_l3_intf_t *intf)
{
    const int id = intf->l3a_intf_id;
    if (!is_object(id) || !chip.has_interface[id]) {
        return HOST_NOT_FOUND;
    }
    HOST_TOLD("unit %d, id %d", unit, id);
    chip.has_interface[id] = 0;
    return 0;
}

int bcm_l3_intf_get(int unit, bcm_l3_intf_t *intf)
{
    const int id = intf->l3a_intf_id;
    (void)unit;
    if (!is_object(id) || !chip.has_interface[id]) {
        return HOST_NOT_FOUND;
    }
    *intf = chip.interface[id];
    return 0;
}

int rtifhal_bcm_l3_ingress_create(int unit, bcm_l3_ingress_t *ingress, int *iif)
{
    if (!is_object(*iif)) {
        return HOST_BAD_PARAMETER;
    }
    HOST_TOLD("unit %d, number %d, VRF %d, flags 0x%x, class %d", unit, *iif, ingress->vrf,
              ingress->flags, ingress->intf_class);
    chip.has_ingress[*iif] = 1;
    return 0;
}

int rtifhal_bcm_l3_ingress_destroy(int unit, int iif)
{
    if (!is_object(iif) || !chip.has_ingress[iif]) {
        return HOST_NOT_FOUND;
    }
    HOST_TOLD("unit %d, number %d", unit, iif);
    chip.has_ingress[iif] = 0;
    return 0;
}

/* ---- Ports and VLANs. Where wrappers queue their writes, fwmpd_trident_batch_flush writes. ----
 */

int fwmpd_bcm_port_control_set(int unit, int port, int control, int value)
{
    if (port < 0 || port >= PORTS) {
        return HOST_BAD_PARAMETER;
    }
    HOST_TOLD("unit %d, port %d, control %d = %d", unit, port, control, value);
    if (control == CONTROL_L3_IIF) {
        chip.port_iif[port] = value;
    }
    return 0;
}

int bcm_vlan_create(int unit, bcm_vlan_t vlan)
{
    if (chip.has_vlan) {
        return HOST_EXISTS; /* what a second routed port gets, and welcomes */
    }
    HOST_TOLD("unit %d, VLAN %d", unit, vlan);
    chip.has_vlan = 1;
    return 0;
}

int fwmpd_bcm_vlan_port_add(int unit, bcm_vlan_t vlan, bcm_pbmp_t pbmp, bcm_pbmp_t ubmp)
{
    HOST_TOLD("unit %d, VLAN %d, ports 0x%x, untagged 0x%x", unit, vlan, pbmp.pbits[0],
              ubmp.pbits[0]);
    for (int word = 0; word < 8; word++) {
        chip.vlan_ports.pbits[word] |= pbmp.pbits[word];
    }
    return 0;
}

int fwmpd_bcm_vlan_port_remove(int unit, bcm_vlan_t vlan, bcm_pbmp_t pbmp)
{
    HOST_TOLD("unit %d, VLAN %d, ports 0x%x", unit, vlan, pbmp.pbits[0]);
    for (int word = 0; word < 8; word++) {
        chip.vlan_ports.pbits[word] &= ~pbmp.pbits[word];
    }
    return 0;
}

/* The cached record is changed in place and then set; a real cache has one for each VLAN. */
bcm_vlan_control_vlan_t *fwmpd_bcm_vlan_control_vlan_get_from_cache(bcm_vlan_t vlan)
{
    return vlan == RTIFHAL_VLAN_ROUTED ? &chip.vlan_control : NULL;
}

int bcm_vlan_control_vlan_get(int unit, bcm_vlan_t vlan, bcm_vlan_control_vlan_t *control)
{
    (void)unit;
    if (vlan != RTIFHAL_VLAN_ROUTED || !chip.has_vlan) {
        return HOST_NOT_FOUND;
    }
    *control = chip.vlan_control;
    return 0;
}

int fwmpd_bcm_vlan_control_vlan_set(int unit, bcm_vlan_t vlan, bcm_vlan_control_vlan_t control)
{
    HOST_TOLD("unit %d, VLAN %d, VRF %u, flags 0x%x", unit, vlan, control.vc_vrf, control.vc_flags);
    chip.vlan_control = control;
    return 0;
}

/* ---- The process ---- */

static void fail(const char *what, const char *why)
{
    fprintf(stderr, "host: %s: %s\n", what, why);
    exit(1);
}

static void *look_up(void *library, const char *name)
{
    void *symbol = dlsym(library, name);
    if (symbol == NULL) {
        fail(name, dlerror());
    }
    return symbol;
}

/* Holds what the chip has against what it should have, with port 1 up or down. */
static void check(const char *request, int code, const struct l3lif *lif, int up)
{
    const int id = chip.port_iif[1];
    const int member = (chip.vlan_ports.pbits[0] >> 1) & 1;
    int objects = 0;
    for (int at = 0; at < OBJECTS; at++) {
        objects += chip.has_interface[at] + chip.has_ingress[at];
    }
    if (code != 0) {
        fail(request, "it was refused");
    }
    if (host_errors != 0) {
        fail(request, "the library reported errors, see above");
    }
    if (lif->lif_state != (up ? RTIFHAL_LIF_PROGRAMMED : RTIFHAL_LIF_DELETED)) {
        fail(request, "the interface isn't in the state that it should be in");
    }
    if (objects != (up ? 2 : 0) || member != up || (id != 0) != up) {
        fail(request, "the chip doesn't hold what it should hold");
    }
    printf("  = %d; port 1: interface %d, %s VLAN %d\n", code, id, member ? "in" : "not in",
           RTIFHAL_VLAN_ROUTED);
}

int main(int argc, char **argv)
{
    if (argc != 2) {
        fprintf(stderr, "usage: %s LIBRARY, e.g. build/release/lib/librtifhal_trident.so\n",
                argv[0]);
        return 2;
    }
    /* RTLD_NOW: a function that this process lacks shows here, by its name. */
    void *library = dlopen(argv[1], RTLD_NOW);
    if (library == NULL) {
        fail("the library can't be loaded", dlerror());
    }

    /* Their types are the headers', so that compiler and library can't differ. */
    __typeof__(rtifhal_trident_add_l3port) *add_port;
    __typeof__(rtifhal_trident_del_l3port) *del_port;
    *(void **)&add_port = look_up(library, "rtifhal_trident_add_l3port");
    *(void **)&del_port = look_up(library, "rtifhal_trident_del_l3port");

    /* Both records are the host's, and stay good until the port is deleted. The ifindex is in your
     * own encoding: answers.c tells the library what it means. */
    struct l3lif_pi_ctxt properties = {.ipv4_en = 1, .vrf = 1, .mtu = 9100};
    struct l3lif lif = {.ifindex = 1, .l3lif_pi_ctxt = &properties};
    memcpy(lif.mac, (const uint8_t[]){0x02, 0, 0, 0, 0x0a, 0x01}, sizeof lif.mac);

    puts("rtifhal_trident_add_l3port, a first creation");
    check("add", add_port(&lif, 1), &lif, 1);
    puts("rtifhal_trident_del_l3port, for good");
    check("delete", del_port(&lif, 1), &lif, 0);
    return dlclose(library) == 0 ? 0 : 1;
}
