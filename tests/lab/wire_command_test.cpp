/*
 * wire_command_test.cpp: `rtif wire` as a user has it: its errors. What it does
 * with interfaces is in wire_test.cpp.
 */
#include "commands/wire.h"
#include "restart_run.h"
#include "session/errors.h"
#include "session_run.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace
{

using lab_test::rtif;
using testing::HasSubstr;

/** What a command line that isn't taken says, behind its exit code. */
std::string refusal(const std::string &arguments)
{
    const auto run =
        rtif(fmt::format("wire {} {}", (lab_test::EXAMPLES / "ping.json").string(), arguments));
    return fmt::format("{}: {}", run.code, run.out);
}

TEST(WireCommand, NeedsAPort)
{
    EXPECT_THAT(refusal(""), HasSubstr("2: rtif wire: --port is required"));
}

TEST(WireCommand, ABindingHasTwoNames)
{
    for (const std::string text : {"Ethernet0", "Ethernet0=", "=veth0", "="}) {
        EXPECT_THAT(refusal("--port " + text),
                    HasSubstr("--port is a port and its interface, such as Ethernet0=veth0, not '" +
                              text + "'"));
    }
    EXPECT_THROW(lab::commands::parse_binding(""), lab::session::UsageError);
    EXPECT_THROW(lab::commands::parse_binding("Ethernet0=\x1b[2J"), lab::session::UsageError);
    const auto binding = lab::commands::parse_binding("Ethernet0=br-a=b");
    EXPECT_EQ(binding.port, "Ethernet0");
    EXPECT_EQ(binding.interface, "br-a=b");
}

TEST(WireCommand, EachPortAndInterfaceOnce)
{
    EXPECT_EQ(refusal("--port Ethernet0=a --port Ethernet0=b"),
              "2: --port: Ethernet0 is given twice: a port is on one interface\n");
    EXPECT_EQ(refusal("--port Ethernet0=a --port Ethernet4=a"),
              "2: --port: a is given twice: an interface stands for one port\n");
}

TEST(WireCommand, AnUnknownPortGetsTheNearest)
{
    EXPECT_EQ(refusal("--port Ethernet44=a"),
              "2: unknown port 'Ethernet44': did you mean 'Ethernet4'?\n");
}

TEST(WireCommand, AnUnknownInterfaceOrAMissingPermission)
{
    EXPECT_THAT(refusal("--port Ethernet0=veth-none"),
                testing::AnyOf("1: veth-none: there is no such network interface\n",
                               HasSubstr("1: veth-none: not permitted: ")));
}

TEST(WireCommand, TheTimeIsANumber)
{
    EXPECT_THAT(refusal("--port Ethernet0=a --seconds 0"), HasSubstr("2: rtif wire: --seconds"));
    EXPECT_THAT(refusal("--port Ethernet0=a --seconds soon"), HasSubstr("2: "));
}

TEST(WireCommand, AConfigurationThatIsNotThere)
{
    const auto run = rtif("wire none.json --port Ethernet0=a");
    EXPECT_EQ(run.code, 1);
    EXPECT_THAT(run.out, HasSubstr("none.json"));
}

} // namespace
