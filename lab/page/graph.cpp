/*
 * graph.cpp: see graph.h.
 */
#include "page/graph.h"

#include <algorithm>
#include <cstddef>
#include <set>
#include <string>
#include <utility>

namespace lab::page
{

namespace chip = simswitch::chip;

namespace
{

// The columns of a graph.
constexpr int PORTS = 0;
constexpr int TRUNK = 1;
constexpr int TIE = 2;
constexpr int INGRESS = 3;
constexpr int OBJECT = 4;
constexpr int NEXT_HOP = 5;

// What there is more of is told by name, and not drawn.
constexpr std::size_t PORTS_DRAWN = 6;
constexpr std::size_t STATIONS_DRAWN = 6;
constexpr std::size_t SECONDARIES_DRAWN = 4;
constexpr std::size_t NEXT_HOPS_DRAWN = 6;

/** The numbers of a list from a place on, as words. */
std::vector<std::string> numbers_from(const std::vector<int> &numbers, std::size_t first)
{
    std::vector<std::string> words;
    for (std::size_t i = first; i < numbers.size(); ++i) {
        words.push_back(std::to_string(numbers[i]));
    }
    return words;
}

/** Whether a station takes frames of a VLAN from one of those ports. */
bool takes_frames(const chip::Station &station, int vlan, const std::vector<int> &ports)
{
    const bool in_vlan = (vlan & station.vlan_mask) == (station.vlan & station.vlan_mask);
    const int port_mask = station.src_port_mask;
    return in_vlan && (port_mask == 0 || std::ranges::any_of(ports, [&](int port) {
                           return (port & port_mask) == (station.src_port & port_mask);
                       }));
}

/** Builds one graph. */
class GraphMaker
{
public:
    GraphMaker(ObjectBook &book, const Surroundings &surroundings, const l3lif::LifPlan &plan,
               const l3lif::HardwareView &view)
        : book_(book), surroundings_(surroundings), plan_(plan), view_(view)
    {
    }

    Graph make()
    {
        add_ports();
        add_ties();
        add_objects();
        return std::move(graph_);
    }

private:
    /** Where frames come in: a node, and the port that stands for it in VLANs. */
    struct Entry {
        std::size_t node;
        int port;
    };

    const chip::Chip &chip() const { return book_.chip(); }
    std::size_t node(std::size_t object, int column, int row = 0)
    {
        graph_.nodes.push_back({object, column, row});
        return graph_.nodes.size() - 1;
    }
    void tie(std::size_t from, std::size_t to, std::string what)
    {
        graph_.ties.push_back({from, to, std::move(what)});
    }

    void add_ports();
    void add_channel(int trunk);
    void add_vlan_members();
    std::vector<int> secondaries() const;
    std::vector<int> bridged_ports() const;
    void add_secondaries();
    void add_ties();
    void add_translation();
    void tie_to_vlan(std::size_t vlan_node, int vlan);
    void add_stations(std::size_t ingress);
    void add_objects();
    void add_next_hops(std::size_t interface);
    int vlan() const { return plan_.vlan != 0 ? plan_.vlan : view_.vlan; }

    ObjectBook &book_;
    const Surroundings &surroundings_;
    const l3lif::LifPlan &plan_;
    const l3lif::HardwareView &view_;
    Graph graph_;
    std::vector<Entry> entries_;
    std::vector<int> rest_;          ///< ports of a VLAN that aren't drawn one by one
    std::vector<std::size_t> roads_; ///< nodes that name the ingress object, and
    std::vector<std::string> by_;    ///< by what
};

/** A port-channel or a subinterface on one: the members, and the trunk where frames come in. */
void GraphMaker::add_channel(int trunk)
{
    const std::size_t trunk_node = node(book_.trunk(trunk), TRUNK);
    const auto ports = l3lif::ports_of_trunk(chip(), trunk);
    const std::size_t drawn = std::min(ports.size(), PORTS_DRAWN);
    for (std::size_t i = 0; i < drawn; ++i) {
        tie(node(book_.port(ports[i]), PORTS), trunk_node, "member");
    }
    std::vector<std::string> rest;
    for (std::size_t i = drawn; i < ports.size(); ++i) {
        rest.push_back(book_.names().port(ports[i]));
    }
    if (!rest.empty()) {
        tie(node(book_.more("ports", rest), PORTS), trunk_node, "members");
    }
    if (!ports.empty()) {
        entries_.push_back({trunk_node, ports.front()});
    }
    const bool all_tied =
        !ports.empty() && view_.iif != 0 && std::ranges::all_of(ports, [this](int port) {
            return chip().ports.control(port, chip::PORT_CONTROL_INGRESS) == view_.iif;
        });
    if (all_tied) {
        roads_.push_back(trunk_node);
        by_.emplace_back("port control 67");
    }
}

/** The VLANs beside its own whose frames an SVI takes: those of private-VLAN pairs. */
std::vector<int> GraphMaker::secondaries() const
{
    if (plan_.kind != config::Kind::svi || view_.iif == 0) {
        return {};
    }
    auto found = surroundings_.vlans(view_.iif);
    std::erase(found, vlan());
    return found;
}

/** The ports of an SVI's VLAN, then those that only a secondary has. */
std::vector<int> GraphMaker::bridged_ports() const
{
    std::vector<int> ports = view_.ports;
    for (const int secondary : secondaries()) {
        const chip::Vlan *found = chip().vlans.find(secondary);
        for (int port = chip::FIRST_FRONT_PORT; port <= chip::LAST_FRONT_PORT; ++port) {
            if (found->members.has(port) && std::ranges::find(ports, port) == ports.end()) {
                ports.push_back(port);
            }
        }
    }
    return ports;
}

/** The ports and port-channels that are bridged to a VLAN. */
void GraphMaker::add_vlan_members()
{
    std::set<int> trunks;
    std::vector<std::string> rest;
    for (const int port : bridged_ports()) {
        const auto trunk = chip().trunks.trunk_of(chip::module_port(0, port));
        if (trunk && !trunks.insert(*trunk).second) {
            continue;
        }
        if (entries_.size() >= PORTS_DRAWN) {
            rest_.push_back(port);
            rest.push_back(trunk ? book_.names().trunk(*trunk) : book_.names().port(port));
        } else {
            const std::size_t object = trunk ? book_.trunk(*trunk) : book_.port(port);
            entries_.push_back({node(object, PORTS), port});
        }
    }
    if (!rest.empty()) {
        entries_.push_back({node(book_.more("ports", rest), PORTS), -1});
    }
}

void GraphMaker::add_ports()
{
    if (plan_.kind == config::Kind::svi) {
        add_vlan_members();
    } else if (plan_.trunk != 0) {
        add_channel(plan_.trunk);
    } else if (plan_.chip_port != 0) {
        const std::size_t port_node = node(book_.port(plan_.chip_port), PORTS);
        entries_.push_back({port_node, plan_.chip_port});
        if (view_.iif != 0 &&
            chip().ports.control(plan_.chip_port, chip::PORT_CONTROL_INGRESS) == view_.iif) {
            roads_.push_back(port_node);
            by_.emplace_back("port control 67");
        }
    }
}

void GraphMaker::add_translation()
{
    const int gport =
        plan_.trunk != 0 ? chip::trunk_gport(plan_.trunk) : chip::module_port(0, plan_.chip_port);
    const chip::TranslationKey key = {gport, chip::KEY_TYPE_PORT_OUTER, plan_.vlan,
                                      chip::ANY_INNER_VLAN};
    const chip::TranslationAction *found = chip().vlan_translations.find(key);
    if (found == nullptr) {
        return;
    }
    const std::size_t translation = node(book_.translation(key), TIE);
    for (const Entry &entry : entries_) {
        tie(entry.node, translation, "looked up");
    }
    if (found->ingress_if == view_.iif && view_.iif != 0) {
        roads_.push_back(translation);
        by_.emplace_back("names it");
    }
}

void GraphMaker::tie_to_vlan(std::size_t vlan_node, int vlan)
{
    const chip::Vlan *found = chip().vlans.find(vlan);
    for (const Entry &entry : entries_) {
        if (found != nullptr && entry.port < 0) {
            if (std::ranges::any_of(rest_,
                                    [found](int port) { return found->members.has(port); })) {
                tie(entry.node, vlan_node, "members");
            }
        } else if (found != nullptr && found->members.has(entry.port)) {
            tie(entry.node, vlan_node, found->untagged.has(entry.port) ? "untagged" : "tagged");
        }
    }
}

void GraphMaker::add_ties()
{
    const bool is_svi = plan_.kind == config::Kind::svi;
    if (plan_.kind == config::Kind::subinterface) {
        add_translation();
    }
    if (vlan() == 0 || plan_.kind == config::Kind::tunnel) {
        return;
    }
    // The road of a packet goes through the VLAN of an SVI, and past that of the others.
    const std::size_t vlan_node = node(book_.vlan(vlan()), TIE, is_svi ? 0 : 1);
    tie_to_vlan(vlan_node, vlan());
    const chip::Vlan *found = chip().vlans.find(vlan());
    if (found != nullptr && view_.iif != 0 &&
        static_cast<int>(found->controls.ingress_if) == view_.iif) {
        roads_.push_back(vlan_node);
        by_.emplace_back("names it");
    }
    add_secondaries();
}

void GraphMaker::add_secondaries()
{
    const auto all = secondaries();
    const std::size_t drawn = std::min(all.size(), SECONDARIES_DRAWN);
    for (std::size_t i = 0; i < drawn; ++i) {
        const std::size_t secondary = node(book_.vlan(all[i]), TIE, 1);
        tie_to_vlan(secondary, all[i]);
        roads_.push_back(secondary);
        by_.emplace_back("secondary");
    }
    if (drawn < all.size()) {
        roads_.push_back(node(book_.more("secondaries", numbers_from(all, drawn)), TIE, 1));
        by_.emplace_back("secondary");
    }
}

void GraphMaker::add_stations(std::size_t ingress)
{
    auto stations = surroundings_.stations(vlan(), view_.ports);
    for (const int secondary : secondaries()) {
        for (const int station : surroundings_.stations(secondary, bridged_ports())) {
            if (std::ranges::find(stations, station) == stations.end()) {
                stations.push_back(station);
            }
        }
    }
    const std::size_t drawn = std::min(stations.size(), STATIONS_DRAWN);
    for (std::size_t i = 0; i < drawn; ++i) {
        tie(ingress, node(book_.station(stations[i]), OBJECT, 1), "routes for");
    }
    if (drawn < stations.size()) {
        tie(ingress, node(book_.more("stations", numbers_from(stations, drawn)), OBJECT, 1), "");
    }
}

void GraphMaker::add_objects()
{
    if (view_.iif == 0) {
        return;
    }
    const std::size_t ingress = node(book_.ingress(view_.iif), INGRESS);
    for (std::size_t i = 0; i < roads_.size(); ++i) {
        tie(roads_[i], ingress, by_[i]);
    }
    const std::size_t interface = node(book_.interface(view_.iif), OBJECT);
    tie(ingress, interface, "same id");
    add_stations(ingress);
    if (chip().tunnels.find(view_.iif) != nullptr) {
        tie(interface, node(book_.tunnel(view_.iif), NEXT_HOP), "wraps by");
    }
    add_next_hops(interface);
}

void GraphMaker::add_next_hops(std::size_t interface)
{
    const auto next_hops = surroundings_.next_hops(view_.iif);
    const std::size_t drawn = std::min(next_hops.size(), NEXT_HOPS_DRAWN);
    for (std::size_t i = 0; i < drawn; ++i) {
        tie(interface, node(book_.egress(next_hops[i]), NEXT_HOP), "next hop");
    }
    if (drawn < next_hops.size()) {
        tie(interface, node(book_.more("next hops", numbers_from(next_hops, drawn)), NEXT_HOP), "");
    }
}

} // namespace

Surroundings::Surroundings(const chip::Chip &chip) : stations_(chip.stations.all())
{
    for (const auto &[id, egress] : chip.egresses.all()) {
        next_hops_[egress.interface].push_back(id);
    }
    chip.vlans.for_each([this](int id, const chip::Vlan &vlan) {
        if (vlan.controls.ingress_if != 0) {
            vlans_[static_cast<int>(vlan.controls.ingress_if)].push_back(id);
        }
    });
    for (auto &[iif, vlans] : vlans_) {
        std::ranges::sort(vlans); // they came in no order
    }
}

std::vector<int> Surroundings::vlans(int iif) const
{
    const auto found = vlans_.find(iif);
    return found == vlans_.end() ? std::vector<int>{} : found->second;
}

std::vector<int> Surroundings::stations(int vlan, const std::vector<int> &ports) const
{
    std::vector<int> found;
    for (const auto &[id, station] : stations_) {
        if (takes_frames(station, vlan, ports)) {
            found.push_back(id);
        }
    }
    return found;
}

std::vector<int> Surroundings::next_hops(int iif) const
{
    const auto found = next_hops_.find(iif);
    return found == next_hops_.end() ? std::vector<int>{} : found->second;
}

Graph graph_of(ObjectBook &book, const Surroundings &surroundings, const l3lif::LifPlan &plan,
               const l3lif::HardwareView &view)
{
    return GraphMaker(book, surroundings, plan, view).make();
}

} // namespace lab::page
