/*
 * vxlan_port.cpp: the way to the platform layer's VXLAN virtual ports.
 *
 * The records are the caller's; the library knows no more of them than where
 * the words stand that it prints.
 */
#include "frame/trace.h"
#include "rtifhal_trident.h"

#include <fwmpd/vxlan.h>
#include <string.h>

namespace
{

constexpr size_t VPN_VN_ID = 4;
constexpr size_t VPN_ID = 8;
constexpr size_t VPN_MC_INDEX = 12;
constexpr size_t EGRESS_INTF = 4;
constexpr size_t PORT_FLAGS = 4;
constexpr size_t PORT_MATCH_PORT = 24;
constexpr size_t PORT_CRITERIA = 28;
constexpr size_t PORT_MATCH_VLAN = 32;

template <class Word> Word word_at(const void *record, size_t offset)
{
    Word word;
    memcpy(&word, static_cast<const char *>(record) + offset, sizeof word);
    return word;
}

} // namespace

int rtifhal_trident_vxlan_port_create(int unit, uint32_t if_index, void *vpn, void *egress,
                                      void *port, uintptr_t context)
{
    if (vpn == nullptr || egress == nullptr || port == nullptr) {
        return -1;
    }
    TRACE("%s: Creating vxlan virtual port match_port 0x%Xmatch_vlan %d vpn id 0x%X vn_id %d "
          "bcm_mc_index 0x%Xcriteria %d flags 0x%X if_index 0x%X egr_obj intf %X\n",
          __func__, word_at<uint32_t>(port, PORT_MATCH_PORT),
          static_cast<int>(word_at<uint16_t>(port, PORT_MATCH_VLAN)),
          word_at<uint32_t>(vpn, VPN_ID), word_at<int>(vpn, VPN_VN_ID),
          word_at<uint32_t>(vpn, VPN_MC_INDEX), word_at<int>(port, PORT_CRITERIA),
          word_at<uint32_t>(port, PORT_FLAGS), if_index, word_at<uint32_t>(egress, EGRESS_INTF));
    return rtifhal_bcm_vxlan_port_create(unit, if_index, vpn, egress, port, context);
}

int rtifhal_trident_vxlan_port_delete(int unit, uintptr_t second, uintptr_t third, uintptr_t vpn,
                                      uintptr_t port, uintptr_t context)
{
    (void)second;
    (void)third;
    return rtifhal_bcm_vxlan_port_delete(unit, vpn, port, context);
}
