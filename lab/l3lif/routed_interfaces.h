/*
 * routed_interfaces.h: the routed interfaces of the layer above: adding and
 * deleting them through the library, kind by kind, as often as one likes.
 *
 * A port-channel comes up and goes down member by member. A subinterface is
 * filed under its main interface as long as it is up: the library counts and
 * walks the subinterfaces of a main interface. lif.h has the record of one
 * interface; layer.h has what else the layer does.
 */
#pragma once

#include "l3lif/lif.h"
#include "l3lif/request.h"

#include "services/tree.h"
#include "switch.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace lab::l3lif
{

/** What the library has of an interface. */
enum class Standing : std::uint8_t {
    down, ///< nothing
    up,   ///< it was added
    kept, ///< it was deleted, and its record and number wait for its next add
};

/** An interface and the requests that it was the subject of. */
struct Interface {
    std::unique_ptr<Lif> lif;
    std::vector<std::unique_ptr<Lif>> members; ///< a port-channel's, in the order of joining
    std::unique_ptr<simswitch::services::Tree> member_tree; ///< those that have joined
    Request up;                                             ///< its last add
    Request down; ///< its last delete; empty until it is taken down

    /** Where it stands with the library. */
    Standing standing() const;
};

/** The routed interfaces. */
class RoutedInterfaces
{
public:
    /** @param hardware  the switch that stands in for the platform; must outlive this */
    explicit RoutedInterfaces(simswitch::Switch &hardware) : hardware_(hardware) {}

    /** Makes an interface that is down. The reference stays good. */
    Interface &make(LifPlan plan);
    /**
     * Brings an interface up. One that is kept comes back under its number; one
     * that is up is programmed again. A subinterface whose main interface isn't
     * known gets a record of it that is only registered.
     */
    const Request &add(Interface &interface);
    /**
     * Gives an interface that is down what the store has of it. Nothing is told
     * to the library.
     *
     * @return the record to restore
     */
    ::l3lif *take_over(Interface &interface, const simswitch::services::StoredInterface &stored);
    /**
     * Puts the interfaces into the order of plans, in which a teardown goes back:
     * a main interface that was taken over late is not taken down first.
     */
    void sort_as(const std::vector<LifPlan> &plans);
    /** After its restore: marks it as up, the members that the chip has in its trunk too. */
    void mark_up(Interface &interface);
    /**
     * Takes an interface down that isn't down.
     *
     * @param keep  its record and number stay for its next add; a tunnel goes
     *              for good all the same
     */
    const Request &remove(Interface &interface, bool keep = false);

    /** All of them, in the order in which they were made. */
    const std::vector<std::unique_ptr<Interface>> &all() const { return interfaces_; }
    /** The interface of a name, null when there is none. */
    Interface *find(std::string_view name) const;
    /** The names of the subinterfaces that are up on an interface. */
    std::vector<std::string> subinterfaces_of(const Interface &interface) const;

private:
    Request run(const std::string &name, const std::function<int()> &work);
    Request add_by_kind(Interface &interface);
    Request add_members(Interface &interface);
    Request add_subinterface(Lif &lif);
    Request remove_by_kind(Interface &interface, bool keep);
    Request remove_members(Interface &interface, bool keep);
    Request remove_subinterface(Lif &lif, bool keep);
    Request remove_svi(Lif &lif, bool keep);
    Request join(Interface &interface, Lif &member, int create);
    Request leave(Interface &interface, Lif &member, int destroy);
    void make_members(Interface &interface);
    void file_under_main(Lif &lif);
    void become_main(Lif &lif);

    simswitch::Switch &hardware_;
    std::map<std::uint32_t, simswitch::services::Tree> subinterfaces_; ///< by main interface
    std::map<std::uint32_t, std::unique_ptr<Lif>> bare_mains_; ///< registered and not routed
    std::vector<std::unique_ptr<Interface>> interfaces_;
    std::unordered_map<std::string_view, Interface *> by_name_; ///< the names stand in the plans
};

} // namespace lab::l3lif
