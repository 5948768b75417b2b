/*
 * vxlan.cpp: the platform layer's VXLAN virtual ports (fwmpd/vxlan.h) over
 * chip/vxlan_ports.h. They go to the chip at once.
 */
#include <fwmpd/vxlan.h>

#include "chip/refusal.h"
#include "sdk/access.h"

#include <cstring>
#include <fmt/format.h>

using namespace simswitch;

namespace
{

template <class Word> Word word_at(const void *record, std::size_t offset)
{
    Word word{};
    std::memcpy(&word, static_cast<const char *>(record) + offset, sizeof word);
    return word;
}

chip::VxlanPort read_port(std::uint32_t if_index, const void *vpn, const void *egress,
                          const void *port)
{
    return {
        .if_index = if_index,
        .vpn = word_at<std::uint32_t>(vpn, 8),
        .vn_id = word_at<std::uint32_t>(vpn, 4),
        .mc_index = word_at<std::uint32_t>(vpn, 12),
        .egress_if = word_at<std::uint32_t>(egress, 4),
        .flags = word_at<std::uint32_t>(port, 4),
        .criteria = word_at<std::uint32_t>(port, 28),
        .match_port = word_at<std::uint32_t>(port, 24),
        .match_vlan = word_at<std::uint16_t>(port, 32),
    };
}

} // namespace

extern "C" {

int rtifhal_bcm_vxlan_port_create(int unit, uint32_t if_index, void *vpn, void *egress, void *port,
                                  uintptr_t context)
{
    const chip::VxlanPort wanted = read_port(if_index, vpn, egress, port);
    const std::string shown = text(wanted);
    Call call(Layer::wrapper, __func__, unit, if_index, Word{shown}, context);
    return sdk::write(call, unit, [&](chip::Chip &chip) {
        int id = 0;
        Outcome outcome = chip.vxlan_ports.create(wanted, id);
        if (outcome.ok()) {
            std::memcpy(port, &id, sizeof id);
            call.out("id", id);
        }
        return outcome;
    });
}

int rtifhal_bcm_vxlan_port_delete(int unit, uintptr_t vpn, uintptr_t port, uintptr_t context)
{
    Call call(Layer::wrapper, __func__, unit, vpn, port, context);
    return sdk::write(call, unit, [&](chip::Chip &chip) -> Outcome {
        // What doesn't fit a 32-bit id names no port.
        const auto id = static_cast<std::uint32_t>(port);
        if (id != port || static_cast<std::uint32_t>(vpn) != vpn) {
            return chip::unknown("VXLAN port", static_cast<long long>(port));
        }
        return chip.vxlan_ports.remove(static_cast<std::uint32_t>(vpn), static_cast<int>(id));
    });
}

} // extern "C"
