/*
 * chip_match.cpp: see chip_match.h. Records are copied, a number in them is
 * replaced by its name's place among the names, and the name is put behind.
 */
#include "roads/chip_match.h"

#include "faults/views.h"
#include "rtifhal_trident.h"
#include "services/tree.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>
#include <utility>

namespace roads
{

namespace
{

using simswitch::chip::Chip;
using Lines = std::vector<std::string>;

/** The control of a port that names its ingress object. */
constexpr int INGRESS_CONTROL = 67;

/** Words that no line of a snapshot shows; nothing while they are 0. */
template <class Words> std::string hidden(const Words &words)
{
    const bool is_zero = std::ranges::all_of(words, [](auto word) { return word == 0; });
    return is_zero ? "" : fmt::format(" and {}", fmt::join(words, " "));
}

class Namer
{
public:
    Namer(const Chip &chip, const std::map<std::string, int> &numbers) : chip_(chip)
    {
        for (const auto &[name, number] : numbers) {
            if (!names_.emplace(number, name).second) {
                lines_.push_back(fmt::format("number of {} is handed out twice", name));
            }
        }
    }

    Lines all()
    {
        add_interfaces();
        add_ties();
        add_next_hops();
        add_rest();
        std::ranges::sort(lines_);
        return lines_;
    }

private:
    std::string name(int number) const
    {
        const auto found = names_.find(number);
        return found == names_.end() ? fmt::format("number {}", number) : found->second;
    }
    /** Takes a number out of a record, for its text to have the name behind. */
    template <class Number> std::string take(Number &number) const
    {
        std::string text = number == 0 ? "nobody" : name(static_cast<int>(number));
        number = 0;
        return text;
    }
    void put(std::string line) { lines_.push_back(std::move(line)); }

    void add_interfaces()
    {
        for (auto [id, record] : chip_.l3_interfaces.all()) {
            const bool has_tunnel = record.tunnel != 0;
            record.tunnel = 0;
            put(fmt::format("L3 interface of {}: {}{}", name(id), text(record),
                            has_tunnel ? " with its tunnel" : ""));
        }
        for (const auto &[id, record] : chip_.l3_ingresses.all()) {
            put(fmt::format("L3 ingress of {}: {}{}", name(id), text(record),
                            hidden(record.reserved)));
        }
        for (auto [id, record] : chip_.tunnels.all()) {
            const auto *owner = chip_.l3_interfaces.find(id);
            const bool is_its = owner != nullptr && owner->tunnel == record.index;
            record.index = 0;
            put(fmt::format("tunnel of {}: {}{}", name(id), text(record),
                            is_its ? "" : ", of which its interface doesn't know"));
        }
        for (const auto &[id, record] : chip_.stations.all()) {
            put("station " + text(record));
        }
    }

    void add_ties()
    {
        for (auto [id, record] : chip_.vlans.all()) {
            const std::string ingress = take(record.controls.ingress_if);
            put(fmt::format("VLAN {} of {}: {}{}", id, ingress, text(record),
                            hidden(record.controls.rest)));
        }
        for (auto [id, record] : chip_.ports.all()) {
            const std::string ingress = take(record.controls[INGRESS_CONTROL]);
            put(fmt::format("port {} of {}: {}", id, ingress, text(record)));
        }
        for (auto [key, record] : chip_.vlan_translations.all()) {
            const std::string ingress = take(record.ingress_if);
            put(fmt::format("translation {} to {}: {}", text(key), ingress, text(record)));
        }
        for (auto [id, record] : chip_.vxlan_ports.all()) {
            const std::string egress = take(record.egress_if);
            put(fmt::format("VXLAN port to {}: {}", egress, text(record)));
        }
    }

    std::string egress_text(int id) const
    {
        const auto *found = chip_.egresses.find(id);
        if (found == nullptr) {
            return "no egress";
        }
        auto record = *found;
        const std::string interface = take(record.interface);
        return fmt::format("egress of {}: {}{}", interface, text(record), hidden(record.reserved));
    }
    std::string group_text(int id) const
    {
        const auto *found = chip_.multipath_groups.find(id);
        if (found == nullptr) {
            return "no group";
        }
        Lines members;
        for (const int member : found->members) {
            members.push_back(egress_text(member));
        }
        return fmt::format("group of {}", fmt::join(members, " and "));
    }
    void add_next_hops()
    {
        for (const auto &[id, record] : chip_.egresses.all()) {
            put(egress_text(id));
        }
        for (const auto &[id, record] : chip_.multipath_groups.all()) {
            put(group_text(id));
        }
        for (auto [key, record] : chip_.routes.all()) {
            const std::string to =
                record.multipath ? group_text(record.next_hop) : egress_text(record.next_hop);
            record.next_hop = 0;
            put(fmt::format("route {} {} by {}", text(key), text(record), to));
        }
    }

    template <class Records> void add_plain(std::string_view kind, const Records &records)
    {
        for (const auto &[id, record] : records) {
            put(fmt::format("{} {}: {}", kind, id, text(record)));
        }
    }
    void add_rest()
    {
        add_plain("STG", chip_.stgs.all());
        add_plain("trunk", chip_.trunks.all());
        add_plain("field group", chip_.field_groups.all());
        add_plain("field entry", chip_.field_entries.all());
        for (const auto &[control, value] : chip_.switch_controls.all()) {
            put(fmt::format("switch control {}: {}", control, value));
        }
    }

    const Chip &chip_;
    std::map<int, std::string> names_;
    Lines lines_;
};

/** Whether a line of the whole view is not one of the chip's. */
bool is_of_tables(std::string_view line)
{
    constexpr std::array<std::string_view, 4> BEGINS = {"numbers:", "record ", "forwarding manager",
                                                        "interface "};
    constexpr std::array<std::string_view, 3> PARTS = {" in VLANs ", " used by ", " cached "};
    return std::ranges::any_of(BEGINS, [&](auto part) { return line.starts_with(part); }) ||
           std::ranges::any_of(
               PARTS, [&](auto part) { return line.find(part) != std::string_view::npos; });
}

} // namespace

Lines named_entries(const Chip &chip, const std::map<std::string, int> &numbers)
{
    return Namer(chip, numbers).all();
}

Lines named_tables(simswitch::Switch &hardware, const lab::l3lif::Layer &layer)
{
    Lines lines;
    for (std::string &line : lab::faults::whole_view(hardware, layer)) {
        if (is_of_tables(line)) {
            lines.push_back(std::move(line));
        }
    }
    for (const void *record : simswitch::services::tree_records(fhrp_mac_hash)) {
        const auto &mac = *static_cast<const fhrp_mac_entry *>(record);
        const auto *station = hardware.chip.stations.find(static_cast<int>(mac.station_id));
        lines.push_back(fmt::format("virtual MAC of {:#x} in VLAN {}: {}", mac.ifindex, mac.vlan,
                                    station == nullptr ? "no station" : text(*station)));
    }
    std::ranges::sort(lines);
    return lines;
}

std::string first_difference(const Lines &one, const Lines &other)
{
    const auto [left, right] = std::ranges::mismatch(one, other);
    if (left == one.end() && right == other.end()) {
        return {};
    }
    return fmt::format("place {}: - {}, + {}", left - one.begin(),
                       left == one.end() ? "the end" : *left,
                       right == other.end() ? "the end" : *right);
}

Lines changed(Lines lines, const std::vector<Change> &changes)
{
    for (const Change &change : changes) {
        for (std::string &line : lines) {
            const std::size_t found = line.find(change.from);
            if (line.starts_with(change.begin) && found != std::string::npos &&
                line.find(change.to) == std::string::npos) {
                line.replace(found, change.from.size(), change.to);
            }
        }
    }
    std::ranges::sort(lines);
    return lines;
}

} // namespace roads
