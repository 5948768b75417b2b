/*
 * routed_interfaces.cpp: see routed_interfaces.h.
 */
#include "l3lif/routed_interfaces.h"

#include "l3lif/readback.h"
#include "rtifhal_trident.h"
#include "services/ifindex.h"

#include <fmt/format.h>

#include <algorithm>

namespace lab::l3lif
{

namespace
{

namespace if_index = simswitch::if_index;

// A member's own record has no context, which the library reports at each delete.
constexpr std::string_view NO_CONTEXT = "Failed to delete l3lif pd context for intf ";

/** The library's mark of a port-channel's member that it has added. */
constexpr std::uint32_t PROGRAMMED = 3;

bool has_joined(const Lif &member)
{
    return member.record()->lif_state == PROGRAMMED;
}

/** Whether an add makes an interface's objects for the first time. */
int first_time(const Lif &lif)
{
    const l3lif_pd_ctxt *context = lif.record()->l3lif_pd_ctxt;
    const bool has_number =
        context != nullptr && context->l3_pd != nullptr &&
        (context->l3_pd->l3intf_id != 0 || context->l3_pd->brcm_prog_complete != 0);
    return has_number ? 0 : 1;
}

} // namespace

Standing Interface::standing() const
{
    const l3lif_pd_ctxt *context = lif->record()->l3lif_pd_ctxt;
    const bool joined = std::any_of(members.begin(), members.end(),
                                    [](const auto &member) { return has_joined(*member); });
    if (joined) {
        return Standing::up;
    }
    if (context == nullptr) {
        return Standing::down;
    }
    // The objects of a port-channel whose members have all left are there yet.
    const bool parked = context->l3_pd != nullptr && context->l3_pd->brcm_prog_complete != 0;
    return parked || !members.empty() ? Standing::kept : Standing::up;
}

Interface &RoutedInterfaces::make(LifPlan plan)
{
    auto interface = std::make_unique<Interface>();
    interface->lif = std::make_unique<Lif>(hardware_, std::move(plan));
    Lif &lif = *interface->lif;
    if (lif.plan().kind == config::Kind::port_channel) {
        hardware_.host.set_trunk_id(lif.plan().ifindex,
                                    static_cast<std::uint32_t>(lif.plan().trunk));
        make_members(*interface);
    }
    become_main(lif);
    by_name_.try_emplace(lif.plan().name, interface.get());
    interfaces_.push_back(std::move(interface));
    return *interfaces_.back();
}

::l3lif *RoutedInterfaces::take_over(Interface &interface,
                                     const simswitch::services::StoredInterface &stored)
{
    Lif &lif = *interface.lif;
    if (lif.plan().kind == config::Kind::subinterface) {
        file_under_main(lif);
    }
    ::l3lif *record = lif.take_over(stored);
    if (lif.plan().kind != config::Kind::port_channel) {
        return record;
    }
    if (!stored.members) {
        record->pc_member_tree = nullptr;
        return record;
    }
    for (const auto &member : interface.members) {
        if (std::ranges::find(*stored.members, member->plan().ifindex) != stored.members->end()) {
            interface.member_tree->insert(member->record());
        }
    }
    return record;
}

void RoutedInterfaces::sort_as(const std::vector<LifPlan> &plans)
{
    std::unordered_map<std::string_view, std::size_t> places;
    for (const LifPlan &plan : plans) {
        places.try_emplace(plan.name, places.size());
    }
    const auto place = [&](const std::unique_ptr<Interface> &interface) {
        const auto found = places.find(interface->lif->plan().name);
        return found == places.end() ? plans.size() : found->second;
    };
    std::ranges::stable_sort(interfaces_, {}, place);
}

void RoutedInterfaces::mark_up(Interface &interface)
{
    ::l3lif &record = *interface.lif->record();
    record.lif_state = PROGRAMMED;
    if (interface.lif->plan().kind != config::Kind::port_channel) {
        return;
    }
    record.pc_member_tree = interface.member_tree->get();
    const auto in_trunk = ports_of_trunk(hardware_.chip, interface.lif->plan().trunk);
    for (const auto &member : interface.members) {
        if (std::ranges::find(in_trunk, member->plan().chip_port) != in_trunk.end()) {
            member->record()->lif_state = PROGRAMMED;
            interface.member_tree->insert(member->record());
        }
    }
}

void RoutedInterfaces::make_members(Interface &interface)
{
    Lif &main = *interface.lif;
    interface.member_tree = std::make_unique<simswitch::services::Tree>();
    main.record()->pc_member_tree = interface.member_tree->get();
    for (const PlannedMember &planned : main.plan().members) {
        LifPlan plan;
        plan.name = planned.name;
        plan.ifindex = planned.ifindex;
        plan.chip_port = planned.chip_port;
        plan.mac = main.plan().mac;
        interface.members.push_back(std::make_unique<Lif>(hardware_, std::move(plan)));
        interface.members.back()->put_under(main.record());
    }
}

Interface *RoutedInterfaces::find(std::string_view name) const
{
    const auto found = by_name_.find(name);
    return found == by_name_.end() ? nullptr : found->second;
}

std::vector<std::string> RoutedInterfaces::subinterfaces_of(const Interface &interface) const
{
    std::vector<std::string> names;
    for (const auto &other : interfaces_) {
        if (other->lif->plan().main == interface.lif->plan().ifindex &&
            other->standing() == Standing::up) {
            names.push_back(other->lif->plan().name);
        }
    }
    return names;
}

Request RoutedInterfaces::run(const std::string &name, const std::function<int()> &work)
{
    return make_request(hardware_, name, work);
}

const Request &RoutedInterfaces::add(Interface &interface)
{
    interface.up = add_by_kind(interface);
    interface.down = {};
    return interface.up;
}

Request RoutedInterfaces::add_by_kind(Interface &interface)
{
    Lif &lif = *interface.lif;
    const std::string name = fmt::format("add {}", lif.plan().name);
    const int create = first_time(lif);
    switch (lif.plan().kind) {
    case config::Kind::port_channel:
        return add_members(interface);
    case config::Kind::subinterface:
        return add_subinterface(lif);
    case config::Kind::tunnel:
        return run(name,
                   [&lif, create] { return rtifhal_trident_add_l3tun(lif.record(), create); });
    case config::Kind::svi:
        return run(name,
                   [&lif, create] { return rtifhal_trident_add_svi(lif.record(), 0, create); });
    case config::Kind::port:
        break;
    }
    return run(name, [&lif, create] { return rtifhal_trident_add_l3port(lif.record(), create); });
}

Request RoutedInterfaces::join(Interface &interface, Lif &member, int create)
{
    interface.member_tree->insert(member.record());
    return run(fmt::format("add {} to {}", member.plan().name, interface.lif->plan().name),
               [&member, create] { return rtifhal_trident_add_l3pc(member.record(), create); });
}

/** The port-channel's object comes with the first member. */
Request RoutedInterfaces::add_members(Interface &interface)
{
    Request request;
    for (const auto &member : interface.members) {
        const bool is_first = member == interface.members.front();
        request.append(join(interface, *member, is_first ? first_time(*interface.lif) : 0));
    }
    return request;
}

Request RoutedInterfaces::add_subinterface(Lif &lif)
{
    const int create = first_time(lif);
    file_under_main(lif);
    Request request = run(fmt::format("add {}", lif.plan().name), [&lif, create] {
        return rtifhal_trident_add_subint(lif.record(), 0, create);
    });
    if (lif.plan().trunk != 0) {
        lif.take_context_from_view();
    }
    return request;
}

/** The library counts the subinterfaces of a main interface in the tree of its registered record.
 */
void RoutedInterfaces::file_under_main(Lif &lif)
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

/** An interface is made under which subinterfaces are filed already. */
void RoutedInterfaces::become_main(Lif &lif)
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

const Request &RoutedInterfaces::remove(Interface &interface, bool keep)
{
    interface.down = remove_by_kind(interface, keep);
    return interface.down;
}

Request RoutedInterfaces::remove_by_kind(Interface &interface, bool keep)
{
    Lif &lif = *interface.lif;
    const std::string name = fmt::format("delete {}", lif.plan().name);
    const int destroy = keep ? 0 : 1;
    switch (lif.plan().kind) {
    case config::Kind::port_channel:
        return remove_members(interface, keep);
    case config::Kind::subinterface:
        return remove_subinterface(lif, keep);
    case config::Kind::tunnel:
        return run(name,
                   [&lif, destroy] { return rtifhal_trident_del_l3tun(lif.record(), destroy); });
    case config::Kind::svi:
        return remove_svi(lif, keep);
    case config::Kind::port:
        break;
    }
    return run(name, [&lif, destroy] { return rtifhal_trident_del_l3port(lif.record(), destroy); });
}

/**
 * For good in two steps: the ingress object of an SVI goes only when what is
 * left of it is destroyed after the hardware was taken down.
 */
Request RoutedInterfaces::remove_svi(Lif &lif, bool keep)
{
    Request request;
    const int first = rtifhal_is_lif_deleted(lif.record()) != 0 ? 1 : 0;
    const int last = keep ? 0 : 1;
    for (int destroy = first; destroy <= last && request.code == 0; ++destroy) {
        request.append(
            run(fmt::format("{} {}", destroy == 0 ? "delete" : "destroy", lif.plan().name),
                [&lif, destroy] { return rtifhal_trident_del_svi(lif.record(), 0, destroy); }));
    }
    return request;
}

Request RoutedInterfaces::leave(Interface &interface, Lif &member, int destroy)
{
    Request request =
        run(fmt::format("delete {} from {}", member.plan().name, interface.lif->plan().name),
            [&member, destroy] { return rtifhal_trident_del_l3pc(member.record(), destroy); });
    if (!has_joined(member)) {
        interface.member_tree->erase(member.record());
    }
    return request;
}

/**
 * The port-channel's object goes with the member that leaves last. Once all
 * have left with it kept, none is there to leave: the first joins once more.
 */
Request RoutedInterfaces::remove_members(Interface &interface, bool keep)
{
    Request request;
    request.expected = NO_CONTEXT;
    auto &members = interface.members;
    if (interface.standing() == Standing::kept && !members.empty()) {
        request.append(join(interface, *members.front(), 0));
    }
    for (auto it = members.rbegin(); it != members.rend(); ++it) {
        const bool is_last = it->get() == members.front().get();
        if (has_joined(**it)) {
            request.append(leave(interface, **it, is_last && !keep ? 1 : 0));
        }
    }
    return request;
}

/** It stays filed until it is gone: the library tells the last one by the count of 1. */
Request RoutedInterfaces::remove_subinterface(Lif &lif, bool keep)
{
    Request request;
    const int destroy = keep ? 0 : 1;
    // One that never got an object has nothing to delete.
    if (lif.record()->l3lif_pd_ctxt != nullptr) {
        request = run(fmt::format("delete {}", lif.plan().name), [&lif, destroy] {
            return rtifhal_trident_del_subint(lif.record(), 0, destroy);
        });
        lif.give_context_to_view();
    }
    subinterfaces_[lif.plan().main].erase(lif.record());
    return request;
}

} // namespace lab::l3lif
