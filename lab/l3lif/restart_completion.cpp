/*
 * restart_completion.cpp: after a restore, what the configuration has and the
 * store had not. See restart.h.
 */
#include "l3lif/interface_numbers.h"
#include "l3lif/plans.h"
#include "l3lif/readback.h"
#include "l3lif/restart.h"
#include "l3lif/restart_mode.h"
#include "rtifhal_trident.h"
#include "sdk/access.h"

#include "l3lif/bring_up.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <string_view>
#include <utility>

namespace lab::l3lif
{

namespace
{

using simswitch::services::StoredInterface;

/** The work of one completion. */
class Completer
{
public:
    Completer(simswitch::Switch &hardware, Layer &layer, const config::Description &config)
        : hardware_(hardware), layer_(layer), config_(config), plans_(plans_of(config))
    {
    }

    Completion run(const Progress &progress);

private:
    void note(std::string asked, const Request &request)
    {
        done_.requests.push_back({std::move(asked), request, !request.ok()});
    }
    void take_over_from_chip();
    void take_over(Interface &interface, const HardwareView &view);
    void clear_orphans();
    void clear_half_added_router_mac();
    void set_up_switch();
    void program_again(Interface &interface);
    void bring_interfaces_up(const Progress &progress);
    void add_addresses();

    simswitch::Switch &hardware_;
    Layer &layer_;
    const config::Description &config_;
    std::vector<LifPlan> plans_;
    Completion done_;
};

/**
 * Whether a number that the chip knows has no owner. It may be held back: a
 * delete writes to the store at once, and its writes to the chip wait in a
 * queue that ends with the process.
 */
bool is_nobodys(int iif)
{
    return !is_set(l3lif_l3iif_table, iif) || is_set(l3lif_l3iif_table_preserve, iif);
}

/** Whether the controls of an SVI's VLAN lack what its add writes last, or its delete takes first.
 */
bool is_half_tied(const simswitch::chip::Chip &chip, const LifPlan &plan)
{
    constexpr std::uint32_t NO_SNOOPING = 0x800;
    constexpr std::uint32_t TIED = 4;
    const simswitch::chip::Vlan *vlan =
        plan.kind == config::Kind::svi ? chip.vlans.find(plan.vlan) : nullptr;
    return vlan != nullptr &&
           ((vlan->controls.flags & NO_SNOOPING) == 0 || (vlan->controls.intf_class & TIED) == 0);
}

/** What the store would have of an interface that the chip has. */
StoredInterface record_of(const Interface &interface, const HardwareView &view)
{
    const LifPlan &plan = interface.lif->plan();
    StoredInterface stored;
    stored.ifindex = plan.ifindex;
    std::copy(plan.mac.begin(), plan.mac.end(), stored.mac.begin());
    stored.int_vlan = plan.vlan != 0 ? plan.vlan : std::uint16_t{RTIFHAL_VLAN_ROUTED};
    stored.vlan = plan.vlan;
    stored.si_encap_vlan = plan.vlan;
    stored.tid = static_cast<std::uint32_t>(plan.trunk);
    stored.properties = *interface.lif->record()->l3lif_pi_ctxt;
    stored.hardware = l3_pd{.brcm_prog_complete = 0,
                            .l3intf_id = static_cast<std::uint16_t>(view.iif),
                            .prev_l3_if_index = 0,
                            .acl_qos_label_ingress = 0};
    if (plan.kind == config::Kind::port_channel) {
        stored.members.emplace();
        for (const PlannedMember &member : plan.members) {
            stored.members->push_back(member.ifindex);
        }
    }
    return stored;
}

void Completer::take_over(Interface &interface, const HardwareView &view)
{
    ::l3lif *record = layer_.routed().take_over(interface, record_of(interface, view));
    const RestoreMode mode;
    const std::string asked = fmt::format("take {} over from the chip", interface.lif->plan().name);
    Request request =
        make_request(hardware_, asked, [record] { return rtifhal_trident_l3port_restore(record); });
    if (interface.lif->plan().kind == config::Kind::subinterface) {
        // It is restored under its port-channel's ifindex, and has no members.
        request.expected = NO_MEMBERS;
    }
    note(asked, request);
    layer_.routed().mark_up(interface);
}

/** Interfaces that the chip has and the store hasn't, before anyone is given their numbers. */
void Completer::take_over_from_chip()
{
    for (const LifPlan &plan : plans_) {
        if (layer_.routed().find(plan.name) != nullptr) {
            continue;
        }
        Interface &interface = layer_.routed().make(plan);
        const HardwareView view = read_back(hardware_, *interface.lif);
        if (view.has_interface && view.iif >= FIRST_IIF && is_nobodys(view.iif)) {
            take_over(interface, view);
        }
    }
    layer_.routed().sort_as(plans_);
}

/**
 * L3 interfaces and ingress objects that are nobody's: the number of an L3
 * interface would be handed out, and the chip refuse it.
 */
void Completer::clear_orphans()
{
    std::set<int> orphans;
    for (const auto &[iif, interface] : hardware_.chip.l3_interfaces.all()) {
        orphans.insert(iif);
    }
    for (const auto &[iif, ingress] : hardware_.chip.l3_ingresses.all()) {
        orphans.insert(iif);
    }
    std::erase_if(orphans, [](int iif) { return iif < FIRST_IIF || !is_nobodys(iif); });
    for (const int orphan : orphans) {
        const std::string asked = fmt::format("clear the objects {}, which nobody owns", orphan);
        note(asked, make_request(hardware_, asked, [this, orphan] {
                 if (hardware_.wrappers.l3_ingress(orphan) != nullptr) {
                     hardware_.wrappers.destroy_l3_ingress(orphan);
                 }
                 const bool has_interface = hardware_.chip.l3_interfaces.find(orphan) != nullptr;
                 return has_interface ? hardware_.wrappers.delete_l3_interface(orphan).code : 0;
             }));
    }
}

/**
 * A router MAC whose add was cut short: its station is there, and the CPU's port
 * doesn't route yet. The add opens the port, so the station goes and comes again.
 */
void Completer::clear_half_added_router_mac()
{
    namespace chip = simswitch::chip;
    const chip::Ports &ports = hardware_.chip.ports;
    if (ports.control(chip::CPU_PORT, chip::PORT_CONTROL_IP4) != 0 &&
        ports.control(chip::CPU_PORT, chip::PORT_CONTROL_IP6) != 0) {
        return;
    }
    while (!layer_.router_macs().empty()) {
        const int station = layer_.router_macs().begin()->first;
        note(fmt::format("delete the router MAC at station {}, which was half added", station),
             layer_.remove_router_mac(station));
    }
}

/** Router MAC and VLANs. */
void Completer::set_up_switch()
{
    clear_half_added_router_mac();
    if (layer_.router_macs().empty()) {
        const Request &request = layer_.add_router_mac(config_.device_mac);
        done_.requests.push_back(
            {std::string(ADD_ROUTER_MAC), request, request.code == Layer::NO_STATION});
    }
    for (const VlanPlan &plan : vlan_plans_of(config_)) {
        if (layer_.l2().find(plan.vlan) == nullptr) {
            const std::string asked = fmt::format("set up {}", plan.name);
            note(asked, layer_.l2().repair(plan).up);
        }
        // The forwarding manager may know of other pairs than the configuration.
        layer_.set_role(plan.vlan, plan.role);
    }
}

/**
 * An interface whose add or delete was cut short is written again in place,
 * under its number. Deleting it first would take its VLAN from the others in
 * it: the library doesn't count any more who uses a VLAN. An ingress object
 * that the chip hasn't got is made first, for an add in place starts from it,
 * and so is the L3 interface of a tunnel or port-channel. What is there already is reported, and no
 * failure.
 */
void Completer::program_again(Interface &interface)
{
    ::l3lif *record = interface.lif->record();
    const std::string &name = interface.lif->plan().name;
    const int iif = interface.lif->iif();
    const config::Kind kind = interface.lif->plan().kind;
    if ((kind == config::Kind::tunnel || kind == config::Kind::port_channel) &&
        hardware_.chip.l3_interfaces.find(iif) == nullptr) {
        const std::string asked = fmt::format("make the L3 interface of {}", name);
        const Request made = make_request(hardware_, asked, [record] {
            return rtifhal_l3_intf_create(simswitch::sdk::UNIT, record, nullptr, 0);
        });
        done_.requests.push_back({asked, made, made.code != 0});
    }
    if (hardware_.wrappers.l3_ingress(iif) == nullptr) {
        const std::string asked = fmt::format("make the ingress object of {}", name);
        const Request made =
            make_request(hardware_, asked, [record] { return rtifhal_l3_ing_create(record, 1); });
        done_.requests.push_back({asked, made, made.code != 0});
    }
    const Request &again = layer_.bring_up(interface);
    done_.requests.push_back({fmt::format("program {} again", name), again, again.code != 0});
}

/**
 * A label that is set while an interface is deleted, with its number kept, stores a
 * record without a number in use. The restart has given the kept number away, so it
 * must not be taken up again. @return whether the record is such a one
 */
bool give_up_kept_number(const Lif &lif)
{
    const l3lif_pd_ctxt *context = lif.record()->l3lif_pd_ctxt;
    if (lif.iif() != 0 || context == nullptr || context->l3_pd == nullptr) {
        return false;
    }
    context->l3_pd->brcm_prog_complete = 0;
    context->l3_pd->prev_l3_if_index = 0;
    return true;
}

void Completer::bring_interfaces_up(const Progress &progress)
{
    Steps steps(progress, plans_.size());
    for (const LifPlan &plan : plans_) {
        Interface &interface = *layer_.routed().find(plan.name);
        const bool is_stale =
            interface.standing() != Standing::down && give_up_kept_number(*interface.lif);
        if (interface.standing() == Standing::down || is_stale) {
            note(fmt::format("add {}", plan.name), layer_.bring_up(interface));
        } else if (!read_back(hardware_, *interface.lif).missing.empty() ||
                   is_half_tied(hardware_.chip, plan)) {
            program_again(interface);
        }
        steps.step();
    }
}

void Completer::add_addresses()
{
    for (const PairPlan &plan : pair_plans_of(config_)) {
        note(fmt::format("add pair {}, {}", plan.primary, plan.secondary), layer_.add_pair(plan));
    }
    for (VirtualMacPlan &plan : virtual_mac_plans_of(config_, plans_)) {
        const std::string asked =
            fmt::format("add virtual MAC {} of {}", config::mac_text(plan.mac), plan.owner);
        note(asked, layer_.add_virtual_mac(std::move(plan)));
    }
}

Completion Completer::run(const Progress &progress)
{
    const std::uint64_t before = hardware_.chip.writes;
    take_over_from_chip();
    clear_orphans();
    set_up_switch();
    bring_interfaces_up(progress);
    add_addresses();
    done_.chip_writes = hardware_.chip.writes - before;
    return std::move(done_);
}

} // namespace

bool Completion::ok() const
{
    return std::none_of(requests.begin(), requests.end(),
                        [](const LateRequest &late) { return late.failed; });
}

Completion complete(simswitch::Switch &hardware, Layer &layer, const config::Description &config,
                    const Progress &progress)
{
    Completion completion = Completer(hardware, layer, config).run(progress);
    check_state(hardware);
    return completion;
}

} // namespace lab::l3lif
