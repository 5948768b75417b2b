/*
 * steps.cpp: see steps.h.
 */
#include "model/steps.h"

#include "l3lif/plans.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <utility>

namespace model_test
{

namespace
{

using Words = std::vector<std::string>;
using Strings = std::vector<std::string>;

/** What fails: one of each kind that a request may meet. */
const Strings FAILING = {
    "rtifhal_bcm_l3_intf_create",
    "rtifhal_bcm_l3_intf_delete",
    "rtifhal_bcm_l3_ingress_create",
    "rtifhal_bcm_l3_ingress_destroy",
    "bcm_l3_intf_get",
    "bcm_vlan_create",
    "fwmpd_allocate_stg",
    "bcm_stg_vlan_add",
    "fwmpd_bcm_stg_stp_set",
    "fwmpd_bcm_vlan_port_add",
    "fwmpd_bcm_vlan_port_remove",
    "fwmpd_bcm_port_stp_set",
    "fwmpd_bcm_vlan_block_set",
    "fwmpd_bcm_vlan_destroy",
    "fwmpd_bcm_vlan_control_vlan_get_from_cache",
    "fwmpd_bcm_vlan_control_vlan_set",
    "bcm_vlan_control_vlan_get",
    "bcm_vlan_control_vlan_set",
    "fwmpd_bcm_vlan_translate_action_add",
    "fwmpd_bcm_vlan_translate_action_delete",
    "fwmpd_bcm_port_control_set",
    "fwmpd_bcm_port_untagged_vlan_set",
    "fwmpd_bcm_switch_control_set",
    "bcm_switch_control_set",
    "bcm_port_control_set",
    "bcm_vlan_control_port_set",
    "fwmpd_bcm_trunk_member_add",
    "fwmpd_bcm_trunk_member_delete",
    "bcm_trunk_get",
    "rtifhal_pss_l3port_store",
    "rtifhal_pss_l3port_delete",
    "fwmpd_pss_globalc_store",
    "if_index_get_type",
};

/** The same for requests on MACs and pairs. */
const Strings FAILING_STATIONS = {
    "bcm_l2_station_add",
    "bcm_l2_station_delete",
    "bcm_l2_station_get",
    "bcm_port_control_set",
    "bcm_vlan_control_vlan_set",
    "fwmpd_bcm_vlan_control_vlan_get_from_cache",
    "fwmpd_bcm_vlan_control_vlan_set",
    "if_index_get_type",
};

const std::vector<std::pair<std::string, Strings>> PROPERTIES = {
    {"ipv4", {"on", "off"}},         {"ipv4-multicast", {"on", "off"}},
    {"ipv6", {"on", "off"}},         {"vrf", {"1", "5"}},
    {"ipv6-vrf", {"1", "6"}},        {"urpf", {"strict", "loose", "off"}},
    {"mtu", {"1500", "9000"}},       {"mpls", {"on", "off"}},
    {"class", {"on", "off"}},        {"acl-label", {"0", "9"}},
    {"ingress-flag", {"on", "off"}}, {"word-7", {"0", "7"}},
};

const Strings ROUTER_MACS = {"02:00:00:00:0f:01", "02:00:00:00:0f:02", "02:00:00:00:0f:03"};
const Strings VIRTUAL_MACS = {"00:00:5e:00:01:01", "00:00:5e:00:01:02", "00:00:5e:00:01:03"};

/** All lines that a session may be asked for, a kind each. */
struct Lines {
    std::vector<Words> adds;
    std::vector<Words> deletes;
    std::vector<Words> properties;
    std::vector<Words> addresses;
    std::vector<Words> others = {{"ipv6", "on"}, {"ipv6", "off"}};
    std::vector<Words> restarts = {
        {"restart", "restore"}, {"restart", "fast"}, {"restart", "cold"}};
};

Lines lines_of(const lab::config::Description &config)
{
    Lines lines;
    const auto plans = lab::l3lif::plans_of(config);
    for (const auto &plan : plans) {
        lines.adds.push_back({"add", plan.name});
        lines.deletes.push_back({"del", plan.name});
        lines.deletes.push_back({"del", plan.name, "keep"});
        lines.others.push_back({"disable", plan.name});
        for (const auto &[property, values] : PROPERTIES) {
            for (const std::string &value : values) {
                lines.properties.push_back({"set", plan.name, property, value});
            }
        }
        for (const std::string &mac : VIRTUAL_MACS) {
            lines.addresses.push_back({"vmac", "add", plan.name, mac});
            lines.addresses.push_back({"vmac", "del", plan.name, mac});
        }
    }
    for (const std::string &mac : ROUTER_MACS) {
        for (const char *what : {"add", "del"}) {
            lines.addresses.push_back({"rmac", what, mac});
        }
    }
    // In a secondary VLAN the primary's interface routes: one with its own is no secondary.
    const auto has_interface = [&plans](const std::string &vlan) {
        return std::ranges::find(plans, vlan, &lab::l3lif::LifPlan::name) != plans.end();
    };
    for (const auto &[primary, first] : config.vlans) {
        for (const auto &[secondary, second] : config.vlans) {
            if (primary != secondary && !has_interface(secondary)) {
                lines.addresses.push_back({"pvlan", "add", primary, secondary});
                lines.addresses.push_back({"pvlan", "del", primary, secondary});
            }
        }
    }
    return lines;
}

rc::Gen<std::vector<FailingCall>> any_fault(const Strings &functions)
{
    const auto one = rc::gen::apply(
        [](const std::string &function, int nth, int code) {
            return std::vector<FailingCall>{{function, nth, code}};
        },
        rc::gen::elementOf(functions), rc::gen::element(1, 1, 1, 2, 3),
        rc::gen::element(-1, -6, -7));
    return rc::gen::weightedOneOf<std::vector<FailingCall>>(
        {{4, rc::gen::just(std::vector<FailingCall>{})}, {1, one}});
}

/** A line with a fault perhaps, of which a shrunk one has none. */
rc::Gen<Step> step_of(const std::vector<Words> &lines, const Strings &functions)
{
    const auto fault =
        functions.empty() ? rc::gen::just(std::vector<FailingCall>{}) : any_fault(functions);
    const auto step = rc::gen::apply(
        [](const Words &line, const std::vector<FailingCall> &failing) {
            return Step{line, failing};
        },
        rc::gen::elementOf(lines), fault);
    return rc::gen::shrink(step, [](const Step &drawn) {
        return drawn.fault.empty() ? rc::Seq<Step>() : rc::seq::just(Step{drawn.words, {}});
    });
}

} // namespace

std::string Step::line() const
{
    return fmt::format("{}", fmt::join(words, " "));
}

std::string Step::fault_line() const
{
    const FailingCall &call = fault.front();
    return fmt::format("fail {} {} {}", call.function, call.nth, call.code);
}

std::ostream &operator<<(std::ostream &out, const Step &step)
{
    return out << (step.fault.empty() ? "" : step.fault_line() + "; ") << step.line();
}

rc::Gen<std::vector<Step>> any_steps(const lab::config::Description &config, const Draw &draw)
{
    const Lines lines = lines_of(config);
    Strings failing = draw.faults ? FAILING : Strings{};
    if (draw.restarts) {
        // A restart would find the numbers of the last one that could be written.
        std::erase(failing, "fwmpd_pss_globalc_store");
    }
    const Strings failing_stations = draw.faults ? FAILING_STATIONS : Strings{};
    const auto step = rc::gen::weightedOneOf<Step>({
        {300, step_of(lines.adds, failing)},
        {300, step_of(lines.deletes, failing)},
        {150, step_of(lines.properties, failing)},
        {200, step_of(lines.addresses, failing_stations)},
        {40, step_of(lines.others, failing)},
        {draw.restarts ? std::size_t{10} : std::size_t{0}, step_of(lines.restarts, {})},
    });
    return rc::gen::container<std::vector<Step>>(step);
}

} // namespace model_test
