/*
 * session_states_test.cpp: the word for how an interface is doing: up, stopped
 * from routing, failed, deleted with its number kept, deleted.
 */
#include "session_run.h"

#include "commands/up.h"

#include <gtest/gtest.h>

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <string>

namespace lab_test
{

namespace
{

using simswitch::chip::Kind;

class SessionStates : public SessionTest, public testing::WithParamInterface<Kind>
{
protected:
    SessionStates() : SessionTest({.chip = GetParam()}) {}

    static std::string state_in(const lab::session::Session &session, const std::string &name)
    {
        for (const auto &interface : session.state().scene().interfaces) {
            if (interface.name == name) {
                return std::string(interface.state);
            }
        }
        return "";
    }
    std::string state_of(const std::string &name) const { return state_in(session, name); }
    /** How many families the chip routes that come in on an interface. */
    std::size_t families_of(const std::string &name) const
    {
        const auto interfaces = session.state().scene().interfaces;
        const auto found = std::ranges::find_if(
            interfaces, [&name](const auto &interface) { return interface.name == name; });
        return found != interfaces.end() ? found->view.families().size() : 99;
    }
    /** Why a line can't be done now; empty when it can. */
    static std::string why_not(lab::session::Session &session, const std::string &line)
    {
        try {
            session.execute(line);
        } catch (const lab::session::Impossible &error) {
            return error.what();
        }
        return "";
    }
    /** Brings all up but one, which is deleted, as is what stands on it. */
    static void prepare(lab::session::Session &session, const std::string &name)
    {
        session.execute("up kinds.json");
        if (name == "PortChannel0001") {
            session.execute("del PortChannel0001.20");
        }
        session.execute("del " + name);
    }
    /** The platform's functions that the add of an interface calls. */
    static std::set<std::string> functions_of_add(const std::string &name)
    {
        rtifhal_test::reset_library();
        simswitch::Switch other({.chip = GetParam()});
        lab::session::Session begun(other, {}, EXAMPLES);
        prepare(begun, name);
        begun.execute("add " + name);
        std::set<std::string> functions;
        for (const std::string &call : begun.state().last.calls()) {
            functions.emplace(lab::session::function_of(call));
        }
        return functions;
    }
    void expect_all_words(const std::string &name)
    {
        SCOPED_TRACE(name);
        EXPECT_EQ(state_of(name), "up");
        run("disable " + name);
        EXPECT_EQ(state_of(name), "stopped");
        EXPECT_EQ(families_of(name), 0U);
        run("set " + name + " class on");
        EXPECT_EQ(state_of(name), "up");
        EXPECT_GT(families_of(name), 0U);
        run("del " + name + " keep");
        EXPECT_EQ(state_of(name), name == "MuxTunnel0" ? "down" : "kept");
        run("add " + name);
        EXPECT_EQ(state_of(name), "up");
        run("del " + name);
        EXPECT_EQ(state_of(name), "down");
        for (const char *call : {"rtifhal_bcm_l3_intf_create", "rtifhal_bcm_l3_ingress_create"}) {
            run(fmt::format("fail {} always -6", call));
            run("add " + name);
            EXPECT_EQ(state_of(name), "failed") << call;
            run("fail off");
            problem("del " + name);
        }
        run("add " + name);
        EXPECT_EQ(state_of(name), "up");
        run("del " + name);
        EXPECT_EQ(state_of(name), "down");
    }
};

INSTANTIATE_TEST_SUITE_P(Chips, SessionStates, testing::Values(Kind::trident, Kind::trident2),
                         [](const auto &info) {
                             return info.param == Kind::trident ? "Trident" : "Trident2";
                         });

} // namespace

TEST_P(SessionStates, EachWayOfNotRoutingHasAWordOfItsOwn)
{
    up();
    for (const char *name : {"MuxTunnel0", "PortChannel0001.20", "Ethernet4.10", "Vlan100",
                             "PortChannel0001", "Ethernet0"}) {
        expect_all_words(name);
    }
}

TEST_P(SessionStates, EachFailureOfAnAddFailsInTheTableAsItDoesForUp)
{
    std::set<std::string> nothing_left;
    for (const std::string name : {"Ethernet0", "PortChannel0001", "Vlan100", "Ethernet4.10",
                                   "PortChannel0001.20", "MuxTunnel0"}) {
        for (const std::string &function : functions_of_add(name)) {
            rtifhal_test::reset_library();
            simswitch::Switch other({.chip = GetParam()});
            lab::session::Session begun(other, {}, EXAMPLES);
            prepare(begun, name);
            begun.execute("fail " + function + " always -1");
            begun.execute("add " + name);
            const lab::session::State &state = begun.state();
            const auto &config = state.config.value();
            const auto results = lab::commands::result_of(other, config, state.layer).interfaces;
            const std::string shown = state_in(begun, name);
            for (const auto &result : results) {
                if (result.interface->lif->plan().name == name) {
                    // A request may be refused that has left the chip with all of it.
                    EXPECT_EQ(shown, result.view.missing.empty() ? "up" : "failed")
                        << function << ": " << name;
                    EXPECT_TRUE(shown == "failed" || result.up ||
                                function == "fwmpd_bcm_switch_control_set")
                        << function << ": " << name;
                }
            }
            if (shown == "failed" &&
                why_not(begun, "del " + name) == name + " has failed and left nothing to delete") {
                nothing_left.insert(name);
            }
        }
    }
    EXPECT_EQ(nothing_left, (std::set<std::string>{"Ethernet0", "Ethernet4.10", "MuxTunnel0",
                                                   "PortChannel0001.20", "Vlan100"}));
}

} // namespace lab_test
