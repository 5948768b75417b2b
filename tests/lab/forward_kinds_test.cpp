/*
 * forward_kinds_test.cpp: packets of hosts behind each kind of interface: routed
 * once it is added, no more when it is deleted or stopped, and again afterwards.
 */
#include "forward.h"

namespace
{

namespace chip = simswitch::chip;
using lab_test::chip_name;
using lab_test::Kind;
using lab_test::peer;
using lab_test::Place;
using lab_test::routed;

const std::string STOPPED = "dropped: not routable: routing of its kind is off";
const std::string UNTRANSLATED = "dropped: no VLAN translation, and the port drops what misses";
const std::string OUTSIDE = "dropped: the port isn't in its VLAN";
const std::string NO_ROUTE = "dropped: no route to its destination";
// Of a port-channel that is kept its objects stay, and the trunk loses its members.
const std::string NO_MEMBER = "dropped: the trunk of the next hop doesn't exist or is empty";
const std::string NO_INTERFACE = "dropped: the L3 interface of the egress object doesn't exist";

class Forward : public lab_test::ForwardOnBothChips
{
protected:
    /** Does something with each kind of interface, one after the other. */
    template <class Work> void for_each_kind(Work work)
    {
        for (const Place &place : lab_test::places()) {
            SCOPED_TRACE(place.label);
            place_ = &place;
            work();
        }
    }
    const Place &place() const { return *place_; }
    bool is(std::string_view label) const { return label == place().label; }
    void does(const std::string &verb, const std::string &rest = "")
    {
        run({fmt::format("{} {}{}", verb, place().name, rest)});
    }
    const std::string &here(bool ip6) const { return ip6 ? place().ip6 : place().ip4; }
    static const std::string &there(bool ip6) { return ip6 ? peer().ip6 : peer().ip4; }

    void expect_out(const std::string &when)
    {
        for (const bool ip6 : {false, true}) {
            EXPECT_EQ(from_to(peer(), place(), ip6), routed(place(), there(ip6), here(ip6)))
                << when;
        }
    }
    void expect_both_ways(const std::string &when)
    {
        expect_out(when);
        for (const bool ip6 : {false, true}) {
            if (!is("tunnel")) {
                EXPECT_EQ(from_to(place(), peer(), ip6), routed(peer(), here(ip6), there(ip6)))
                    << when;
            }
        }
    }
    /** What comes in isn't routed: it is dropped, in an SVI's VLAN bridged. */
    void expect_not_in(const std::string &why, const std::string &when)
    {
        for (const bool ip6 : {false, true}) {
            const std::string bridged =
                fmt::format("Ethernet16 untagged: 02:00:00:00:00:fe > {}, {} > {} ttl 64, and cpu",
                            lab_test::OWN_MAC, here(ip6), there(ip6));
            if (!is("tunnel")) {
                EXPECT_EQ(from_to(place(), peer(), ip6), is("svi") ? bridged : why) << when;
            }
        }
    }
    void expect_neither_way(const std::string &when)
    {
        for (const bool ip6 : {false, true}) {
            EXPECT_EQ(from_to(peer(), place(), ip6), NO_ROUTE) << when;
        }
        expect_not_in(is("subinterface_of_port_channel") ? UNTRANSLATED : OUTSIDE, when);
    }

    /** A route to the interface's host as another layer has left it: its key and its next hop. */
    struct LeftBehind {
        chip::RouteKey key;
        chip::Egress next_hop;
    };
    LeftBehind route_to_here(bool ip6) const
    {
        const chip::RouteKey *longest = nullptr;
        for (const auto &[key, route] : hardware.chip.routes.all()) {
            const auto address = lab::config::parse_ip(here(ip6)).value();
            bool matches = key.ip6 == ip6 && key.vrf == 1;
            for (std::size_t i = 0; i < address.bytes.size(); ++i) {
                matches = matches && (address.bytes.at(i) & key.mask.at(i)) == key.net.at(i);
            }
            longest = matches && (longest == nullptr || longest->mask < key.mask) ? &key : longest;
        }
        const int egress = hardware.chip.routes.find(*longest)->next_hop;
        return {*longest, *hardware.chip.egresses.find(egress)};
    }
    void write_again(const LeftBehind &left)
    {
        int egress = 0;
        EXPECT_TRUE(hardware.chip.egresses.create(left.next_hop, egress).ok());
        EXPECT_TRUE(hardware.chip.routes.set(left.key, {.next_hop = egress}).ok());
    }

private:
    const Place *place_ = nullptr;
};

INSTANTIATE_TEST_SUITE_P(Chips, Forward, testing::Values(Kind::trident, Kind::trident2),
                         [](const auto &info) { return chip_name(info.param); });

} // namespace

TEST_P(Forward, FromAddToDeleteAndAgain)
{
    for_each_kind([&] {
        expect_both_ways("up");
        does("del");
        expect_neither_way("deleted");
        does("add");
        expect_both_ways("added again");
        does("del", " keep");
        expect_neither_way("kept");
        does("add");
        expect_both_ways("back under its number");
    });
}

TEST_P(Forward, DisableStopsWhatComesInUntilTheNextSet)
{
    for_each_kind([&] {
        does("disable");
        expect_not_in(STOPPED, "disabled");
        expect_out("disabled");
        does("set", " class on");
        expect_both_ways("set");
    });
}

TEST_P(Forward, RoutesThatOthersLeaveBehindDontBringADeletedInterfaceBack)
{
    for_each_kind([&] {
        for (const char *keep : {"", " keep"}) {
            const LeftBehind ip4 = route_to_here(false);
            const LeftBehind ip6 = route_to_here(true);
            EXPECT_EQ(ip4.next_hop.interface, iif(place().name));
            does("del", keep);
            write_again(ip4);
            write_again(ip6);
            const bool is_kept = *keep != '\0';
            const std::string &why = is("port_channel") && is_kept ? NO_MEMBER : NO_INTERFACE;
            EXPECT_EQ(from_to(peer(), place()), why) << keep;
            EXPECT_EQ(from_to(peer(), place(), true), why) << keep;
            expect_not_in(is("subinterface_of_port_channel") ? UNTRANSLATED : OUTSIDE, keep);
            does("add");
            expect_both_ways("added again");
        }
    });
}
