/*
 * page_data_test.cpp: what a page tells of the chip, beside the chip itself.
 */
#include "tools/page_run.h"

#include "commands/up.h"
#include "config/reader.h"
#include "page/document.h"
#include "page/gather.h"
#include "page/samples.h"
#include "session/state.h"
#include "support/load_time_state.h"

#include "rtifhal_trident.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <set>

namespace
{

using lab::page::Page;
using simswitch::chip::Kind;

/** A configuration that is brought up, and its page. */
class PageSwitch
{
public:
    explicit PageSwitch(const std::string &example, Kind chip = Kind::trident,
                        simswitch::Fault fault = {})
        : hardware({.chip = chip}), state{hardware}
    {
        hardware.chip.track_authors();
        if (!fault.function.empty()) {
            hardware.journal.arm(std::move(fault));
        }
        state.config = lab::config::read_config(page_test::EXAMPLES + example);
        requests = lab::page::bring_up(state);
    }

    Page page(std::size_t call_limit = 100000)
    {
        const auto result = lab::commands::result_of(hardware, *state.config, state.layer);
        return lab::page::gather(state, result, &requests, call_limit);
    }

private:
    struct Reset {
        Reset() { rtifhal_test::reset_library(); }
    } reset_;

public:
    simswitch::Switch hardware;
    lab::session::State state;
    lab::page::Requests requests;
};

const lab::page::InterfaceLines &page_interface(const Page &page, const std::string &name)
{
    const auto found = std::ranges::find(page.interfaces, name, &lab::page::InterfaceLines::name);
    EXPECT_NE(found, page.interfaces.end()) << name;
    return *found;
}

/** "l3_ingress 5 -same id-> l3_interface 5" for each tie of an interface. */
std::set<std::string> page_ties(const Page &page, const std::string &name)
{
    std::set<std::string> ties;
    const auto &graph = page_interface(page, name).graph;
    const auto text = [&](std::size_t node) {
        const auto &object = page.objects.at(graph.nodes.at(node).object);
        return object.table + " " + object.id;
    };
    for (const auto &tie : graph.ties) {
        ties.insert(fmt::format("{} -{}-> {}", text(tie.from), tie.what, text(tie.to)));
    }
    return ties;
}

/** Numbers of the writes that a flush reports: 5 for "5 writes, 1 refused: …". */
std::size_t page_writes_told(const std::string &reason)
{
    return reason.empty() ? 0 : std::strtoul(reason.c_str(), nullptr, 10);
}

} // namespace

TEST(PageData, EachFlushTakesTheWritesThatThePageSaysWait)
{
    for (const auto &[example, chip] : {std::pair{"everything.json", Kind::trident},
                                        {"everything.json", Kind::trident2},
                                        {"campus.json", Kind::trident}}) {
        PageSwitch made(example, chip);
        const auto &records = made.hardware.journal.records();
        std::size_t flushes = 0;
        for (const auto &request : made.requests.journal) {
            std::size_t waiting = 0;
            for (std::size_t i = request.first; i < request.end; ++i) {
                waiting += lab::page::leaves_a_write(records[i]) ? 1U : 0U;
                if (records[i].function == "fwmpd_trident_batch_flush") {
                    EXPECT_EQ(page_writes_told(records[i].reason), waiting)
                        << request.name << ": " << records[i].sequence;
                    waiting = 0;
                    ++flushes;
                }
            }
        }
        EXPECT_GT(flushes, 100U);
    }
}

TEST(PageData, OccupancyIsWhatTheChipHolds)
{
    PageSwitch made("everything.json", Kind::trident2);
    const auto &chip = made.hardware.chip;
    std::map<std::string, std::pair<std::size_t, std::size_t>> wanted = {
        {"interface_numbers", {61, 7680 - 3}},
        {"stations", {chip.stations.all().size(), 1024}},
        {"l3_interfaces", {chip.l3_interfaces.all().size(), 8192}},
        {"l3_ingresses", {chip.l3_ingresses.all().size(), 8192}},
        {"vlans", {chip.vlans.all().size(), 4095}},
        {"stgs", {chip.stgs.all().size() - 1, 256}},
        {"vlan_translations", {chip.vlan_translations.all().size(), 32768}},
        {"trunks", {chip.trunks.all().size(), 1024}},
        {"tunnels", {chip.tunnels.all().size(), 512}},
        {"egresses", {chip.egresses.all().size(), 49152}},
        {"multipath_groups", {chip.multipath_groups.all().size(), 1024}},
        {"routes", {chip.routes.all().size(), 16384}},
        {"field_groups", {chip.field_groups.all().size(), 16}},
        {"field_entries", {chip.field_entries.all().size(), 4096}},
        {"vxlan_ports", {0, 16384}},
    };
    for (const auto &table : made.page().tables) {
        const auto found = wanted.find(table.name);
        ASSERT_NE(found, wanted.end()) << table.name;
        EXPECT_EQ(table.used, found->second.first) << table.name;
        EXPECT_EQ(table.size, found->second.second) << table.name;
        wanted.erase(found);
    }
    EXPECT_TRUE(wanted.empty());
    EXPECT_EQ(made.hardware.chip.l3_interfaces.size(), 61U);
}

TEST(PageData, GraphOfAPortGoesFromItToTheNextHops)
{
    PageSwitch made("kinds.json");
    const auto ties = page_ties(made.page(), "Ethernet0");
    EXPECT_TRUE(ties.contains("port port 1 -port control 67-> l3_ingress 3"));
    EXPECT_TRUE(ties.contains("port port 1 -untagged-> vlan 4094"));
    EXPECT_TRUE(ties.contains("l3_ingress 3 -same id-> l3_interface 3"));
    EXPECT_TRUE(ties.contains("l3_ingress 3 -routes for-> station 1"));
    EXPECT_TRUE(std::ranges::any_of(ties, [](const std::string &tie) {
        return tie.starts_with("l3_interface 3 -next hop-> egress ");
    }));
}

TEST(PageData, GraphOfAPortChannelHasItsMembers)
{
    PageSwitch made("kinds.json");
    const auto ties = page_ties(made.page(), "PortChannel0001");
    EXPECT_TRUE(ties.contains("port port 3 -member-> trunk trunk 1"));
    EXPECT_TRUE(ties.contains("port port 4 -member-> trunk trunk 1"));
    EXPECT_TRUE(ties.contains("trunk trunk 1 -port control 67-> l3_ingress 5"));
    EXPECT_TRUE(ties.contains("trunk trunk 1 -untagged-> vlan 4094"));
}

TEST(PageData, GraphOfASubinterfaceGoesByItsTranslation)
{
    PageSwitch made("kinds.json");
    const Page page = made.page();
    const auto ties = page_ties(page, "Ethernet4.10");
    EXPECT_TRUE(ties.contains("port port 2 -looked up-> vlan_translation Ethernet4 VLAN 10"));
    EXPECT_TRUE(ties.contains("vlan_translation Ethernet4 VLAN 10 -names it-> l3_ingress 7"));
    EXPECT_TRUE(ties.contains("port port 2 -tagged-> vlan 10"));
    const auto on_trunk = page_ties(page, "PortChannel0001.20");
    EXPECT_TRUE(
        on_trunk.contains("trunk trunk 1 -looked up-> vlan_translation PortChannel0001 VLAN 20"));
}

TEST(PageData, GraphOfAVlanInterfaceGoesByItsVlan)
{
    PageSwitch made("kinds.json");
    const auto ties = page_ties(made.page(), "Vlan100");
    EXPECT_TRUE(ties.contains("vlan 100 -names it-> l3_ingress 6"));
    EXPECT_TRUE(std::ranges::any_of(ties, [](const std::string &tie) {
        return tie.starts_with("port port 5 -") && tie.ends_with("-> vlan 100");
    }));
}

TEST(PageData, GraphOfAPrimaryHasItsSecondaryAndTheStationsThere)
{
    PageSwitch made("packets.json");
    const auto ties = page_ties(made.page(), "Vlan100");
    EXPECT_TRUE(ties.contains("vlan 100 -names it-> l3_ingress 9"));
    EXPECT_TRUE(ties.contains("vlan 101 -secondary-> l3_ingress 9"));
    EXPECT_TRUE(ties.contains("port port 7 -untagged-> vlan 101"));
    EXPECT_FALSE(ties.contains("port port 7 -untagged-> vlan 100"));
    for (const auto &[id, station] : made.hardware.chip.stations.all()) {
        if (station.vlan == 100 || station.vlan == 101) {
            EXPECT_TRUE(ties.contains("l3_ingress 9 -routes for-> station " + std::to_string(id)));
        }
    }
}

TEST(PageData, NumbersOfTheLibraryAreThoseThatItCanGiveOut)
{
    for (const auto &[kind, size] :
         {std::pair{Kind::trident, 3584U - 3U}, {Kind::trident2, 7680U - 3U}}) {
        PageSwitch made("kinds.json", kind);
        EXPECT_EQ(made.page().tables.at(0).used, 7U);
        EXPECT_EQ(made.page().tables.at(0).size, size);
        // Taken one by one they end where the table is full, those that are held back last.
        std::uint32_t iif = 0;
        for (std::size_t left = size - 7U; left > 0; --left) {
            ASSERT_EQ(rtifhal_alloc_l3iif(&iif), 0);
        }
        EXPECT_EQ(made.page().tables.at(0).used, size);
        EXPECT_EQ(rtifhal_alloc_l3iif(&iif), -1);
        ASSERT_EQ(rtifhal_free_l3iif(static_cast<int>(iif), 1), 0);
        EXPECT_EQ(made.page().tables.at(0).used, size - 1U);
        EXPECT_EQ(rtifhal_alloc_l3iif(&iif), 0);
    }
}

TEST(PageData, GraphOfATunnelHasItsInitiatorOrNone)
{
    PageSwitch made("kinds.json");
    const Page page = made.page();
    const auto ties = page_ties(page, "MuxTunnel0");
    EXPECT_TRUE(ties.contains("l3_ingress 9 -same id-> l3_interface 9"));
    EXPECT_TRUE(std::ranges::none_of(page_interface(page, "MuxTunnel0").graph.nodes,
                                     [](const auto &node) { return node.column == 2; }));
    const bool has_initiator = made.hardware.chip.tunnels.find(9) != nullptr;
    EXPECT_EQ(std::ranges::any_of(
                  ties, [](const std::string &tie) { return tie.find("-wraps by->") != tie.npos; }),
              has_initiator);
}

TEST(PageData, ObjectsNameTheRequestsThatWroteThem)
{
    PageSwitch made("kinds.json");
    const Page page = made.page();
    const auto vlan = std::ranges::find_if(page.objects, [](const auto &object) {
        return object.table == "vlan" && object.id == "4094";
    });
    ASSERT_NE(vlan, page.objects.end());
    EXPECT_EQ(vlan->authors, (std::vector<std::string>{"add Ethernet0", "add Ethernet4",
                                                       "add Ethernet8 to PortChannel0001"}));
    EXPECT_EQ(vlan->authors.size() + vlan->more_authors,
              made.hardware.chip.authors.of("vlan", "4094").size());
}

TEST(PageData, AFailedInterfaceTellsWhyAndKeepsItsCallsLongest)
{
    PageSwitch made(
        "kinds.json", Kind::trident,
        {.function = "rtifhal_bcm_l3_ingress_create",
         .code = -6,
         .when = [](std::string_view arguments) { return arguments.ends_with(", 6"); }});
    const Page page = made.page(60);
    const auto &failed = page_interface(page, "Vlan100");
    EXPECT_EQ(failed.state, "failed");
    EXPECT_NE(failed.error, "");
    EXPECT_TRUE(failed.requests.front().kept);
    EXPECT_FALSE(page_interface(page, "Ethernet0").requests.front().kept);
    EXPECT_EQ(page.without_calls, 6U);
    const auto refused = std::ranges::count_if(page.call_lines, [](const auto &call) {
        return call.result == "-6" && call.reason == "injected";
    });
    EXPECT_EQ(refused, 1);
}

TEST(PageData, ProgressAtTheErrorLevelIsNoError)
{
    PageSwitch made("kinds.json");
    const Page page = made.page();
    EXPECT_TRUE(std::ranges::none_of(page.messages, &lab::page::MessageLine::is_error));
    const auto created = std::ranges::find_if(page.messages, [](const auto &message) {
        return message.text.starts_with("calling bcm_trunk_create_id(");
    });
    EXPECT_NE(created, page.messages.end());
}

TEST(PageData, SamplePacketsEndWhereThePipelineTakesThem)
{
    PageSwitch made("kinds.json");
    Page page = made.page();
    const auto writes = made.hardware.chip.writes;
    lab::page::add_samples(made.state, page);
    EXPECT_EQ(made.hardware.chip.writes, writes);

    for (const char *name : {"Ethernet0", "PortChannel0001", "Vlan100", "Ethernet4.10"}) {
        const auto &samples = page_interface(page, name).samples;
        ASSERT_EQ(samples.size(), 2U) << name;
        EXPECT_EQ(samples[0].what, "to its own address");
        EXPECT_EQ(samples[0].fate, "cpu") << samples[0].summary;
        EXPECT_TRUE(samples[1].what.starts_with("to a host behind ")) << samples[1].what;
        for (const auto &sample : samples) {
            EXPECT_GT(sample.lines.size(), 5U);
            EXPECT_EQ(sample.lines.front().stage, "frame");
            const auto interface =
                std::ranges::find(sample.lines, "interface", &lab::page::SampleLine::stage);
            ASSERT_NE(interface, sample.lines.end());
            EXPECT_EQ(interface->mark, "hit");
            EXPECT_EQ(interface->id, std::to_string(page_interface(page, name).iif));
            EXPECT_TRUE(interface->text.starts_with(name)) << interface->text;
        }
    }
    EXPECT_TRUE(page_interface(page, "MuxTunnel0").samples.empty());
}

TEST(PageData, SamplePacketsGoToAHostThatIsKnown)
{
    PageSwitch made("packets.json");
    Page page = made.page();
    lab::page::add_samples(made.state, page);
    const auto &samples = page_interface(page, "Ethernet0").samples;
    ASSERT_EQ(samples.size(), 2U);
    EXPECT_EQ(samples[1].fate, "sent") << samples[1].summary;
    const auto egress =
        std::ranges::find(samples[1].lines, "egress", &lab::page::SampleLine::stage);
    ASSERT_NE(egress, samples[1].lines.end());
    EXPECT_TRUE(egress->author.starts_with("neighbor ")) << egress->author;
}
