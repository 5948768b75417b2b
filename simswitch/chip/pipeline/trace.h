/*
 * trace.h: a frame's way through the pipeline, written down stage by stage.
 *
 * The trace runs the very code that traffic runs, with an observer that listens,
 * so the two can't disagree. It changes nothing: no address is learned.
 *
 *     Trace trace;
 *     pipeline.trace(5, frame, result, trace);
 *     for (const std::string &line : trace.text()) …
 */
#pragma once

#include "chip/pipeline/observer.h"
#include "chip/pipeline/result.h"

#include <vector>

namespace simswitch::chip::pipeline
{

/** What differs between the frame that came in and the one that left on a port. */
struct Change {
    std::string field;  ///< "destination MAC"
    std::string before; ///< as it came in
    std::string after;  ///< as it left
};

/** An observer that writes everything down. */
class Trace
{
public:
    static constexpr bool traces = true;

    void add(Line line) { lines_.push_back(std::move(line)); }
    /** Notes the end; called by the pipeline, once. */
    void end(const Frame &frame, const Result &result);

    /** The stages in their order. */
    const std::vector<Line> &lines() const { return lines_; }
    /** What the way out changed; empty when nothing left. For several ports the first one's. */
    const std::vector<Change> &changes() const { return changes_; }
    /** "SENT port 6 untagged: routed", "DROPPED: …", "TO CPU: …". */
    const std::string &verdict() const { return verdict_; }
    /** For a dropped frame the nearest entry of the last miss that had one. */
    const std::string &nearest() const { return nearest_; }
    /** One line a stage, then the verdict and what changed. */
    std::vector<std::string> text() const;

private:
    std::vector<Line> lines_;
    std::vector<Change> changes_;
    std::string verdict_;
    std::string nearest_;
};

} // namespace simswitch::chip::pipeline
