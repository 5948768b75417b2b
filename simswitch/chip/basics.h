/*
 * basics.h: what all tables of the chip share: ports and sets of them, MAC
 * addresses, and the ranges of the ids that callers choose.
 */
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>

namespace simswitch::chip
{

inline constexpr int CPU_PORT = 0;          ///< the CPU's port
inline constexpr int FIRST_FRONT_PORT = 1;  ///< the first port of the front panel
inline constexpr int LAST_FRONT_PORT = 104; ///< the last port of the front panel
inline constexpr int LAST_PORT = 255;       ///< the highest port number that the SDK takes

inline constexpr int DEFAULT_VLAN = 1; ///< exists at boot, with all ports
inline constexpr int LAST_VLAN = 4095; ///< the highest VLAN id
inline constexpr int LAST_IIF = 8191;  ///< the highest id of L3 interfaces and L3 ingress objects

/** A MAC address, first byte first. */
using Mac = std::array<std::uint8_t, 6>;

/** "00:11:22:33:44:55". */
std::string text(const Mac &mac);

/** A set of ports 0..255; a port outside has no place in it and is never a member. */
class PortSet
{
public:
    using Words = std::array<std::uint32_t, 8>;

    PortSet() = default;
    PortSet(std::initializer_list<int> ports);
    /** The set whose port p is bit p modulo 32 of word p / 32. */
    explicit PortSet(const Words &words) : words_(words) {}
    /** All ports from first to last, both included. */
    static PortSet range(int first, int last);
    /** The ports of the front panel. */
    static PortSet front() { return range(FIRST_FRONT_PORT, LAST_FRONT_PORT); }
    /** All 256. */
    static PortSet all() { return range(0, LAST_PORT); }

    void add(int port);
    void remove(int port);
    bool has(int port) const;
    bool empty() const { return words_ == Words{}; }
    int count() const;
    /** The same set as words. */
    const Words &words() const { return words_; }
    /** "{0,5,9-12}": three and more in a row as a range. */
    std::string text() const;

    PortSet &operator|=(const PortSet &other);
    PortSet &operator&=(const PortSet &other);
    /** Takes the members of `other` out. */
    PortSet &operator-=(const PortSet &other);
    bool operator==(const PortSet &) const = default;

private:
    Words words_{};
};

inline bool is_port(int port)
{
    return port >= 0 && port <= LAST_PORT;
}
inline bool is_vlan(int vlan)
{
    return vlan >= 1 && vlan <= LAST_VLAN;
}

} // namespace simswitch::chip
