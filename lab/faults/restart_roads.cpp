/*
 * restart_roads.cpp: see restart_roads.h.
 */
#include "faults/restart_roads.h"

#include "config/default_route_file.h"
#include "faults/address_steps.h"
#include "faults/interface_steps.h"
#include "l3lif/bring_up.h"
#include "l3lif/plans.h"
#include "l3lif/restart.h"
#include "l3lif/restart_mode.h"
#include "l3lif/restart_plans.h"
#include "l3lif/restart_routes.h"
#include "rtifhal_trident.h"

#include "services/pss_folder.h"

#include <fmt/format.h>
#include <fwmpd/platform.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace lab::faults
{

namespace
{

namespace fs = std::filesystem;
using l3lif::LifPlan;
using l3lif::Request;

def_route_path_t path_over(const LifPlan &plan)
{
    bcm_l3_egress_t egress = {};
    egress.mac_addr[0] = 2;
    egress.mac_addr[5] = static_cast<std::uint8_t>(plan.chip_port);
    egress.port = plan.chip_port;
    def_route_path_t path = {};
    config::set_egress(path, egress);
    path.valid = 1;
    path.ifindex = plan.ifindex;
    return path;
}

/** An IPv4 route over all ports, and an IPv6 one over the first. */
config::DefaultRoutes routes_over(const std::vector<LifPlan> &plans)
{
    def_route_rec_t over_all = {};
    over_all.vrf = 1;
    for (const LifPlan &plan : plans) {
        if (plan.kind == config::Kind::port && over_all.paths < RTIFHAL_DEF_ROUTE_PATHS) {
            over_all.path[over_all.paths++] = path_over(plan);
        }
    }
    def_route_rec_t over_first = over_all;
    over_first.family = 1;
    over_first.paths = std::min(over_all.paths, 1U);
    return {over_all, over_first};
}

Step adjacency_step(const LifPlan &plan)
{
    const auto ask = [ifindex = plan.ifindex](World &world) {
        return l3lif::make_request(world.hardware, "create the adjacencies", [ifindex] {
            rtifhal_trident_create_v4_adjacency(ifindex);
            return 0;
        });
    };
    return {.kind = "ask for the adjacencies of a port",
            .asked = fmt::format("create the adjacencies of {}", plan.name),
            .make = ask,
            .again = [ask](World &world) {
                std::vector<Again> done;
                done.push_back({.asked = "ask again", .request = ask(world), .must_work = true});
                return done;
            }};
}

Step destroy_step()
{
    const auto destroy = [](World &world) {
        return l3lif::make_request(world.hardware, "give the default routes' next hops back", [] {
            rtifhal_trident_destroy_default_nh();
            return 0;
        });
    };
    return {.kind = "give the default routes' next hops back",
            .asked = "give the default routes' next hops back",
            .make = destroy,
            .again = [destroy](World &world) {
                std::vector<Again> done;
                done.push_back(
                    {.asked = "once more", .request = destroy(world), .must_work = true});
                return done;
            }};
}

/** A copy of a state folder that goes with its last user. */
std::shared_ptr<fs::path> copy_of(const fs::path &state)
{
    const fs::path copy = fmt::format("{}-{}", state.string(), getpid());
    std::shared_ptr<fs::path> owner(new fs::path(copy), [](const fs::path *path) {
        std::error_code ignored;
        fs::remove_all(*path, ignored);
        delete path;
    });
    fs::remove_all(copy);
    fs::create_directory(copy);
    for (const auto &file : fs::directory_iterator(state)) {
        if (file.path().filename() != "lock") {
            fs::copy_file(file.path(), copy / file.path().filename());
        }
    }
    return owner;
}

std::unique_ptr<World> stored_world(const config::Description &config, simswitch::chip::Kind chip,
                                    const fs::path &state)
{
    const auto copy = copy_of(state);
    auto world =
        std::make_unique<World>(config, simswitch::Options{.chip = chip, .state_dir = *copy});
    world->kept = copy;
    return world;
}

Request restore_globals(World &world)
{
    const l3lif::RestoreMode mode;
    const auto config =
        world.hardware.store.global_config().value_or(simswitch::services::GlobalConfig{});
    std::ranges::copy(config, fwmpd_global_config);
    return l3lif::make_request(world.hardware, "restore the global context",
                               [] { return rtifhal_trident_pss_restore_global_context(); });
}

LifPlan plan_of(World &world, const simswitch::services::StoredInterface &stored)
{
    const auto plans = l3lif::plans_of(world.config);
    const LifPlan *known = l3lif::PlanIndex(plans).find(stored);
    return known != nullptr ? *known : l3lif::plan_from_record(world.hardware, stored);
}

Request restore(World &world, std::size_t place)
{
    const l3lif::RestoreMode mode;
    const auto stored = world.hardware.store.stored_interfaces().at(place);
    l3lif::Interface &interface = world.layer.routed().make(plan_of(world, stored));
    // What the layer above allocates for the library is no allocation of the library.
    world.hardware.heap.tracking = false;
    ::l3lif *record = world.layer.routed().take_over(interface, stored);
    world.hardware.heap.tracking = true;
    Request request =
        l3lif::make_request(world.hardware, fmt::format("restore {}", interface.lif->plan().name),
                            [record] { return rtifhal_trident_l3port_restore(record); });
    world.layer.routed().mark_up(interface);
    return request;
}

/**
 * What is stored from a place on comes back, then what the configuration has
 * beside it: until then the library hands numbers out that the chip has.
 */
std::vector<Again> restore_rest(World &world, std::size_t place)
{
    std::vector<Again> done;
    const std::size_t count = world.hardware.store.stored_interfaces().size();
    for (; place < count; ++place) {
        done.push_back(
            {.asked = "restore the next", .request = restore(world, place), .must_work = true});
    }
    for (auto &late : l3lif::complete(world.hardware, world.layer, world.config).requests) {
        done.push_back({std::move(late.asked), std::move(late.request)});
    }
    return done;
}

Step globals_step()
{
    return {.kind = "restore the global context",
            .asked = "restore the global context",
            .make = restore_globals,
            .again = [](World &world) { return restore_rest(world, 0); }};
}

Step restore_step(std::size_t place, const std::string &name, const std::string &kind)
{
    return {.kind = "restore an interface",
            .variant = kind,
            .asked = fmt::format("restore {}", name),
            .make = [place](World &world) { return restore(world, place); },
            .again =
                [place, name](World &world) {
                    std::vector<Again> done = restore_rest(world, place + 1);
                    std::vector<Again> rebuilt = rebuild(world, name);
                    std::move(rebuilt.begin(), rebuilt.end(), std::back_inserter(done));
                    return done;
                }};
}

/** Brings all up in a process of its own, on a folder that the road then begins from. */
void prepare_restore(Road &road, const config::Description &config, const fs::path &state)
{
    const Ended ended = in_process([&]() -> Lines {
        World world(config, {.chip = road.chip, .state_dir = state});
        l3lif::bring_all_up(config, world.layer);
        Lines stored;
        for (const auto &one : world.hardware.store.stored_interfaces()) {
            const LifPlan plan = plan_of(world, one);
            stored.push_back(plan.name);
            stored.push_back(kind_words(plan));
        }
        return stored;
    });
    if (!ended.well) {
        throw std::runtime_error(
            fmt::format("the process that was to be restarted ended with {}", ended.how));
    }
    road.steps = {globals_step()};
    for (std::size_t i = 0; i + 1 < ended.lines.size(); i += 2) {
        road.steps.push_back(restore_step(i / 2, ended.lines[i], ended.lines[i + 1]));
    }
}

} // namespace

Road fast_restart_road(const config::Description &config, simswitch::chip::Kind chip)
{
    Road road{
        .name = "fast restart",
        .chip = chip,
        .prepare =
            [](Road & /*road*/) {
                const std::string &obstacle = simswitch::services::make_pss_folder_private();
                if (!obstacle.empty()) {
                    throw std::runtime_error(obstacle + "; run as root, or allow user namespaces");
                }
            },
        .begin =
            [&config, chip] {
                auto world = std::make_unique<World>(config, simswitch::Options{.chip = chip});
                world->hardware.system.fast_restart = true;
                return world;
            }};
    const auto plans = l3lif::plans_of(config);
    const std::string bytes = config::default_route_bytes(routes_over(plans));
    road.steps.push_back(router_mac_step(config));
    road.steps.back().swept = false;
    bool is_first = true;
    for (const LifPlan &plan : plans) {
        if (plan.kind != config::Kind::port) {
            continue;
        }
        Step step = add_step(plan, "fast restart");
        if (std::exchange(is_first, false)) {
            step.before = [bytes] {
                config::put_in_place(l3lif::default_routes_place(), bytes, true);
            };
        }
        road.steps.push_back(std::move(step));
        road.steps.push_back(adjacency_step(plan));
    }
    road.steps.push_back(destroy_step());
    return road;
}

Road restore_road(const config::Description &config, simswitch::chip::Kind chip)
{
    const auto folder = std::make_shared<Folder>();
    const fs::path state = folder->path() / "state";
    return {
        .name = "restore",
        .chip = chip,
        .prepare = [&config, state, folder](Road &road) { prepare_restore(road, config, state); },
        .begin = [&config, chip, state] { return stored_world(config, chip, state); },
        .from_begin = true};
}

} // namespace lab::faults
