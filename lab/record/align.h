/*
 * align.h: two lists of lines beside each other: which are the same, which are
 * the same call with other numbers, which stand in one list only. compare.h
 * compares requests by it.
 */
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace lab::record
{

/** What becomes of a line. */
enum class StepKind : std::uint8_t {
    same,    ///< stands in both
    changed, ///< a line of the one stands in the place of one of the other
    removed, ///< stands in the first list only
    added    ///< stands in the second list only
};

/** A step from the first list to the second. */
struct Step {
    StepKind kind = StepKind::same;
    std::size_t before = 0; ///< index in the first list; of an added line the next one's
    std::size_t after = 0;  ///< index in the second list; of a removed line the next one's

    bool operator==(const Step &) const = default;
};

/** The most pairs of lines that are weighed; beyond it what differs counts as replaced whole. */
inline constexpr std::size_t ALIGN_PAIRS_MAX = std::size_t{4} << 20U;

/**
 * The steps that keep the most lines: those that are the same above all, then those of the same
 * function.
 *
 * @param before     the first list
 * @param after      the second list
 * @param pairs_max  the most pairs of lines that are weighed, each a 32-bit number for a moment
 */
std::vector<Step> align(std::span<const std::string_view> before,
                        std::span<const std::string_view> after,
                        std::size_t pairs_max = ALIGN_PAIRS_MAX);

} // namespace lab::record
