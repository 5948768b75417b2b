/*
 * dump.cpp: what the diagnostic command prints: the virtual MACs of an
 * interface, and the tables of interface numbers as lists of ranges.
 *
 * A line goes to the command, or to the trace where there is none. The line
 * buffers are shared: one dump at a time.
 */
#include "frame/trace.h"
#include "rtifhal_trident.h"

#include <services/avl.h>
#include <services/cmd.h>
#include <stdio.h>

namespace
{

constexpr size_t LINE_SIZE = 256;
char rtifhal_dump_one_line[LINE_SIZE];
char fwm_pd_dump_one_line[LINE_SIZE];

/** Room for the list of one line, its zero byte included. */
constexpr size_t LIST_SIZE = 63;

constexpr int BITS = 8192;
constexpr int NO_BIT = -1;

void emit_virtual_mac(void *command)
{
    if (command != nullptr) {
        (void)cmd_prt(command, rtifhal_dump_one_line, 0);
        return;
    }
    TRACE_OF(rtifhal_trident_dump_l3lif, "%s", rtifhal_dump_one_line);
}

void emit_bitmap(void *command)
{
    if (command != nullptr) {
        (void)cmd_prt(command, fwm_pd_dump_one_line, 0);
        return;
    }
    TRACE_OF(fwm_dump_bitmap, "%s", fwm_pd_dump_one_line);
}

void dump_virtual_mac(void *command, const char *prefix, const fhrp_mac_entry_t &entry)
{
    const uint8_t *const mac = entry.mac;
    char mac_text[sizeof "00:00:00:00:00:00"];
    (void)snprintf(mac_text, sizeof mac_text, "%02x:%02x:%02x:%02x:%02x:%02x", mac[0], mac[1],
                   mac[2], mac[3], mac[4], mac[5]);
    (void)snprintf(rtifhal_dump_one_line, sizeof rtifhal_dump_one_line,
                   "%s:pd: vlan=%d fhrp_mac=%s\n", prefix, entry.vlan, mac_text);
    emit_virtual_mac(command);
}

bool has_bit(const l3iif_bitmap_t &bitmap, int bit)
{
    return (bitmap.bits[bit / 8] & (0x80 >> (bit % 8))) != 0;
}

/** The first set bit from `from` on; NO_BIT when there is none. */
int next_bit(const l3iif_bitmap_t &bitmap, int from)
{
    for (int bit = from < 0 ? 0 : from; bit < BITS; ++bit) {
        if (has_bit(bitmap, bit)) {
            return bit;
        }
    }
    return NO_BIT;
}

int last_of_run(const l3iif_bitmap_t &bitmap, int first)
{
    int last = first;
    while (last + 1 < BITS && has_bit(bitmap, last + 1)) {
        ++last;
    }
    return last;
}

/** Puts a run behind the list. False when it doesn't fit; the list is then as before. */
bool append_run(char (&list)[LIST_SIZE], size_t &length, int first, int last)
{
    const char *const separator = length == 0 ? "" : ",";
    char *const end = list + length;
    const size_t room = sizeof list - length;
    const int written = first == last ? snprintf(end, room, "%s%d", separator, first)
                                      : snprintf(end, room, "%s%d-%d", separator, first, last);
    if (written < 0 || static_cast<size_t>(written) >= room) {
        *end = '\0';
        return false;
    }
    length += static_cast<size_t>(written);
    return true;
}

/** Lists runs from a bit on, as many as a line has room for. True when they were the last. */
bool fill_line(const l3iif_bitmap_t &bitmap, int from, char (&list)[LIST_SIZE])
{
    size_t length = 0;
    list[0] = '\0';
    for (int first = next_bit(bitmap, from); first != NO_BIT;) {
        const int last = last_of_run(bitmap, first);
        if (!append_run(list, length, first, last)) {
            return false;
        }
        printf_curr_idx = last;
        first = next_bit(bitmap, last + 1);
    }
    printf_curr_idx = 0;
    return true;
}

} // namespace

int rtifhal_trident_dump_l3lif(void *command, const char *prefix, const struct l3lif *l3lif)
{
    if (l3lif == nullptr) {
        REPORT(" Got l3lif as null");
        return -1;
    }
    int port = -1;
    // Only a port gets past this: an SVI's virtual MACs are never listed here.
    if (fwmpd_ifindex_to_bcm_port(l3lif->ifindex, &port) != 0) {
        REPORT("unable to get intf(%d)\n", l3lif->ifindex);
        return -1;
    }
    TRACE("bcm_port: %d\n", port);
    if (fhrp_mac_hash == nullptr || fhrp_mac_hash->count == 0) {
        return 0;
    }
    for (avl_node_t *node = avl_get_first(fhrp_mac_hash); node != nullptr;
         node = avl_get_next(fhrp_mac_hash, node)) {
        const auto &entry = *static_cast<const fhrp_mac_entry_t *>(node->payload);
        if (entry.ifindex == l3lif->ifindex) {
            dump_virtual_mac(command, prefix, entry);
        }
    }
    return 0;
}

void rtifhal_kelvo_dump_global_info(uint32_t ignored, void *command)
{
    (void)ignored;
    fwm_dump_bitmap(&l3lif_l3iif_table, command);
    fwm_dump_bitmap(&l3lif_l3iif_table_preserve, command);
}

void fwm_dump_bitmap(const l3iif_bitmap_t *bitmap, void *command)
{
    if (bitmap == nullptr) {
        return;
    }
    char list[LIST_SIZE];
    bool complete = fill_line(*bitmap, 0, list);
    while (true) {
        (void)snprintf(fwm_pd_dump_one_line, sizeof fwm_pd_dump_one_line, " l3lif bitmap: %s\n",
                       list);
        emit_bitmap(command);
        if (complete) {
            return;
        }
        // Read anew: the command's output may have moved the place.
        const int from = printf_curr_idx < BITS ? printf_curr_idx + 1 : BITS;
        complete = fill_line(*bitmap, from, list);
    }
}
