/*
 * pipeline.cpp: the order of the stages.
 */
#include "chip/pipeline/pipeline.h"

#include "chip/pipeline/run_bridge.h"
#include "chip/pipeline/run_decide.h"
#include "chip/pipeline/run_ingress.h"
#include "chip/pipeline/run_route.h"

namespace simswitch::chip::pipeline
{

template <class Observer> void Run<Observer>::take(int port, std::span<const std::uint8_t> bytes)
{
    forward(port, bytes);
    // Not before: a frame is bridged by what was known when it came.
    if constexpr (!Observer::traces) {
        if (learned_gport_ >= 0) {
            l2_.learn(vlan_, frame_.source, learned_gport_);
        }
    }
}

template <class Observer> void Run<Observer>::forward(int port, std::span<const std::uint8_t> bytes)
{
    if (!receive(port, bytes) || !enter_port() || !translate() || !enter_vlan() ||
        !pass_spanning_tree()) {
        return;
    }
    find_station();
    const Reason why_not = why_not_routable();
    const bool routable = why_not == Reason::none;
    if (!trap() || (routable && !pass_reverse_path()) || !pass_field_entries(routable)) {
        return;
    }
    if (redirect_ != nullptr) {
        flood(*redirect_, Reason::redirected);
    } else if (routable) {
        route();
    } else if (is_label_switched()) {
        drop(Reason::no_label);
    } else {
        bridge(why_not);
    }
}

void Pipeline::run(int port, std::span<const std::uint8_t> frame, Result &result)
{
    result.clear();
    indexes_.refresh();
    NullObserver nobody;
    Run<NullObserver>(chip_, indexes_, l2_, nobody, result).take(port, frame);
}

void Pipeline::trace(int port, std::span<const std::uint8_t> frame, Result &result, Trace &trace)
{
    result.clear();
    indexes_.refresh();
    Run<Trace> run(chip_, indexes_, l2_, trace, result);
    run.take(port, frame);
    trace.end(run.frame(), result);
}

} // namespace simswitch::chip::pipeline
