/*
 * compare.cpp: see compare.h.
 */
#include "record/compare.h"

#include <algorithm>
#include <span>
#include <string_view>
#include <unordered_map>

namespace lab::record
{

namespace
{

constexpr std::size_t NO_PARTNER = SIZE_MAX;

/** Of each request of the first recording its place in the second. */
std::vector<std::size_t> partners_of(const Recording &before, const Recording &after)
{
    std::unordered_map<std::string_view, std::vector<std::size_t>> places;
    for (std::size_t i = after.requests.size(); i > 0; --i) {
        places[after.requests[i - 1].name].push_back(i - 1);
    }
    std::vector<std::size_t> partners;
    for (const RecordedRequest &request : before.requests) {
        const auto found = places.find(request.name);
        if (found == places.end() || found->second.empty()) {
            partners.push_back(NO_PARTNER);
        } else {
            partners.push_back(found->second.back());
            found->second.pop_back();
        }
    }
    return partners;
}

std::span<const std::string_view> compared_lines(const RecordedRequest &request,
                                                 const CompareOptions &options)
{
    const std::span all(request.lines);
    return options.calls_only ? all.first(request.calls) : all;
}

RequestPair compare_request(const RecordedRequest &before, const RecordedRequest &after,
                            const CompareOptions &options)
{
    RequestPair pair = {&before, &after, false, {}};
    const auto old_lines = compared_lines(before, options);
    const auto new_lines = compared_lines(after, options);
    if (!std::ranges::equal(old_lines, new_lines)) {
        pair.steps = align(old_lines, new_lines);
    }
    return pair;
}

void count(Comparison &comparison)
{
    for (const RequestPair &pair : comparison.pairs) {
        comparison.moved += pair.moved ? 1U : 0U;
        if (pair.after == nullptr) {
            ++comparison.only_before;
        } else if (pair.before == nullptr) {
            ++comparison.only_after;
        } else if (pair.equal()) {
            ++comparison.equal;
        } else {
            ++comparison.different;
        }
    }
}

} // namespace

bool RequestPair::equal() const
{
    return before != nullptr && after != nullptr && steps.empty() && !other_result();
}

bool RequestPair::other_result() const
{
    return before != nullptr && after != nullptr && before->result != after->result;
}

std::size_t RequestPair::count(StepKind kind) const
{
    if (steps.empty() && before != nullptr && after != nullptr) {
        return kind == StepKind::same ? before->lines.size() : 0;
    }
    return static_cast<std::size_t>(std::ranges::count(steps, kind, &Step::kind));
}

Comparison compare(const Recording &before, const Recording &after, const CompareOptions &options)
{
    const std::vector<std::size_t> partners = partners_of(before, after);
    std::vector<bool> has_partner(after.requests.size());
    for (const std::size_t partner : partners) {
        if (partner != NO_PARTNER) {
            has_partner[partner] = true;
        }
    }
    Comparison comparison;
    std::size_t next = 0; // of the second recording, what is not yet in the list
    const auto add_new_ones = [&](std::size_t end) {
        for (; next < end; ++next) {
            if (!has_partner[next]) {
                comparison.pairs.push_back({nullptr, &after.requests[next], false, {}});
            }
        }
    };
    std::size_t last = 0;
    for (std::size_t i = 0; i < before.requests.size(); ++i) {
        if (partners[i] == NO_PARTNER) {
            comparison.pairs.push_back({&before.requests[i], nullptr, false, {}});
            continue;
        }
        add_new_ones(partners[i]);
        comparison.pairs.push_back(
            compare_request(before.requests[i], after.requests[partners[i]], options));
        comparison.pairs.back().moved = partners[i] < last;
        last = std::max(last, partners[i]);
    }
    add_new_ones(after.requests.size());
    count(comparison);
    return comparison;
}

} // namespace lab::record
