/*
 * session_changes_test.cpp: what `set` leaves in the chip, held against what the
 * interface has there when it is added with that property: every kind, every
 * property, both chips. Where the two differ, the table says how.
 *
 * tests/library/property_chip_test.cpp has the same of the library's setters.
 */
#include "session_run.h"

#include "chip/snapshot.h"
#include "l3lif/request.h"
#include "session/properties.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

namespace lab_test
{

namespace
{

using simswitch::chip::Kind;
using simswitch::chip::Snapshot;

/** What a new switch holds after some lines of a session. */
Snapshot chip_after(Kind chip, const std::vector<std::string> &lines)
{
    rtifhal_test::reset_library();
    simswitch::Switch hardware({.chip = chip});
    lab::l3lif::keep_errors_only(hardware);
    lab::session::Session session(hardware, {}, EXAMPLES);
    for (const std::string &line : lines) {
        session.execute(line);
    }
    return simswitch::chip::snapshot(hardware.chip);
}

/** What a set leaves otherwise than an add: the line of the add, then that of the set. */
using Differences = std::vector<std::string>;

/** An interface of examples/kinds.json, and the number that it has when it is added again. */
constexpr int IIF = 10;

/** Ethernet0 as the chip has it; on: the controls that are on. */
std::string port_line(Kind chip, const std::vector<int> &on)
{
    std::string controls;
    for (const int control : on) {
        controls += fmt::format("{}=1 ", control);
    }
    return fmt::format("port 1: untagged 4094 discard 0 controls {}67={}{} vlan-controls 2=1 4=1",
                       controls, IIF, chip == Kind::trident2 ? " 187=1" : "");
}

/** Of a port: the add opens IPv4 unicast and multicast, and finds IPv6 open from its delete. */
Differences of_port(Kind chip, const std::string &change)
{
    std::vector<int> added = {8, 9, 10};
    std::vector<int> set = {8};
    if (change == "ipv4 off") {
        set = {};
    } else if (change == "ipv4-multicast on") {
        set = {8, 10};
    } else if (change == "ipv6 on") {
        set = {8, 9};
    } else if (change == "mpls on") {
        set = {8, 14};
        added.push_back(14);
    }
    return {"- " + port_line(chip, added), "+ " + port_line(chip, set)};
}

/** VLAN 100 as the chip has it. */
std::string vlan_line(const char *flags)
{
    return fmt::format("VLAN 100: stg 1 members {{0,5}} untagged {{5}} controls vrf 1 iif {} "
                       "flags {} class 6 urpf 0 blocks kmc {{}} umc {{0}} uuc {{}} bc {{}}",
                       IIF, flags);
}

/** The ingress object of the tunnel. */
std::string tunnel_line(int vrf, const char *flags)
{
    return fmt::format("L3 ingress {}: vrf {} urpf 0 class 64 ipmc 0 qos 0 flags {}", IIF, vrf,
                       flags);
}

/** What differs, after a change "ipv4 off". */
Differences differences_of(const std::string &name, Kind chip, const std::string &change)
{
    // A label goes its own way, which writes no controls.
    if (name == "Ethernet0" && !change.starts_with("acl-label")) {
        return of_port(chip, change);
    }
    // No add of a VLAN interface writes these flags.
    if (name == "Vlan100" && change == "mpls on") {
        return {"- " + vlan_line("0x400a30"), "+ " + vlan_line("0x400830")};
    }
    if (name == "Vlan100" && change == "ingress-flag on") {
        return {"- " + vlan_line("0x400a30"), "+ " + vlan_line("0x404a30")};
    }
    // The add of a tunnel forces IPv4 on.
    if (name == "MuxTunnel0" && change == "ipv4 off") {
        const bool new_kind = chip == Kind::trident2;
        return {"- " + tunnel_line(1, new_kind ? "0x486" : "0x6"),
                "+ " + tunnel_line(0, new_kind ? "0x4a6" : "0x6")};
    }
    return {};
}

/** "ipv4 off", "urpf loose", "mtu 700": of each property what no interface has from the start. */
std::vector<std::string> all_changes()
{
    std::vector<std::string> all;
    for (const lab::session::Property &property : lab::session::properties()) {
        using enum lab::session::ValueKind;
        const std::vector<std::string> values =
            property.name == "ipv4"         ? std::vector<std::string>{"off"}
            : property.kind == on_off       ? std::vector<std::string>{"on"}
            : property.kind == reverse_path ? std::vector<std::string>{"strict", "loose"}
                                            : std::vector<std::string>{"700"};
        for (const std::string &value : values) {
            all.push_back(fmt::format("{} {}", property.name, value));
        }
    }
    return all;
}

class SessionChanges : public ::testing::TestWithParam<std::tuple<std::string, Kind>>
{
protected:
    const std::string &name() const { return std::get<0>(GetParam()); }
    Kind chip() const { return std::get<1>(GetParam()); }
    /** The chip after the interface went and came back, with some lines between and behind. */
    Snapshot again(const std::string &between, const std::string &behind) const
    {
        std::vector<std::string> lines = {"up kinds.json"};
        if (name() == "PortChannel0001") {
            lines.emplace_back("del PortChannel0001.20");
        }
        lines.insert(lines.end(), {"del " + name(), between, "add " + name(), behind});
        return chip_after(chip(), lines);
    }
};

TEST_P(SessionChanges, SetLeavesWhatAnAddWithThatPropertyLeaves)
{
    for (const std::string &change : all_changes()) {
        const std::string set = fmt::format("set {} {}", name(), change);
        EXPECT_EQ(simswitch::chip::changes(again(set, ""), again("", set)),
                  differences_of(name(), chip(), change))
            << set;
    }
}

INSTANTIATE_TEST_SUITE_P(Each, SessionChanges,
                         ::testing::Combine(::testing::Values("Ethernet0", "PortChannel0001",
                                                              "Vlan100", "Ethernet4.10",
                                                              "PortChannel0001.20", "MuxTunnel0"),
                                            ::testing::Values(Kind::trident, Kind::trident2)));

} // namespace

} // namespace lab_test
