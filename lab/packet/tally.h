/*
 * tally.h: what became of many frames, counted: by the chip's verdict and reason,
 * and by the port on which they left. capture.h and wire/wire.h fill it.
 */
#pragma once

#include "chip/pipeline/result.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <map>
#include <tuple>

namespace lab::packet
{

/** Frames and how many bytes they have together. */
struct Traffic {
    std::uint64_t frames = 0;
    std::uint64_t bytes = 0;

    bool operator==(const Traffic &) const = default;
};

/** Frames that have something in common. */
struct Count {
    std::uint64_t frames = 0;
    std::uint64_t first = 0; ///< number of the first of them, from 1

    /** Counts one more. @param number  its number, from 1 */
    void add(std::uint64_t number)
    {
        first = frames == 0 ? number : first;
        ++frames;
    }
    bool operator==(const Count &) const = default;
};

/** The fates of many frames. */
class Tally
{
public:
    using Verdict = simswitch::chip::pipeline::Verdict;
    using Reason = simswitch::chip::pipeline::Reason;

    /** Counts a frame that came in. @param number  its number, from 1 */
    void came_in(std::uint64_t number, const simswitch::chip::pipeline::Result &result);
    /** Counts a frame that left, the CPU's own among them. */
    void went_out(int port, std::size_t bytes);

    /** Frames that came in. */
    std::uint64_t frames() const { return frames_; }
    /** By verdict and reason. */
    const std::map<std::tuple<Verdict, Reason>, Count> &fates() const { return fates_; }
    /** Of the frames that were sent, those that the CPU got a copy of, by its reason. */
    const std::map<Reason, Count> &copies() const { return copies_; }
    /** What left, by port. */
    const std::map<int, Traffic> &out() const { return out_; }

private:
    std::uint64_t frames_ = 0;
    std::map<std::tuple<Verdict, Reason>, Count> fates_;
    std::map<Reason, Count> copies_;
    std::map<int, Traffic> out_;
};

/** Prints the fates as a table, a line each; nothing when no frame came in. */
void print(const Tally &tally, std::ostream &out);

/** The fates as an array of objects: fate, reason, frames, first. */
nlohmann::ordered_json json_of(const Tally &tally);

} // namespace lab::packet
