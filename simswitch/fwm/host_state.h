/*
 * host_state.h: the forwarding manager's state that routed interfaces look at:
 * which port-channel has which trunk id, which VLANs there are, and the texts of
 * system error codes.
 *
 * The kind of start (g_fwm_pss_restore_mode) is a word of the platform, set
 * where it is needed and put back to 0 with each new switch. Beside it:
 * vlan_records.h, trace_log.h, wrappers.h.
 */
#pragma once

#include "fwm/vlan_records.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace simswitch::fwm
{

// System error codes of the layers above.
inline constexpr int ERROR_NO_SUCH_INTERFACE = 0x40010002;
inline constexpr int ERROR_INTERFACE_NOT_READY = 0x40010005;

/** The forwarding manager's state. */
class HostState
{
public:
    /** How often the in-band path was set up; from the second time on nothing more happens. */
    std::uint64_t inband_inits = 0;

    VlanDirectory vlans; ///< the VLANs, and what each is in a private VLAN

    /**
     * Files a port-channel's trunk id, as fwm_pc_sdb_store does. Here and below a
     * subinterface stands for its port-channel.
     *
     * @param ifindex  the port-channel
     * @param tid      its trunk id, 0 to 65535
     */
    void set_trunk_id(std::uint32_t ifindex, std::uint32_t tid);
    /** Forgets a port-channel's trunk id. */
    void forget_trunk_id(std::uint32_t ifindex);
    /** The trunk id of a port-channel, if it is known. */
    std::optional<std::uint32_t> trunk_id(std::uint32_t ifindex) const;
    /** Forgets all trunk ids. */
    void clear_trunk_ids();
    /** Whose trunk ids were written; who keeps them across a restart watches. */
    chip::Changes<std::uint32_t> &trunk_id_changes() { return trunk_id_changes_; }

    /** The text of a system error code; it stays as long as the switch. */
    const char *error_text(int code);

private:
    chip::Changes<std::uint32_t> trunk_id_changes_;
    std::map<std::uint32_t, std::uint32_t> trunk_ids_;
    std::map<int, std::string> unknown_errors_;
};

} // namespace simswitch::fwm
