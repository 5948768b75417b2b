/*
 * book.cpp: see book.h.
 */
#include "explain/book.h"

#include "packet/authors.h"
#include "packet/objects.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace lab::explain
{

namespace chip = simswitch::chip;

void Book::title(std::string text)
{
    finding_.title = std::move(text);
}

void Book::section(std::string_view title)
{
    end_section();
    finding_.sections.push_back({title, {}});
}

/** Tells how many more there are of what is listed in part. */
void Book::end_section()
{
    for (const auto &[what, count] : counted_) {
        if (count > LISTED_MAX) {
            finding_.sections.back().facts.push_back(
                {what, "…", fmt::format("and {} more", count - LISTED_MAX)});
        }
    }
    counted_.clear();
    if (!finding_.sections.empty() && finding_.sections.back().facts.empty()) {
        finding_.sections.pop_back();
    }
}

void Book::add(Fact fact)
{
    if (++counted_[fact.what] <= LISTED_MAX) {
        finding_.sections.back().facts.push_back(std::move(fact));
    }
}

void Book::say(std::string what, std::string id, std::string text)
{
    add({std::move(what), std::move(id), std::move(text)});
}

void Book::entry(std::string what, std::string_view table, const std::string &entry, std::string id,
                 std::string text)
{
    std::vector<std::string> authors = chip().authors.of(table, entry);
    const auto told = std::ranges::find(authors, packet::author_of(authors, about_));
    if (told != authors.end()) {
        std::rotate(authors.begin(), told, told + 1);
    }
    add({std::move(what), std::move(id), std::move(text), std::move(authors), true});
}

void Book::object(std::string what, std::string_view table, const std::string &id)
{
    std::string text = packet::object_text(names_, table, id);
    if (text.empty()) {
        say(std::move(what), id, "named, but there is no such object in the chip");
        return;
    }
    entry(std::move(what), table, id, id, std::move(text));
}

void Book::port(int port)
{
    const int iif = chip().ports.control(port, chip::PORT_CONTROL_INGRESS);
    const std::string comes_in =
        iif == 0 ? "" : fmt::format(", comes in on interface {} ({})", iif, names_.interface(iif));
    entry("port", "port", fmt::to_string(port), fmt::to_string(port),
          fmt::format("{}, untagged VLAN {}{}", names_.port(port),
                      chip().ports.get(port).untagged_vlan, comes_in));
}

void Book::translation(const chip::TranslationKey &key, const chip::TranslationAction &action)
{
    entry("translation", "vlan_translation", chip::text(key), packet::key_text(names_, key),
          fmt::format("to interface {} ({}), VLAN {} from there on", action.ingress_if,
                      names_.interface(action.ingress_if), action.new_outer_vlan));
}

void Book::routes_over(const std::set<int> &egresses, std::set<int> groups)
{
    for (const auto &[id, group] : chip().multipath_groups.all()) {
        for (const int member : group.members) {
            if (egresses.contains(member) && groups.insert(id).second) {
                object("ECMP group", "multipath_group", fmt::to_string(id));
            }
        }
    }
    for (const auto &[key, route] : chip().routes.all()) {
        if (route.multipath ? groups.contains(route.next_hop) : egresses.contains(route.next_hop)) {
            const std::string id = chip::text(key);
            const std::size_t blank = id.rfind(' ');
            entry("route", "route", id, id.substr(blank + 1),
                  fmt::format("VRF {}: {} {}", names_.vrf(key.vrf),
                              route.multipath ? "group" : "egress", route.next_hop));
        }
    }
}

Finding Book::take()
{
    end_section();
    finding_.found = true;
    return std::move(finding_);
}

} // namespace lab::explain
