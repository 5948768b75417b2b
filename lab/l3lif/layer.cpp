/*
 * layer.cpp: see layer.h.
 */
#include "l3lif/layer.h"

#include "rtifhal_trident.h"
#include "services/ifindex.h"

#include <fmt/format.h>

#include <iterator>
#include <string_view>
#include <utility>

namespace lab::l3lif
{

namespace
{

namespace if_index = simswitch::if_index;

// A member's own record has no context, which the library reports at each delete.
constexpr std::string_view NO_CONTEXT = "Failed to delete l3lif pd context for intf ";

} // namespace

Request Layer::run(const std::string &name, const std::function<int()> &work)
{
    return make_request(hardware_, name, work);
}

const Request &Layer::add_router_mac(const config::Mac &mac)
{
    router_mac_ = run(fmt::format("add router MAC {}", config::mac_text(mac)),
                      [&mac] { return rtifhal_trident_rmac_add(mac.data()); });
    if (router_mac_.code != NO_STATION) {
        station_ = router_mac_.code;
    }
    return router_mac_;
}

Request Layer::add(Interface &interface)
{
    Lif &lif = *interface.lif;
    switch (lif.plan().kind) {
    case config::Kind::port_channel:
        return add_members(interface);
    case config::Kind::subinterface:
        return add_subinterface(lif);
    case config::Kind::tunnel:
        return run(fmt::format("add {}", lif.plan().name),
                   [&lif] { return rtifhal_trident_add_l3tun(lif.record(), 1); });
    case config::Kind::svi:
        return run(fmt::format("add {}", lif.plan().name),
                   [&lif] { return rtifhal_trident_add_svi(lif.record(), 0, 1); });
    case config::Kind::port:
        break;
    }
    return run(fmt::format("add {}", lif.plan().name),
               [&lif] { return rtifhal_trident_add_l3port(lif.record(), 1); });
}

/** The port-channel's object comes with the first member. */
Request Layer::add_members(Interface &interface)
{
    Lif &main = *interface.lif;
    Request request;
    for (const PlannedMember &planned : main.plan().members) {
        LifPlan plan;
        plan.name = planned.name;
        plan.ifindex = planned.ifindex;
        plan.chip_port = planned.chip_port;
        plan.mac = main.plan().mac;
        const int create = interface.members.empty() ? 1 : 0;
        interface.members.push_back(std::make_unique<Lif>(hardware_, std::move(plan)));
        Lif &member = *interface.members.back();
        member.put_under(main.record());
        request.append(
            run(fmt::format("add {} to {}", planned.name, main.plan().name),
                [&member, create] { return rtifhal_trident_add_l3pc(member.record(), create); }));
    }
    return request;
}

Request Layer::add_subinterface(Lif &lif)
{
    file_under_main(lif);
    Request request = run(fmt::format("add {}", lif.plan().name),
                          [&lif] { return rtifhal_trident_add_subint(lif.record(), 0, 1); });
    if (lif.plan().trunk != 0) {
        lif.take_context_from_view();
    }
    return request;
}

/** The library counts the subinterfaces of a main interface in the tree of its registered record.
 */
void Layer::file_under_main(Lif &lif)
{
    const LifPlan &plan = lif.plan();
    ::l3lif *main = hardware_.directory.find(plan.main);
    if (main == nullptr) {
        LifPlan bare;
        bare.name = if_index::name(plan.main);
        bare.ifindex = plan.main;
        bare.mac = plan.mac;
        auto &made = bare_mains_[plan.main];
        made = std::make_unique<Lif>(hardware_, std::move(bare));
        main = made->record();
    }
    simswitch::services::Tree &tree = subinterfaces_[plan.main];
    main->subint_tree = tree.get();
    tree.insert(lif.record());
    if (plan.trunk != 0) {
        lif.put_under_view();
    } else {
        lif.put_under(main);
    }
}

/** An interface comes up under which subinterfaces are filed already. */
void Layer::become_main(Lif &lif)
{
    const auto tree = subinterfaces_.find(lif.plan().ifindex);
    if (tree == subinterfaces_.end()) {
        return;
    }
    lif.record()->subint_tree = tree->second.get();
    for (void *filed : simswitch::services::tree_records(tree->second.get())) {
        auto *subinterface = static_cast<::l3lif *>(filed);
        if (lif.plan().trunk == 0) {
            subinterface->main_l3lif = lif.record();
        }
    }
    bare_mains_.erase(lif.plan().ifindex);
}

const Interface &Layer::bring_up(LifPlan plan)
{
    auto interface = std::make_unique<Interface>();
    interface->lif = std::make_unique<Lif>(hardware_, std::move(plan));
    Lif &lif = *interface->lif;
    if (lif.plan().trunk != 0) {
        hardware_.host.set_trunk_id(lif.plan().ifindex,
                                    static_cast<std::uint32_t>(lif.plan().trunk));
    }
    become_main(lif);
    interface->up = add(*interface);
    interfaces_.push_back(std::move(interface));
    return *interfaces_.back();
}

Request Layer::remove(Interface &interface)
{
    Lif &lif = *interface.lif;
    switch (lif.plan().kind) {
    case config::Kind::port_channel:
        return remove_members(interface);
    case config::Kind::subinterface:
        return remove_subinterface(lif);
    case config::Kind::tunnel:
        return run(fmt::format("delete {}", lif.plan().name),
                   [&lif] { return rtifhal_trident_del_l3tun(lif.record(), 1); });
    case config::Kind::svi:
        return remove_svi(lif);
    case config::Kind::port:
        break;
    }
    return run(fmt::format("delete {}", lif.plan().name),
               [&lif] { return rtifhal_trident_del_l3port(lif.record(), 1); });
}

/**
 * In two steps: the ingress object of an SVI goes only when what is left of it
 * is destroyed after the hardware was taken down. Where that fails, all of it stays.
 */
Request Layer::remove_svi(Lif &lif)
{
    Request request;
    for (int destroy = 0; destroy <= 1 && request.code == 0; ++destroy) {
        request.append(
            run(fmt::format("{} {}", destroy == 0 ? "delete" : "destroy", lif.plan().name),
                [&lif, destroy] { return rtifhal_trident_del_svi(lif.record(), 0, destroy); }));
    }
    return request;
}

/** The port-channel's object goes with the member that leaves last. */
Request Layer::remove_members(Interface &interface)
{
    Request request;
    request.expected = NO_CONTEXT;
    auto &members = interface.members;
    for (auto it = members.rbegin(); it != members.rend(); ++it) {
        Lif &member = **it;
        const int destroy = std::next(it) == members.rend() ? 1 : 0;
        request.append(
            run(fmt::format("delete {} from {}", member.plan().name, interface.lif->plan().name),
                [&member, destroy] { return rtifhal_trident_del_l3pc(member.record(), destroy); }));
    }
    return request;
}

/** It stays filed until it is gone: the library tells the last one by the count of 1. */
Request Layer::remove_subinterface(Lif &lif)
{
    Request request;
    // One that never got an object has nothing to delete.
    if (lif.record()->l3lif_pd_ctxt != nullptr) {
        request = run(fmt::format("delete {}", lif.plan().name),
                      [&lif] { return rtifhal_trident_del_subint(lif.record(), 0, 1); });
        lif.give_context_to_view();
    }
    subinterfaces_[lif.plan().main].erase(lif.record());
    return request;
}

void Layer::add_pair(PairPlan plan)
{
    Request up = run(fmt::format("add pair {}, {}", plan.primary, plan.secondary), [&plan] {
        rtifhal_kelvo_pvlan_svi_mapping_update(plan.primary, plan.secondary, 1);
        return 0;
    });
    pairs_.push_back({plan, std::move(up), {}});
}

void Layer::add_virtual_mac(VirtualMacPlan plan)
{
    Request up =
        run(fmt::format("add virtual MAC {} of {}", config::mac_text(plan.mac), plan.owner),
            [&plan] { return rtifhal_trident_fhrp_mac_add(plan.mac.data(), plan.ifindex); });
    virtual_macs_.push_back({std::move(plan), std::move(up), {}});
}

bool Layer::take_interfaces_down()
{
    bool clean = true;
    for (auto it = virtual_macs_.rbegin(); it != virtual_macs_.rend(); ++it) {
        const VirtualMacPlan &plan = it->plan;
        it->down =
            run(fmt::format("delete virtual MAC {} of {}", config::mac_text(plan.mac), plan.owner),
                [&plan] { return rtifhal_trident_fhrp_mac_del(plan.mac.data(), plan.ifindex); });
        clean = clean && it->down.ok();
    }
    for (auto it = pairs_.rbegin(); it != pairs_.rend(); ++it) {
        const PairPlan &plan = it->plan;
        it->down = run(fmt::format("delete pair {}, {}", plan.primary, plan.secondary), [&plan] {
            rtifhal_kelvo_pvlan_svi_mapping_update(plan.primary, plan.secondary, 0);
            return 0;
        });
        clean = clean && it->down.ok();
    }
    for (auto it = interfaces_.rbegin(); it != interfaces_.rend(); ++it) {
        (*it)->down = remove(**it);
        clean = clean && (*it)->down.ok();
    }
    return clean;
}

bool Layer::take_down()
{
    bool clean = take_interfaces_down();
    clean = l2_.take_down() && clean;
    if (station_) {
        const int station = *station_;
        router_mac_removal_ = run(fmt::format("delete router MAC at station {}", station),
                                  [station] { return rtifhal_trident_rmac_del(station); });
        clean = clean && router_mac_removal_.code == 0;
        station_.reset();
    }
    return clean;
}

} // namespace lab::l3lif
