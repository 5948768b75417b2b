/*
 * counters.cpp: see counters.h.
 */
#include "cpu/counters.h"

#include <numeric>

namespace lab::cpu
{

std::string_view text(Done done)
{
    constexpr std::array<std::string_view, DONE_COUNT> TEXTS = {
        "ARP requests answered",   "neighbour solicitations answered",
        "echo requests answered",  "neighbours learned",
        "neighbours asked for",    "packets that waited for a neighbour",
        "waiting packets sent on", "time exceeded sent",
        "packet too big sent",     "unreachable sent",
    };
    return TEXTS.at(static_cast<std::size_t>(done));
}

std::string_view text(Ignored why)
{
    constexpr std::array<std::string_view, IGNORED_COUNT> TEXTS = {
        "ignored: on no interface that is up",
        "ignored: came through a tunnel",
        "ignored: malformed",
        "ignored: wrong checksum",
        "ignored: hop limit of neighbour discovery isn't 255",
        "ignored: of a protocol that nobody listens to",
        "ignored: fragment",
        "ignored: not from a single host",
        "ignored: sent to a group",
        "ignored: for an address that isn't of the interface",
        "ignored: from an address or MAC of the switch",
        "ignored: neighbour not of the interface's network",
        "ignored: neighbour is static",
        "ignored: neighbour not taken",
        "ignored: no room for more neighbours",
        "ignored: no port to ask on",
        "ignored: too many packets wait for one neighbour",
        "ignored: packets wait for too many neighbours",
        "ignored: neighbour still unknown to the chip",
        "ignored: longer than the MTU, and nothing is fragmented here",
        "ignored: error about an error, a group or a fragment's tail",
        "ignored: no address to report an error from",
        "ignored: too many errors in a second",
    };
    return TEXTS.at(static_cast<std::size_t>(why));
}

std::uint64_t Counters::ignored() const
{
    return std::accumulate(ignored_.begin(), ignored_.end(), std::uint64_t{0});
}

std::vector<std::pair<std::string_view, std::uint64_t>> Counters::all() const
{
    std::vector<std::pair<std::string_view, std::uint64_t>> list;
    for (std::size_t i = 0; i < DONE_COUNT; ++i) {
        if (done_.at(i) != 0) {
            list.emplace_back(text(static_cast<Done>(i)), done_.at(i));
        }
    }
    for (std::size_t i = 0; i < IGNORED_COUNT; ++i) {
        if (ignored_.at(i) != 0) {
            list.emplace_back(text(static_cast<Ignored>(i)), ignored_.at(i));
        }
    }
    return list;
}

} // namespace lab::cpu
