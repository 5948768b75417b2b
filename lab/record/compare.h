/*
 * compare.h: two recordings beside each other, request by request. A request is
 * that of the other recording that has its name; of several, the one that comes
 * as often. report.h shows it.
 */
#pragma once

#include "record/align.h"
#include "record/recording.h"

#include <cstddef>
#include <vector>

namespace lab::record
{

/** A request of two recordings, or of one. */
struct RequestPair {
    const RecordedRequest *before = nullptr; ///< null: in the second recording only
    const RecordedRequest *after = nullptr;  ///< null: in the first recording only
    bool moved = false;                      ///< comes before one that it came behind
    std::vector<Step> steps = {};            ///< of two with lines that differ; else empty

    /** Whether both have it, and it does the same in both. */
    bool equal() const;
    /** Whether it returns something else. */
    bool other_result() const;
    /** How many of the steps are of a kind; of a request without any all are the same. */
    std::size_t count(StepKind kind) const;
};

/** What is looked at. */
struct CompareOptions {
    bool calls_only = false; ///< leaves messages out
};

/** How two recordings compare. The recordings must outlive it. */
struct Comparison {
    /** All requests: in the first recording's order, and what only the second has after the one
     * that it came behind. */
    std::vector<RequestPair> pairs;
    std::size_t equal = 0;       ///< in both, the same
    std::size_t different = 0;   ///< in both, not the same
    std::size_t only_before = 0; ///< in the first only
    std::size_t only_after = 0;  ///< in the second only
    std::size_t moved = 0;       ///< in another order

    bool all_equal() const { return different + only_before + only_after + moved == 0; }
};

/** Compares two recordings. */
Comparison compare(const Recording &before, const Recording &after,
                   const CompareOptions &options = {});

} // namespace lab::record
