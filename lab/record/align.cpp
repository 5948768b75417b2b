/*
 * align.cpp: see align.h. The longest common subsequence by a table of weights:
 * requests have a few hundred lines, most of which are the same at both ends.
 */
#include "record/align.h"

#include <algorithm>

namespace lab::record
{

namespace
{

// Two changed lines must not outweigh one that is the same.
constexpr std::uint32_t WEIGHT_SAME = 5;
constexpr std::uint32_t WEIGHT_CHANGED = 2;

using Lines = std::span<const std::string_view>;

/** What a line is about: its layer or level and its function, "sdk bcm_vlan_create". */
std::string_view subject_of(std::string_view line)
{
    return line.substr(0, line.find_first_of("(:"));
}

std::uint32_t weight_of(std::string_view before, std::string_view after)
{
    if (before == after) {
        return WEIGHT_SAME;
    }
    return subject_of(before) == subject_of(after) ? WEIGHT_CHANGED : 0;
}

/** Of each pair of places the most that can be kept behind it. */
class WeightTable
{
public:
    WeightTable(Lines before, Lines after)
        : before_(before), after_(after), columns_(after.size() + 1),
          kept_((before.size() + 1) * columns_)
    {
        for (std::size_t i = before.size(); i > 0; --i) {
            for (std::size_t j = after.size(); j > 0; --j) {
                kept(i - 1, j - 1) = best(i - 1, j - 1);
            }
        }
    }

    /** The steps, with `offset` added to their places. */
    void append_steps(std::size_t offset, std::vector<Step> &steps) const
    {
        std::size_t i = 0;
        std::size_t j = 0;
        while (i < before_.size() || j < after_.size()) {
            const StepKind kind = kind_at(i, j);
            steps.push_back({kind, offset + i, offset + j});
            i += kind == StepKind::added ? 0 : 1;
            j += kind == StepKind::removed ? 0 : 1;
        }
    }

private:
    std::uint32_t &kept(std::size_t i, std::size_t j) { return kept_[i * columns_ + j]; }
    std::uint32_t kept(std::size_t i, std::size_t j) const { return kept_[i * columns_ + j]; }

    std::uint32_t best(std::size_t i, std::size_t j) const
    {
        const std::uint32_t weight = weight_of(before_[i], after_[j]);
        const std::uint32_t skip = std::max(kept(i + 1, j), kept(i, j + 1));
        return weight == 0 ? skip : std::max(skip, weight + kept(i + 1, j + 1));
    }

    StepKind kind_at(std::size_t i, std::size_t j) const
    {
        if (i == before_.size()) {
            return StepKind::added;
        }
        if (j == after_.size()) {
            return StepKind::removed;
        }
        const std::uint32_t weight = weight_of(before_[i], after_[j]);
        if (weight != 0 && kept(i, j) == weight + kept(i + 1, j + 1)) {
            return weight == WEIGHT_SAME ? StepKind::same : StepKind::changed;
        }
        return kept(i, j) == kept(i + 1, j) ? StepKind::removed : StepKind::added;
    }

    Lines before_;
    Lines after_;
    std::size_t columns_;
    std::vector<std::uint32_t> kept_;
};

std::size_t common_prefix(Lines before, Lines after)
{
    const auto ends = std::ranges::mismatch(before, after);
    return static_cast<std::size_t>(ends.in1 - before.begin());
}

std::size_t common_suffix(Lines before, Lines after)
{
    std::size_t length = 0;
    while (length < before.size() && length < after.size() &&
           before[before.size() - length - 1] == after[after.size() - length - 1]) {
        ++length;
    }
    return length;
}

} // namespace

std::vector<Step> align(Lines before, Lines after, std::size_t pairs_max)
{
    std::vector<Step> steps;
    const std::size_t prefix = common_prefix(before, after);
    const std::size_t suffix = common_suffix(before.subspan(prefix), after.subspan(prefix));
    const Lines old_middle = before.subspan(prefix, before.size() - prefix - suffix);
    const Lines new_middle = after.subspan(prefix, after.size() - prefix - suffix);
    for (std::size_t i = 0; i < prefix; ++i) {
        steps.push_back({StepKind::same, i, i});
    }
    if (new_middle.empty() || old_middle.size() <= pairs_max / new_middle.size()) {
        WeightTable(old_middle, new_middle).append_steps(prefix, steps);
    } else {
        for (std::size_t i = 0; i < old_middle.size(); ++i) {
            steps.push_back({StepKind::removed, prefix + i, prefix});
        }
        for (std::size_t j = 0; j < new_middle.size(); ++j) {
            steps.push_back({StepKind::added, prefix + old_middle.size(), prefix + j});
        }
    }
    for (std::size_t i = 0; i < suffix; ++i) {
        steps.push_back({StepKind::same, before.size() - suffix + i, after.size() - suffix + i});
    }
    return steps;
}

} // namespace lab::record
