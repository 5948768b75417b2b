/*
 * explain_complete_test.cpp: how far Tab helps with `explain`, and what the shell
 * says of it.
 */
#include "session/complete.h"
#include "session/session.h"
#include "support/load_time_state.h"

#include <gmock/gmock.h>

namespace
{

using ::testing::ElementsAre;

class ExplainComplete : public ::testing::Test
{
protected:
    ExplainComplete()
    {
        rtifhal_test::reset_library();
        session.execute(std::string("up ") + RTIFHAL_SOURCE_DIR + "/examples/kinds.json");
    }

    std::vector<std::string> completed(std::string_view line) const
    {
        return lab::session::complete(session.state(), line).words;
    }

    simswitch::Switch hardware;
    lab::session::Session session{hardware};
};

TEST_F(ExplainComplete, TheKindsAndThenTheNumbersThatThereAre)
{
    EXPECT_THAT(completed("expl"), ElementsAre("explain"));
    EXPECT_THAT(completed("explain "), ElementsAre("egress", "iif", "port", "station", "vlan"));
    EXPECT_THAT(completed("explain vlan "), ElementsAre("1", "10", "20", "100", "101", "4094"));
    EXPECT_THAT(completed("explain vlan 10"), ElementsAre("10", "100", "101"));
    EXPECT_THAT(completed("explain station "), ElementsAre("1"));
    EXPECT_THAT(completed("explain port "), ElementsAre("0", "1", "2", "3", "4", "5", "6"));
    EXPECT_THAT(completed("explain iif "), ElementsAre("3", "4", "5", "6", "7", "8", "9"));
    EXPECT_THAT(completed("explain bird "), ElementsAre());
    EXPECT_THAT(completed("explain vlan 100 "), ElementsAre());
}

TEST_F(ExplainComplete, HelpTellsOfIt)
{
    EXPECT_EQ(session.execute("help explain").shown,
              "explain KIND N\n"
              "    tells what a number stands for: of an iif, vlan, station, port or egress\n");
}

} // namespace
