/*
 * weakened.h: what is asked less after a call that failed in a step, and why.
 *
 * Right behind the failure:
 *  - No number has two owners, and no interface, VLAN or MAC changes on which the request doesn't
 *    work. Of those on which it works nothing is asked: the library undoes nothing, and many
 *    failures are only reported.
 *  - Nothing is asked of VLAN 4094, which all routed ports share.
 *
 * Then what the request worked on is deleted and added again, as the layer above would do, and all
 * has to be as without the failure, except:
 *  - Numbers. A failed allocation of records, or a record that was lost, leaves a number taken that
 *    nobody has, and a refused creation gives one back: which one comes next isn't foretold. The
 *    model takes over what the library has, once it has looked that each number has one owner, that
 *    none in use is held back, and that those of others stayed.
 *  - Stations of the MACs in the request. A station whose deletion was refused is forgotten by the
 *    library, and stays until the power goes: there may be more of them, but none may be missing.
 *  - Numbers held back that couldn't be stored, after a restart: the call that stores them isn't
 * made to fail where lifecycles have restarts.
 *  - The order of a trunk's members: one whose deletion failed is still in. The lifecycle ends
 * there.
 *  - Subinterfaces that share a VLAN, after a restore. Nobody counts them then, and the first that
 * is deleted takes the VLAN from the others, unless that is what failed. Where they come to differ
 * the lifecycle ends.
 */
#pragma once

#include "model/naive_switch.h"
#include "model/step.h"

#include "session/state.h"

#include <set>
#include <string>
#include <vector>

namespace model_test
{

/** On what a request works. */
struct Touched {
    std::vector<std::string> interfaces; ///< the one in the request first
    std::set<std::string> macs;
};

/** On what a step works, before it is done. */
Touched touched_by(const NaiveSwitch &model, const Step &step);

/** What has changed that mustn't, right behind the failure. */
std::vector<Difference> changed_elsewhere(const NaiveSwitch &model, const Touched &touched,
                                          const Facts &before, const lab::session::State &state);

/**
 * The next line that takes back or makes again what a step has worked on, as it now stands.
 *
 * @param done  the lines so far
 * @return the line; empty when all was taken back and made again
 */
std::string next_healing(const Touched &touched, const Step &step,
                         const std::vector<std::string> &done, const lab::session::State &state);

/** Brings the model to where the healing has to end. */
void heal(NaiveSwitch &model, const Touched &touched, const Step &step);

/** Whether a fact is of a VLAN that what was touched shares with others, or of one of these. */
bool is_of_shared_vlan(const std::string &key, const NaiveSwitch &model, const Touched &touched);

/** Whether a trunk has the members that it should have, in another order. */
bool is_other_order(const Difference &difference);

/** Takes over what isn't foretold. @return what is wrong with it */
std::vector<Difference> adopt(NaiveSwitch &model, const Touched &touched,
                              const lab::session::State &state);

} // namespace model_test
