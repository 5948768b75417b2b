/*
 * counters.h: what the CPU did with the frames that the chip handed to it, and
 * why it did nothing with others. cpu.h counts.
 */
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

namespace lab::cpu
{

/** What the CPU does. */
enum class Done : std::uint8_t {
    arp_answered,
    nd_answered,
    echo_answered,
    learned,
    asked,
    waited,
    resumed,
    time_exceeded,
    too_long,
    unreachable,
};
inline constexpr std::size_t DONE_COUNT = static_cast<std::size_t>(Done::unreachable) + 1;

/** Why the CPU does nothing. */
enum class Ignored : std::uint8_t {
    no_interface,
    tunnel,
    malformed,
    bad_checksum,
    hop_limit,
    protocol,
    fragment,
    bad_source,
    group,
    not_ours,
    own_claimed,
    not_on_link,
    static_neighbor,
    neighbor_refused,
    neighbors_full,
    no_way_out,
    queue_full,
    waiting_full,
    still_unknown,
    needs_fragments,
    about_error,
    no_address,
    rate_limited,
};
inline constexpr std::size_t IGNORED_COUNT = static_cast<std::size_t>(Ignored::rate_limited) + 1;

/** "ARP requests answered". */
std::string_view text(Done done);
/** "sent to nobody's address". */
std::string_view text(Ignored why);

/** The counts since the start. */
class Counters
{
public:
    void count(Done done) { ++done_.at(static_cast<std::size_t>(done)); }
    void count(Ignored why) { ++ignored_.at(static_cast<std::size_t>(why)); }

    /** How often it was done. */
    std::uint64_t of(Done done) const { return done_.at(static_cast<std::size_t>(done)); }
    /** How often nothing was done for this reason. */
    std::uint64_t of(Ignored why) const { return ignored_.at(static_cast<std::size_t>(why)); }
    /** How often nothing was done in all. */
    std::uint64_t ignored() const;
    /** Those that aren't 0 with their texts: first what was done, then "ignored: …". */
    std::vector<std::pair<std::string_view, std::uint64_t>> all() const;

private:
    std::array<std::uint64_t, DONE_COUNT> done_{};
    std::array<std::uint64_t, IGNORED_COUNT> ignored_{};
};

} // namespace lab::cpu
