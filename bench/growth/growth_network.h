/*
 * growth_network.h: the layer above the library, as far as it takes to bring thousands of
 * interfaces up on the null platform: their records, and a mix of all kinds.
 *
 * growth_requests.h has the requests that are measured on such a network.
 */
#pragma once

#include "null_platform.h"

#include <rtifhal_trident.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

namespace bench
{

enum class Kind : std::uint8_t {
    port,
    port_channel,
    svi,
    subinterface,         ///< of a port
    channel_subinterface, ///< of a port-channel
    tunnel,
};

/** An interface's records; they stay where they are while the library knows them. */
struct Interface {
    Kind kind = Kind::port;
    std::uint16_t vlan = 0; ///< an SVI's or a subinterface's, else 0
    l3lif record{};
    l3lif view{};   ///< of the port-channel under a subinterface: what the library works on
    l3lif member{}; ///< a port-channel's first member
    l3lif_pi_ctxt properties{};
    Interface *main = nullptr; ///< of a subinterface
};

/**
 * The interfaces of one process. A request that fails ends the program with a line on stderr.
 * As the library's tables begin anew in a new process only, a process has one network.
 */
class Network
{
public:
    explicit Network(null_platform::Chip chip);
    Network(const Network &) = delete;
    Network &operator=(const Network &) = delete;

    /** A port that isn't up yet. @param port  0 to 103 */
    Interface &port(std::uint32_t port);
    /** A port-channel that isn't up yet. @param channel  0 to 1023  @param member  its port */
    Interface &port_channel(std::uint32_t channel, std::uint32_t member);
    /** An SVI that isn't up yet. @param vlan  1 to 4093 */
    Interface &svi(std::uint16_t vlan);
    /** A subinterface that isn't up yet. @param main  a port or a port-channel  @param vlan  1 to
     * 4093 */
    Interface &subinterface(Interface &main, std::uint16_t vlan);
    /** A tunnel that isn't up yet. @param tunnel  0 to 8191 */
    Interface &tunnel(std::uint32_t tunnel);

    /** Brings interfaces of all kinds up until so many are; each of its kinds is there from 16 on.
     */
    void fill(std::size_t interfaces);

    /** Interfaces that are up. */
    std::size_t up() const { return up_; }

    /** Puts an interface where the library finds it, before its add. */
    void announce(Interface &interface);
    /** Takes it out of there, after its delete. */
    void withdraw(Interface &interface);
    /** The library's request, for an announced interface. */
    void add(Interface &interface, int create = 1);
    void remove(Interface &interface, int destroy = 1);
    /** Announces an interface and brings it up. */
    void bring_up(Interface &interface);

    /** Keeps the tables of numbers as they are, for restore_numbers(). */
    void keep_numbers();
    /** Gives back what was handed out, and held back, since keep_numbers(). */
    void restore_numbers();

private:
    Interface &make(Kind kind, std::uint32_t ifindex, std::uint16_t vlan);
    Interface &next_subinterface(Interface &main);
    void fill_one(std::size_t turn);

    std::deque<Interface> interfaces_;
    std::vector<Interface *> ports_;    ///< of the mix, with subinterfaces
    std::vector<Interface *> channels_; ///< of the mix, with subinterfaces
    std::size_t up_ = 0;
    std::size_t subinterfaces_ = 0;
    std::size_t channel_subinterfaces_ = 0;
    std::uint16_t svis_ = 0;
    std::uint32_t tunnels_ = 0;
    l3iif_bitmap_t kept_{};
    l3iif_bitmap_t kept_preserve_{};
};

/** Ends the program with a line on stderr unless the value is 0. */
void must_succeed(int value, const char *request);

} // namespace bench
