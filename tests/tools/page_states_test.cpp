/*
 * page_states_test.cpp: what the page of a state folder calls interfaces that
 * don't route.
 */
#include "tools/page_run.h"

#include <gmock/gmock.h>

#include <map>

using PageStates = page_test::PageFolder;

TEST_F(PageStates, AStoppedInterfaceAndADeletedOneAreNotTheSame)
{
    for (const char *chip : {"trident", "trident2"}) {
        write("stop.rtif",
              "up " + page_test::EXAMPLES + "kinds.json\ndisable Ethernet0\ndel Vlan100\nsave\n");
        const std::string state = std::string("kept-") + chip;
        ASSERT_EQ(rtif("run stop.rtif --chip " + std::string(chip) + " --state " + state).code, 0);
        const auto run = rtif("report --state " + state + " -o page.html");
        EXPECT_EQ(run.code, 1);
        EXPECT_THAT(run.out, testing::StartsWith("page.html: 7 interfaces, 5 up, 2 not; "));
        std::map<std::string, std::string> states;
        const auto data = page_test::data_of(read("page.html"));
        for (const auto &one : data["interfaces"]) {
            states[one["name"]] = one["state"];
        }
        EXPECT_EQ(states["Ethernet0"], "stopped");
        EXPECT_EQ(states["Vlan100"], "down");
        EXPECT_EQ(states["Ethernet4"], "up");
        EXPECT_EQ(data["interfaces"][0]["error"],
                  "it was stopped from routing: its ingress object lets no family in");
    }
}
