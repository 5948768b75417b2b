/*
 * naive_switch.h: what has to hold, in plain maps: the naive model of a switch. It knows nothing
 * of the library's code and makes no platform call; it does what a request promises.
 *
 * naive_numbers.h has the numbers, naive_vlans.h the VLANs, naive_stations.h the stations;
 * facts.h has what is compared, walk.h compares.
 */
#pragma once

#include "config/description.h"
#include "l3lif/plans.h"
#include "l3lif/routed_interfaces.h"
#include "model/facts.h"
#include "model/naive_numbers.h"
#include "model/naive_stations.h"
#include "model/naive_vlans.h"
#include "model/step.h"

#include "chip/chip.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace model_test
{

/** An interface. */
struct NaiveInterface {
    lab::l3lif::LifPlan plan;
    lab::l3lif::Standing standing = lab::l3lif::Standing::down;
    int number = 0;       ///< its own, kept or in use; 0 for none
    bool filed = false;   ///< a subinterface that its main interface knows of
    bool refused = false; ///< its last add was, and has left nothing
};

/** Whose record is stored, under which number. */
struct ChannelRecord {
    std::string name;
    int number = 0;
};

/** A switch with a configuration that is up. */
class NaiveSwitch
{
public:
    NaiveSwitch(const lab::config::Description &config, simswitch::chip::Kind chip);

    /** Whether a session does the step now: it refuses to delete what is down, for instance. */
    bool can(const Step &step) const;
    /** Does a step. @return the code of the request; nothing where any code will do */
    std::optional<int> apply(const Step &step);
    /** What has to be seen. */
    Facts facts() const;

    // What follows a fault; see weakened.h.

    /** Interfaces that a request on one of them works on: itself, its subinterfaces that are up. */
    std::vector<std::string> worked_on(const std::string &name) const;
    /** The virtual MACs in either VLAN of a pair. */
    std::set<std::string> macs_of_pair(const std::string &primary,
                                       const std::string &secondary) const;
    /** Whether a fact is one of an interface in the VLAN of another one. */
    bool shares_vlan(const std::string &name, const std::string &key) const;
    /** Whether several interfaces have this VLAN. */
    bool is_shared(int vlan) const;
    const NaiveInterface &interface(const std::string &name) const { return interfaces_.at(name); }
    const NaiveStations &stations() const { return stations_; }
    NaiveStations &stations() { return stations_; }
    const NaiveNumbers &numbers() const { return numbers_; }
    /** Deletes interfaces and adds them again, the first one being the main interface. */
    void rebuild(const std::vector<std::string> &names);
    /** Takes over the numbers that the library has, by interface. */
    void adopt_numbers(const std::map<std::string, int> &owned, const std::set<int> &held_back,
                       const std::set<int> &lost);
    /** Holds numbers back that others have given up. */
    void hold_back(const std::set<int> &numbers)
    {
        for (const int number : numbers) {
            numbers_.hold_back(number);
        }
    }
    /** For a test of the tests: the next number is expected one too high. */
    void lie_about_numbers() { lies_ = true; }

private:
    using Standing = lab::l3lif::Standing;

    void bring_up();
    void add(NaiveInterface &interface, int &code);
    void add_subinterface(NaiveInterface &interface, int &code);
    void join_channel(NaiveInterface &channel);
    void remove(NaiveInterface &interface, bool keep);
    void leave_channel(NaiveInterface &channel);
    std::vector<int> ports_of_subinterface(const NaiveInterface &interface) const;
    bool has_its_vlan(const NaiveInterface &interface) const;
    std::string state_of(const NaiveInterface &interface) const;
    void give_number(NaiveInterface &interface);
    void note_record(const NaiveInterface &interface, bool stored);
    void restart(const std::string &mode);
    void restore();
    /** The number in the record of an interface at or on a port-channel; 0 without one. */
    int stored_number(const NaiveInterface &interface) const;
    NaiveOwner owner_of(const NaiveInterface &interface) const;
    std::vector<NaiveInterface *> filed_under(const NaiveInterface &main);
    int vlan_of(const std::string &word) const;
    bool can_pair(const Step &step) const;

    const lab::config::Description *config_;
    simswitch::chip::Kind chip_;
    NaiveNumbers numbers_;
    NaiveVlans vlans_;
    NaiveStations stations_;
    std::vector<std::string> order_; ///< of coming up
    std::map<std::string, NaiveInterface> interfaces_;
    std::map<int, std::vector<int>> trunks_; ///< members in the order of joining, by trunk
    /** The record that is stored under a port-channel's ifindex: its own, or that of a subinterface
     * of it, which outlives the subinterface. */
    std::map<std::uint32_t, ChannelRecord> channel_records_;
    bool lies_ = false;
};

} // namespace model_test
