/*
 * chip_writer.h: brings the chip's egress objects, multipath groups, routes and
 * tunnel initiators in line with what is planned, by differences: what is there already isn't
 * written again, and an object goes after the routes that used it have moved.
 *
 * plan.h makes the plan, routing.h tells when; take_over.cpp has what follows a restart.
 */
#pragma once

#include "chip/egresses.h"
#include "chip/routes.h"
#include "chip/tunnels.h"
#include "switch.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace lab::routing
{

/** An egress object that the chip should hold. */
struct PlannedEgress {
    simswitch::chip::Egress record;
    std::string text; ///< what it is for, as tables show it: "10.0.0.9", "CPU", "black hole"
};

/** A route that the chip should hold. */
struct PlannedRoute {
    std::string author;                ///< "route 10.2.0.0/16"
    std::vector<std::string> egresses; ///< names of its egress objects; several make a group
};

/** A tunnel initiator that the chip should hold. */
struct PlannedTunnel {
    std::string author; ///< "tunnel MuxTunnel0"
    simswitch::chip::Tunnel record;
};

/** What the chip should hold. */
struct ChipPlan {
    /** Egress objects by name, which is their author too: "neighbor 10.0.0.9 of Ethernet0". */
    std::map<std::string, PlannedEgress, std::less<>> egresses;
    std::map<simswitch::chip::RouteKey, PlannedRoute> routes;
    std::map<int, PlannedTunnel> tunnels; ///< by L3 interface
};

/** Writes plans. */
class ChipWriter
{
public:
    /** @param hardware  must outlive this */
    explicit ChipWriter(simswitch::Switch &hardware) : hardware_(hardware) {}

    /**
     * Brings the chip in line with a plan; what earlier plans had and this one
     * hasn't goes. A route of the same prefix that somebody else wrote is
     * replaced, what it led to is left alone.
     *
     * @param plan      what the chip should hold
     * @param problems  receives a sentence for each object that the chip didn't take
     */
    void write(const ChipPlan &plan, std::vector<std::string> &problems);

    /**
     * Says that the chip holds what an earlier process has written. The next plan takes over what
     * it has of that too, and removes the rest: routes, groups and egress objects to which nothing
     * leads. The default route of a VRF stays where the plan has none, with what it leads to: a
     * fast restart may have brought it.
     */
    void take_over() { takes_over_ = true; }

    /** The id of an egress object by its name; 0 for one that wasn't written. */
    int id_of(std::string_view name) const;
    /** What an egress object is for; empty for one that wasn't written here. */
    std::string_view text_of(int egress) const;

private:
    struct WrittenEgress {
        int id = 0;
        simswitch::chip::Egress record;
        std::string text;
    };
    struct WrittenRoute {
        simswitch::chip::Route record;
        int group = 0; ///< its multipath group, 0 for none
    };

    void put_tunnel(int interface, const PlannedTunnel &wanted, std::vector<std::string> &problems);
    void put_egress(const std::string &name, const PlannedEgress &wanted,
                    std::vector<std::string> &problems);
    void put_route(const simswitch::chip::RouteKey &key, const PlannedRoute &wanted,
                   std::vector<std::string> &problems);
    std::vector<int> ids_of(const PlannedRoute &wanted) const;
    bool take_group(const std::vector<int> &members, const PlannedRoute &wanted,
                    WrittenRoute &route, std::vector<std::string> &problems);
    void remove_routes(const ChipPlan &plan);
    void remove_group(int group);
    void remove_egresses(const ChipPlan &plan);
    void remove_tunnels(const ChipPlan &plan);

    void adopt(const ChipPlan &plan);
    void adopt_way(const ChipPlan &plan, const PlannedRoute &wanted,
                   const simswitch::chip::Route &there);
    void adopt_egress(const ChipPlan &plan, const std::string &name, int id);
    void remove_ownerless();

    simswitch::Switch &hardware_;
    bool has_written_ = false;
    bool takes_over_ = false; ///< at the next plan
    std::map<std::string, WrittenEgress, std::less<>> egresses_;
    std::map<int, std::string> names_; ///< of the egress objects, by id
    std::map<simswitch::chip::RouteKey, WrittenRoute> routes_;
    std::map<int, simswitch::chip::Tunnel> tunnels_;
};

} // namespace lab::routing
