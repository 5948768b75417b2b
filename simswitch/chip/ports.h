/*
 * ports.h: the ports: their controls, their VLAN controls, the VLAN of their
 * untagged frames and what they discard.
 *
 * Ports 0..255 can be written to; 0 is the CPU, 1..104 are the front panel. At
 * boot all controls are 0, the untagged VLAN is 1 and nothing is discarded.
 */
#pragma once

#include "chip/basics.h"
#include "chip/limits.h"
#include "chip/outcome.h"
#include "chip/table.h"

namespace simswitch::chip
{

inline constexpr int PORT_CONTROL_IP4 = 8;         ///< IPv4 unicast routing
inline constexpr int PORT_CONTROL_IP6 = 9;         ///< IPv6 unicast routing
inline constexpr int PORT_CONTROL_IP4_MC = 10;     ///< IPv4 multicast routing
inline constexpr int PORT_CONTROL_IP6_MC = 11;     ///< IPv6 multicast routing
inline constexpr int PORT_CONTROL_MPLS = 14;       ///< MPLS
inline constexpr int PORT_CONTROL_INGRESS = 67;    ///< the port's L3 ingress object
inline constexpr int PORT_CONTROL_VXLAN = 187;     ///< VXLAN, Trident2 only
inline constexpr int LAST_VLAN_PORT_CONTROL = 255; ///< the highest VLAN control of a port
inline constexpr int LAST_DISCARD_MODE = 3;        ///< 0 none, 1 all, 2 untagged, 3 tagged

/** A port. */
struct Port {
    std::map<int, int> controls{};      ///< value by control; one that was never set is 0
    std::map<int, int> vlan_controls{}; ///< the same for the VLAN controls
    int untagged_vlan = DEFAULT_VLAN;   ///< VLAN of untagged frames
    int discard = 0;                    ///< what is discarded, 0 for nothing

    bool operator==(const Port &) const = default;
};

/** "untagged 1 discard 0 controls 8=1 67=3 vlan-controls 2=1"; controls of 0 are left out. */
std::string text(const Port &port);

/** The table of ports. */
class Ports
{
public:
    explicit Ports(Kind kind) : kind_(kind) {}

    // Ports are neither created nor removed. All setters: -4 for a port out of 0..255.

    /** Sets a control. -16 for a control that the chip lacks. */
    Outcome set_control(int port, int control, int value);
    /** Sets a VLAN control. -4 for a control out of 0..255. */
    Outcome set_vlan_control(int port, int control, int value);
    /** Sets the VLAN of untagged frames. -4 for a VLAN out of 1..4095. */
    Outcome set_untagged_vlan(int port, int vlan);
    /** Sets what is discarded. -4 for a mode out of 0..3. */
    Outcome set_discard(int port, int mode);

    // What a setter would refuse, for who queues the write.
    Outcome check_control(int port, int control) const;
    Outcome check_vlan_control(int port, int control) const;
    Outcome check_untagged_vlan(int port, int vlan) const;
    Outcome check_discard(int port, int mode) const;

    /** The port as it is; what it is at boot when it was never written to. */
    Port get(int port) const;
    /** The port when it is not as it is at boot, else null. */
    const Port *find(int port) const;
    /** The value of a control, 0 when it was never set. */
    int control(int port, int control) const;
    /** The value of a VLAN control, 0 when it was never set. */
    int vlan_control(int port, int control) const;
    /** The ports that are not as they are at boot. */
    std::map<int, Port> all() const;

    // For who keeps a copy of the table across a restart.

    /** Empties the table, of what is there at boot too. */
    void clear() { table_.clear(); }
    /** Puts an entry of the copy in; a record that create or a setter would refuse is refused. */
    Outcome restore(int id, const Port &record);
    /** Which entries were written. */
    Changes<int> &changes() { return table_.changes(); }
    /** Grows with each write. */
    std::uint64_t generation() const { return table_.generation(); }

private:
    Port &touch(int port);

    Kind kind_;
    Table<Port> table_;
};

} // namespace simswitch::chip
