/*
 * neighbors.h: the hosts on the switch's networks: what is learned of them, and
 * the packets that wait until one is found.
 *
 * A neighbour is asked for three times, a second apart, then the senders of the
 * packets are told that it can't be reached. What waits is bounded: so many
 * packets for each neighbour, so many neighbours. A neighbour that was found
 * stays until the layers above forget it: there is no ageing. What others have
 * made known, a configuration for one, is never changed by what is learned.
 */
#pragma once

#include "cpu/counters.h"
#include "cpu/icmp.h"
#include "cpu/links.h"
#include "cpu/packets.h"
#include "l3lif/layer.h"
#include "routing/routing.h"

#include "switch.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <utility>

namespace lab::cpu
{

inline constexpr std::size_t WAITING_PACKETS = 8;     ///< for one neighbour; the oldest gives way
inline constexpr std::size_t WAITING_NEIGHBORS = 256; ///< that packets wait for
inline constexpr std::size_t NEIGHBORS_MAX = 1024;    ///< no more are learned
inline constexpr unsigned QUESTIONS = 3;
inline constexpr std::chrono::milliseconds QUESTION_INTERVAL{1000};

/** The neighbours. */
class Neighbors
{
public:
    /** Takes a frame through the chip again. */
    using Again = std::function<void(int port, std::span<const std::uint8_t> frame,
                                     std::chrono::milliseconds now)>;

    /** All must outlive this. */
    Neighbors(const simswitch::Switch &hardware, const l3lif::Layer &layer,
              routing::Routing &routing, Icmp &icmp, Counters &counters, const Send &send,
              Again again)
        : hardware_(hardware), layer_(layer), routing_(routing), icmp_(icmp), counters_(counters),
          send_(send), again_(std::move(again))
    {
    }

    /**
     * Learns where a host is, when it is one of the network of the interface, and
     * sends on what waits for it.
     *
     * @param arrival  how the frame came in that tells
     * @param host     its address and MAC
     */
    void learn(const Arrival &arrival, const Party &host, std::chrono::milliseconds now);
    /**
     * Keeps a packet whose next hop isn't known, and asks for that.
     *
     * @param in  the packet, which isn't to an address of the switch
     */
    void wait(const Received &in, std::chrono::milliseconds now);
    /** Asks again, or gives up, where it is time to. */
    void tick(std::chrono::milliseconds now);
    /** When tick has something to do next. */
    std::optional<std::chrono::milliseconds> next_due() const;

private:
    /** Interface and address. */
    using Key = std::pair<std::string, std::array<std::uint8_t, 17>>;
    struct Packet {
        Arrival arrival;
        Bytes frame;
    };
    struct Wanted {
        config::IpAddress address;
        routing::OwnAddress own; ///< who asks
        std::deque<Packet> packets;
        unsigned questions = 0; ///< that were asked
        std::chrono::milliseconds due{0};
    };
    struct Learned {
        routing::Neighbor told;
        routing::Neighbor stored; ///< what became of it
    };

    static Key key_of(const std::string &interface, const config::IpAddress &address);
    const routing::Neighbor *find(const std::string &interface,
                                  const config::IpAddress &address) const;
    bool store(const routing::Neighbor &neighbor);
    void ask(Wanted &wanted, std::chrono::milliseconds now);
    void send_on(const Key &key, std::chrono::milliseconds now);
    void give_up(const Key &key, std::chrono::milliseconds now);

    const simswitch::Switch &hardware_;
    const l3lif::Layer &layer_;
    routing::Routing &routing_;
    Icmp &icmp_;
    Counters &counters_;
    const Send &send_;
    Again again_;
    std::map<Key, Wanted> wanted_;
    std::map<Key, Learned> learned_;
    bool is_sending_on_ = false;
};

} // namespace lab::cpu
