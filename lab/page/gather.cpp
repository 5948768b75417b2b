/*
 * gather.cpp: see gather.h.
 */
#include "page/gather.h"

#include "l3lif/bring_up.h"
#include "l3lif/interface_state.h"
#include "packet/names.h"
#include "page/graph.h"
#include "page/object_book.h"
#include "page/tables.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <numeric>
#include <string>
#include <string_view>
#include <utility>

namespace lab::page
{

namespace chip = simswitch::chip;

namespace
{

constexpr std::string_view STATE_UP = "up";
constexpr std::string_view STATE_FAILED = "failed";
constexpr std::string_view STATE_STOPPED = "stopped";

/** Hands out the requests of a run in the order in which its parts were brought up. */
class RequestShares
{
public:
    explicit RequestShares(const Requests &requests) : requests_(requests) {}

    /** The requests of the next part. */
    std::vector<JournalRequest> next()
    {
        const std::size_t first = part_ == 0 ? 1 : requests_.ends[part_ - 1];
        const std::size_t end = requests_.ends[part_++];
        const auto begin = requests_.journal.begin();
        return {begin + static_cast<std::ptrdiff_t>(first),
                begin + static_cast<std::ptrdiff_t>(end)};
    }
    /** The request of the router MAC, which comes first of all. */
    std::vector<JournalRequest> router_mac() const { return {requests_.journal.front()}; }

private:
    const Requests &requests_;
    std::size_t part_ = 0;
};

/**
 * The state of an interface: how its add went, or, where that isn't known, what the chip of a state
 * folder has of it.
 */
std::string_view state_on_page(const chip::Chip &chip, const report::InterfaceResult &result,
                               bool from_state)
{
    if (!from_state) {
        return result.up ? STATE_UP : STATE_FAILED;
    }
    const std::string_view state = l3lif::state_of(chip, *result.interface, result.view);
    return result.up && state != STATE_STOPPED ? STATE_UP : state;
}

/** Fills one page. */
class Gatherer
{
public:
    Gatherer(const session::State &state, const report::UpResult &result, Page &page)
        : state_(state), result_(result), page_(page), names_(state),
          surroundings_(state.hardware.chip), objects_(names_, page)
    {
    }

    void gather_head(bool from_state);
    void gather_interfaces(bool from_state);
    void gather_extras();
    void gather_calls(const Requests &requests, std::size_t call_limit);

private:
    struct Part {
        const l3lif::Request *request;
        std::vector<JournalRequest> journal;
        std::vector<RequestLines> *lines; ///< where they go
        std::size_t interface;            ///< whose; NOBODY for the switch
    };
    static constexpr std::size_t NOBODY = SIZE_MAX;

    InterfaceLines interface_lines(const report::InterfaceResult &result, bool from_state);
    std::vector<Part> parts_of(const Requests &requests);
    Part part(const l3lif::Request &request, std::vector<JournalRequest> journal, int vlan,
              const std::string &owner);
    std::vector<bool> kept_interfaces(const std::vector<Part> &parts, std::size_t call_limit);

    const session::State &state_;
    const report::UpResult &result_;
    Page &page_;
    packet::Names names_;
    Surroundings surroundings_;
    ObjectBook objects_;
    std::map<int, std::size_t> svis_;            ///< index of the interface by VLAN
    std::map<std::string, std::size_t> by_name_; ///< the same by name
};

void Gatherer::gather_head(bool from_state)
{
    const simswitch::chip::Chip &chip = state_.hardware.chip;
    page_.source = result_.config->file;
    page_.from_state = from_state;
    page_.host = result_.config->hostname;
    page_.chip = result_.chip;
    if (!state_.layer.router_macs().empty()) {
        const auto &[station, mac] = *state_.layer.router_macs().begin();
        page_.mac = config::mac_text(mac);
        page_.station = station;
    }
    page_.calls = from_state ? 0 : result_.calls();
    page_.vlans = state_.layer.l2().vlans().size();
    page_.routes = chip.routes.size();
    page_.tables = tables_of(chip);
    page_.tables.insert(page_.tables.begin(), numbers_of(chip.kind()));
    for (const auto &row : result_.skipped) {
        page_.skipped.push_back({row.table, row.row, row.reason});
    }
    page_.notes = result_.notes;
    page_.notes.insert(page_.notes.end(), state_.routing.problems().begin(),
                       state_.routing.problems().end());
}

InterfaceLines Gatherer::interface_lines(const report::InterfaceResult &result, bool from_state)
{
    const l3lif::LifPlan &plan = result.interface->lif->plan();
    const l3lif::HardwareView &view = result.view;
    const std::string_view state = state_on_page(state_.hardware.chip, result, from_state);
    InterfaceLines lines{.name = plan.name,
                         .kind = std::string(config::kind_name(plan.kind)),
                         .state = std::string(state),
                         .error = state == STATE_STOPPED ? "it was stopped from routing: its "
                                                           "ingress object lets no family in"
                                                         : result.error,
                         .ifindex = plan.ifindex,
                         .iif = view.iif,
                         .has_interface = view.has_interface,
                         .vlan = view.vlan,
                         .vrf = view.vrf,
                         .mtu = view.mtu,
                         .vrf_name = view.has_interface ? names_.vrf(view.vrf) : ""};
    if (!from_state) {
        lines.code = result.interface->up.code;
        lines.calls = result.interface->up.call_count;
    }
    const auto families = view.families();
    lines.families.assign(families.begin(), families.end());
    std::ranges::transform(view.ports, std::back_inserter(lines.ports),
                           [this](int port) { return names_.port(port); });
    const auto &asked = result_.config->interfaces;
    const auto found = std::ranges::find(asked, plan.name, &config::RoutedInterface::name);
    if (found != asked.end()) {
        std::ranges::transform(found->addresses, std::back_inserter(lines.addresses),
                               [](const config::Prefix &prefix) { return prefix.text(); });
    }
    lines.graph = graph_of(objects_, surroundings_, plan, view);
    return lines;
}

void Gatherer::gather_interfaces(bool from_state)
{
    page_.interfaces.reserve(result_.interfaces.size());
    for (const auto &result : result_.interfaces) {
        const l3lif::LifPlan &plan = result.interface->lif->plan();
        const std::size_t index = page_.interfaces.size();
        by_name_.try_emplace(plan.name, index);
        if (plan.kind == config::Kind::svi) {
            svis_.try_emplace(plan.vlan, index);
        }
        page_.interfaces.push_back(interface_lines(result, from_state));
    }
}

std::string stations_text(const l3lif::VirtualMacView &view)
{
    std::string text;
    for (const auto &station : view.stations) {
        text += fmt::format("{}station {}", text.empty() ? "" : ", ", station.station);
        text += station.vlan == 0 ? "" : fmt::format(" in VLAN {}", station.vlan);
    }
    return text;
}

void Gatherer::gather_extras()
{
    for (const auto &mac : result_.virtual_macs) {
        page_.virtual_macs.push_back(
            {fmt::format("{} ({})", config::mac_text(mac.mac->plan.mac), mac.mac->plan.source),
             mac.mac->plan.owner, stations_text(mac.view), mac.error});
    }
    for (const auto &pair : result_.pairs) {
        const auto &plan = pair.pair->plan;
        const auto svi = svis_.find(plan.primary);
        page_.pairs.push_back({fmt::format("secondary {} of {}", plan.secondary, plan.primary),
                               svi == svis_.end() ? "" : page_.interfaces[svi->second].name,
                               pair.view.iif == 0 ? "" : fmt::format("ingress {}", pair.view.iif),
                               pair.error});
    }
    page_.failed_requests =
        result_.failed_macs() + result_.failed_pairs() + result_.failed_vlans().size();
}

Gatherer::Part Gatherer::part(const l3lif::Request &request, std::vector<JournalRequest> journal,
                              int vlan, const std::string &owner)
{
    const auto svi = svis_.find(vlan);
    const auto named = by_name_.find(owner);
    const std::size_t index = named != by_name_.end() ? named->second
                              : svi != svis_.end()    ? svi->second
                                                      : NOBODY;
    auto *lines = index == NOBODY ? &page_.switch_requests : &page_.interfaces[index].others;
    return {&request, std::move(journal), lines, index};
}

/** What each request of the run was for, in their order. */
std::vector<Gatherer::Part> Gatherer::parts_of(const Requests &requests)
{
    RequestShares shares(requests);
    const l3lif::Layer &layer = state_.layer;
    std::vector<Part> parts = {
        {&layer.router_mac(), shares.router_mac(), &page_.switch_requests, NOBODY}};
    for (const auto &vlan : layer.l2().vlans()) {
        parts.push_back(part(vlan->up, shares.next(), vlan->plan.vlan, ""));
    }
    for (std::size_t i = 0; i < result_.interfaces.size(); ++i) {
        parts.push_back({&result_.interfaces[i].interface->up, shares.next(),
                         &page_.interfaces[i].requests, i});
    }
    for (const auto &pair : layer.pairs()) {
        parts.push_back(part(pair.up, shares.next(), pair.plan.primary, ""));
    }
    for (const auto &mac : layer.virtual_macs()) {
        parts.push_back(part(mac.up, shares.next(), 0, mac.plan.owner));
    }
    return parts;
}

/** Whose calls the page holds: those that failed, then the first ones, as far as the limit goes. */
std::vector<bool> Gatherer::kept_interfaces(const std::vector<Part> &parts, std::size_t call_limit)
{
    std::vector<std::size_t> calls(page_.interfaces.size());
    for (const Part &part : parts) {
        if (part.interface != NOBODY) {
            calls[part.interface] += part.request->call_count;
        }
    }
    std::vector<std::size_t> order(calls.size());
    std::iota(order.begin(), order.end(), 0U);
    std::stable_partition(order.begin(), order.end(),
                          [this](std::size_t i) { return page_.interfaces[i].state != STATE_UP; });
    std::vector<bool> kept(calls.size());
    std::size_t sum = 0;
    for (const std::size_t index : order) {
        sum += calls[index];
        kept[index] = sum <= call_limit;
        page_.without_calls += kept[index] ? 0U : 1U;
    }
    return kept;
}

void Gatherer::gather_calls(const Requests &requests, std::size_t call_limit)
{
    page_.call_limit = call_limit;
    CallBook book(state_.hardware.journal, page_);
    const auto parts = parts_of(requests);
    const auto kept = kept_interfaces(parts, call_limit);
    for (const Part &part : parts) {
        auto lines = book.lines(part.journal, *part.request,
                                part.interface == NOBODY || kept[part.interface]);
        std::ranges::move(lines, std::back_inserter(*part.lines));
    }
}

} // namespace

Requests bring_up(session::State &state)
{
    Requests requests;
    std::uint64_t made = 0;
    const simswitch::Journal &journal = state.hardware.journal;
    l3lif::bring_all_up(*state.config, state.layer, {}, [&](std::size_t, std::size_t) {
        while (!journal.request_name(made + 1).empty()) {
            ++made;
        }
        requests.ends.push_back(made);
    });
    requests.journal = journal_requests(journal);
    state.routing.configure(*state.config);
    state.routing.sync();
    return requests;
}

Page gather(const session::State &state, const report::UpResult &result, const Requests *requests,
            std::size_t call_limit)
{
    Page page;
    Gatherer gatherer(state, result, page);
    const bool from_state = requests == nullptr;
    gatherer.gather_head(from_state);
    gatherer.gather_interfaces(from_state);
    gatherer.gather_extras();
    if (requests != nullptr) {
        gatherer.gather_calls(*requests, call_limit);
    }
    return page;
}

} // namespace lab::page
