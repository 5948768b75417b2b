/*
 * services.cpp: the null platform's services and its layer above: questions about an ifindex,
 * interfaces that are looked up, the persistent store, messages, the tracked heap.
 */
#include "calls.h"
#include "tables.h"

#include <fwm/state.h>
#include <fwmpd/l3_cache.h>
#include <fwmpd/platform.h>
#include <fwmpd/pss.h>
#include <l3lif/l3lif_layer.h>
#include <services/if_index.h>
#include <services/l3vm.h>
#include <services/mts.h>
#include <services/system.h>

#include <array>
#include <cstdio>
#include <cstdlib>

using namespace null_platform;
using recording::handle;
using recording::in;
using recording::out;
using recording::text;

namespace
{

constexpr std::uint8_t TYPE_SVI = 9;
constexpr std::uint8_t TYPE_PORT_CHANNEL = 22;
constexpr std::uint8_t TYPE_TUNNEL = 24;
constexpr std::uint8_t TYPE_ETHERNET = 26;

/** The platform's types by the kind in an ifindex; 0 for none. */
constexpr std::array<std::uint8_t, KINDS> TYPES = {0, TYPE_ETHERNET, TYPE_PORT_CHANNEL, TYPE_SVI,
                                                   TYPE_TUNNEL};

/** Bytes of the global configuration. */
constexpr std::size_t GLOBAL_CONFIG_SIZE = 1068;

/** Text of any system error. */
constexpr char ERROR_TEXT[] = "error";

/** What stands for the message that was sent. */
unsigned char sent_message;

struct l3lif *find_interface(std::uint32_t ifindex)
{
    struct l3lif *const *const slot = slot_of(ifindex);
    return slot != nullptr ? *slot : nullptr;
}

bool is_on_port_or_channel(std::uint32_t ifindex)
{
    return kind_of(ifindex) == KIND_PORT || kind_of(ifindex) == KIND_PORT_CHANNEL;
}

} // namespace

extern "C" {

struct mts_queue *fwm_q_mts = nullptr;

int if_index_get_type(uint32_t ifindex, uint8_t *type)
{
    CALLED(if_index_get_type, ifindex, out(type));
    *type = TYPES[kind_of(ifindex)];
    return *type != 0 ? 0 : -1;
}

int if_index_get_port(uint32_t ifindex, uint8_t *port)
{
    CALLED(if_index_get_port, ifindex, out(port));
    if (kind_of(ifindex) != KIND_PORT) {
        return -1;
    }
    *port = static_cast<std::uint8_t>(main_number_of(ifindex));
    return 0;
}

int if_index_get_sub_intf(uint32_t ifindex, uint16_t *number)
{
    CALLED(if_index_get_sub_intf, ifindex, out(number));
    if (!is_on_port_or_channel(ifindex)) {
        return -1;
    }
    *number = static_cast<std::uint16_t>(sub_number_of(ifindex));
    return 0;
}

int if_index_is_eth_port_channel_intf(uint32_t ifindex)
{
    CALLED(if_index_is_eth_port_channel_intf, ifindex);
    return kind_of(ifindex) == KIND_PORT_CHANNEL ? 1 : 0;
}

int if_index_is_sub_intf(uint32_t ifindex)
{
    CALLED(if_index_is_sub_intf, ifindex);
    return sub_number_of(ifindex) != 0 ? 1 : 0;
}

int if_index_is_physical_interface(uint32_t ifindex)
{
    CALLED(if_index_is_physical_interface, ifindex);
    return kind_of(ifindex) == KIND_PORT && sub_number_of(ifindex) == 0 ? 1 : 0;
}

int if_index_is_tunnel_intf(uint32_t ifindex)
{
    CALLED(if_index_is_tunnel_intf, ifindex);
    return kind_of(ifindex) == KIND_TUNNEL ? 1 : 0;
}

int if_index_port_channel_get_channel_num(uint32_t ifindex, uint16_t *number)
{
    CALLED(if_index_port_channel_get_channel_num, ifindex, out(number));
    *number = static_cast<std::uint16_t>(main_number_of(ifindex));
    return 0;
}

uint32_t if_index_get_mainintf_from_subintf(uint32_t ifindex)
{
    CALLED(if_index_get_mainintf_from_subintf, ifindex);
    return is_on_port_or_channel(ifindex) ? ifindex & ~0xFFFU : ifindex;
}

char *snprintf_if_index(char *buffer, size_t size, uint32_t ifindex)
{
    CALLED(snprintf_if_index, out(buffer, size), size, ifindex);
    (void)std::snprintf(buffer, size, "%#x", ifindex);
    return GIVES(buffer);
}

int fwm_ifindex_2_tid(uint32_t ifindex, uint32_t *tid)
{
    CALLED(fwm_ifindex_2_tid, ifindex, out(tid));
    const std::uint32_t channel = main_number_of(ifindex);
    if (channel >= PORT_CHANNELS || tables.tids[channel] == 0) {
        return -1;
    }
    *tid = tables.tids[channel];
    return 0;
}

int fwm_pc_sdb_store(const uint16_t *key, const fwm_pc_sdb_value_t *value)
{
    CALLED(fwm_pc_sdb_store, in(key), in(value));
    if (const std::uint32_t channel = main_number_of(value->ifindex); channel < PORT_CHANNELS) {
        tables.tids[channel] = value->tid;
    }
    return 0;
}

const char *fwm_syserr2str(int code)
{
    CALLED(fwm_syserr2str, code);
    return ERROR_TEXT;
}

struct l3lif *l3lif_find_lif_from_ifindex(uint32_t ifindex)
{
    CALLED(l3lif_find_lif_from_ifindex, ifindex);
    return GIVES(find_interface(ifindex));
}

struct l3lif *l3lif_find_lif_from_int_vlan(uint16_t vlan)
{
    CALLED(l3lif_find_lif_from_int_vlan, vlan);
    struct l3lif *const found = directory.by_int_vlan[vlan % VLANS];
    return GIVES(found);
}

int l3lif_get_iif_for_ifindex_new(uint32_t ifindex, l3lif_iif_info_t *info)
{
    CALLED(l3lif_get_iif_for_ifindex_new, ifindex, out(info));
    const struct l3lif *const found = find_interface(ifindex);
    if (found == nullptr || found->l3lif_pd_ctxt == nullptr ||
        found->l3lif_pd_ctxt->l3_pd == nullptr || found->l3lif_pd_ctxt->l3_pd->l3intf_id == 0) {
        return -1;
    }
    *info = {};
    info->l3iif = found->l3lif_pd_ctxt->l3_pd->l3intf_id;
    return 0;
}

int l3lif_update_sdb_for_intf(struct l3lif *l3lif)
{
    CALLED(l3lif_update_sdb_for_intf, handle(l3lif));
    return 0;
}

int rtifhal_if_has_si(uint32_t ifindex)
{
    CALLED(rtifhal_if_has_si, ifindex);
    const struct l3lif *const main = find_interface(ifindex);
    return main != nullptr && main->subint_tree != nullptr && main->subint_tree->count != 0 ? 1 : 0;
}

int rtifhal_pss_l3port_store(void *pss_context, int mode, struct l3lif *l3lif)
{
    CALLED(rtifhal_pss_l3port_store, handle(pss_context), mode, handle(l3lif));
    return 0;
}

int rtifhal_pss_l3port_delete(void *pss_context, int mode, uint32_t ifindex)
{
    CALLED(rtifhal_pss_l3port_delete, handle(pss_context), mode, ifindex);
    return 0;
}

int fwmpd_pss_globalc_store(void *pss_context, const unsigned char *config, int whole)
{
    CALLED(fwmpd_pss_globalc_store, handle(pss_context), in(config, GLOBAL_CONFIG_SIZE), whole);
    return 0;
}

int sysmgr_is_fastboot_restart(void)
{
    CALLED(sysmgr_is_fastboot_restart);
    return tables.fast_restart ? 1 : 0;
}

int get_string_from_platform_inf(const char *section, const char *key, char *buffer, int size)
{
    CALLED(get_string_from_platform_inf, text(section), text(key),
           out(buffer, static_cast<std::size_t>(size)), size);
    return 0;
}

void mtrack_free(void *memory)
{
    CALLED(mtrack_free, handle(memory));
    std::free(memory);
}

int lcache_im_get_iod_frm_ifindex(uint32_t ifindex, uint32_t *iod)
{
    CALLED(lcache_im_get_iod_frm_ifindex, ifindex, out(iod));
    *iod = ifindex;
    return 0;
}

uint32_t l3vm_if_get_context_id(uint32_t iod)
{
    CALLED(l3vm_if_get_context_id, iod);
    return 1;
}

int mts_send(struct mts_queue *queue, uint32_t node, uint32_t service, uint32_t opcode,
             const void *payload, uint32_t length, struct mts_message **message, int mode,
             const mts_options_t *options)
{
    CALLED(mts_send, handle(queue), node, service, opcode, in(payload, length), length,
           out(message, sizeof(void *)), mode, in(options));
    *message = reinterpret_cast<struct mts_message *>(&sent_message);
    return 0;
}

void mts_drop(struct mts_queue *queue, struct mts_message *message)
{
    CALLED(mts_drop, handle(queue), handle(message));
}
}
