/*
 * road.cpp: see road.h.
 */
#include "sweep/engine/road.h"

#include "l3lif/bring_up.h"
#include "l3lif/layer.h"

#include <fmt/format.h>

#include <functional>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace sweep
{

namespace
{

/** The last call of a switch in words. */
std::string last_call(const simswitch::Switch &hardware)
{
    const auto &records = hardware.journal.records();
    for (auto record = records.rbegin(); record != records.rend(); ++record) {
        if (!record->trace_sink) {
            return hardware.journal.line(*record);
        }
    }
    return "nothing yet";
}

/**
 * Has a function called at each moment from now on. A call begins when the
 * moment of the one before it is over; the faults of the journal see it begin.
 */
void watch(simswitch::Switch &hardware, const std::function<void()> &at_moment)
{
    hardware.journal.arm({.function = {},
                          .code = 0,
                          .nth = std::numeric_limits<std::uint64_t>::max(),
                          .forever = false,
                          .when = [at_moment](std::string_view /*arguments*/) {
                              at_moment();
                              return false;
                          }});
    hardware.wrappers.after_host_writes([&hardware, at_moment] {
        hardware.save();
        at_moment();
    });
}

void go(const Road &road, simswitch::Switch &hardware, const std::function<void()> &at_moment)
{
    lab::l3lif::Layer layer(hardware);
    if (road.direction == Direction::up) {
        watch(hardware, at_moment);
        lab::l3lif::bring_all_up(*road.config, layer);
    } else {
        lab::l3lif::bring_all_up(*road.config, layer);
        watch(hardware, at_moment);
        layer.take_down();
    }
    at_moment();
}

} // namespace

std::string name(const Road &road)
{
    return fmt::format("{} {}",
                       road.chip == simswitch::chip::Kind::trident2 ? "Trident2" : "Trident",
                       road.direction == Direction::up ? "up" : "down");
}

Lines moments_of(const Road &road)
{
    Ended ended = in_process([&road] {
        Lines texts;
        simswitch::Switch hardware({.chip = road.chip});
        go(road, hardware, [&] { texts.push_back(last_call(hardware)); });
        return texts;
    });
    if (!ended.well) {
        throw std::runtime_error(fmt::format("the road itself: {} {}", ended.how,
                                             ended.lines.empty() ? "" : ended.lines.front()));
    }
    return std::move(ended.lines);
}

void die_at(const Road &road, const std::filesystem::path &state, std::size_t moment)
{
    simswitch::Switch hardware({.chip = road.chip, .state_dir = state});
    std::size_t next = 0;
    go(road, hardware, [&next, moment] {
        if (next++ >= moment) {
            die();
        }
    });
    die();
}

} // namespace sweep
