/*
 * restart_engine_test.cpp: the layer above after a restart: what a restore
 * brings back without a write to the chip, and what comes after it.
 */
#include "restart_run.h"

#include "chip/snapshot.h"
#include "l3lif/interface_numbers.h"
#include "rtifhal_trident.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <tuple>
#include <vector>

namespace
{

namespace chip = simswitch::chip;
namespace l3lif_lab = lab::l3lif;
using lab::l3lif::RestartMode;
using lab_test::example;
using lab_test::Kind;
using lab_test::Process;
using testing::Combine;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Values;

std::string name_of(Kind kind)
{
    return kind == Kind::trident ? "Trident" : "Trident2";
}

class Restore : public testing::TestWithParam<std::tuple<Kind, const char *>>
{
protected:
    Restore() : config(example(std::get<1>(GetParam()))) {}

    std::unique_ptr<Process> process() const
    {
        return std::make_unique<Process>(std::get<0>(GetParam()), folder.path / "state");
    }
    chip::Snapshot brought_up() const
    {
        const auto first = process();
        l3lif_lab::bring_all_up(config, first->layer);
        return chip::snapshot(first->hardware.chip);
    }

    lab_test::Folder folder;
    lab::config::Description config;
};

INSTANTIATE_TEST_SUITE_P(Examples, Restore,
                         Combine(Values(Kind::trident, Kind::trident2),
                                 Values("kinds", "leaf", "campus")),
                         [](const auto &info) {
                             return name_of(std::get<0>(info.param)) + "_" +
                                    std::get<1>(info.param);
                         });

/** The numbers of all interfaces of the configuration that are up. */
std::vector<int> numbers_of(const l3lif_lab::Layer &layer)
{
    std::vector<int> numbers;
    for (const auto &interface : layer.interfaces()) {
        numbers.push_back(interface->lif->iif());
    }
    return numbers;
}

bool is_channel_part(const l3lif_lab::LifPlan &plan)
{
    return plan.trunk != 0;
}

} // namespace

TEST_P(Restore, WritesNothingAndTakesEveryStoredNumber)
{
    const chip::Snapshot before = brought_up();
    const auto second = process();
    const auto result =
        l3lif_lab::restart(second->hardware, second->layer, RestartMode::restore, &config);
    EXPECT_EQ(result.chip_writes, 0U);
    EXPECT_EQ(chip::snapshot(second->hardware.chip), before);
    EXPECT_EQ(result.globals.code, 0);
    EXPECT_EQ(result.interfaces.size(), second->hardware.store.stored_interfaces().size());
    for (const auto &restored : result.interfaces) {
        const auto &plan = restored.interface->lif->plan();
        EXPECT_GE(restored.iif, l3lif_lab::FIRST_IIF) << plan.name;
        EXPECT_TRUE(restored.iif_taken) << plan.name;
        EXPECT_TRUE(restored.in_config) << plan.name;
        EXPECT_EQ(restored.was_replayed, plan.kind == lab::config::Kind::port) << plan.name;
        EXPECT_EQ(restored.is_vlan_svi, plan.kind == lab::config::Kind::svi) << plan.name;
        if (plan.chip_port != 0) {
            const int vlan = plan.vlan != 0 ? plan.vlan : 4094;
            const l3lif_lab::PortInVlan port{plan.chip_port, vlan};
            EXPECT_THAT(restored.ports, ElementsAre(port)) << plan.name;
            EXPECT_THAT(restored.cached, ElementsAre(port)) << plan.name;
        }
        const bool displaced =
            plan.kind == lab::config::Kind::subinterface && is_channel_part(plan);
        EXPECT_EQ(restored.request.errors().size(), displaced ? 1U : 0U) << plan.name;
        if (displaced) {
            EXPECT_THAT(restored.request.last_error(), HasSubstr("Error - PC tree empty"));
        }
    }
}

TEST_P(Restore, ComesToTheSameWithoutAConfiguration)
{
    const chip::Snapshot before = brought_up();
    const auto second = process();
    const auto result = l3lif_lab::restart(second->hardware, second->layer, RestartMode::restore);
    EXPECT_EQ(result.chip_writes, 0U);
    EXPECT_EQ(chip::snapshot(second->hardware.chip), before);
    EXPECT_FALSE(result.interfaces.empty());
    for (const auto &restored : result.interfaces) {
        EXPECT_TRUE(restored.iif_taken) << restored.interface->lif->plan().name;
        EXPECT_FALSE(restored.in_config);
        EXPECT_FALSE(restored.was_replayed);
    }
}

TEST_P(Restore, WhatComesAfterItEndsInTheSwitchOfAFreshStart)
{
    chip::Snapshot before = brought_up();
    const auto second = process();
    l3lif_lab::restart(second->hardware, second->layer, RestartMode::restore, &config);
    const auto completion = l3lif_lab::complete(second->hardware, second->layer, config);
    for (const auto &late : completion.requests) {
        EXPECT_FALSE(late.failed) << late.asked << ": " << late.request.last_error();
    }
    chip::Snapshot after = chip::snapshot(second->hardware.chip);
    const bool has_macs = !second->layer.virtual_macs().empty();
    EXPECT_EQ(before == after, !has_macs) << "virtual MACs get a second station";
    const auto is_station = [](const std::string &line) { return line.starts_with("station "); };
    std::erase_if(before, is_station);
    std::erase_if(after, is_station);
    EXPECT_EQ(chip::changes(before, after), std::vector<std::string>{});

    auto numbers = numbers_of(second->layer);
    EXPECT_EQ(numbers.size(), lab::l3lif::plans_of(config).size());
    EXPECT_EQ(std::set<int>(numbers.begin(), numbers.end()).size(), numbers.size())
        << "each has a number of its own";
    for (const int iif : numbers) {
        EXPECT_TRUE(l3lif_lab::is_set(l3lif_l3iif_table, iif)) << iif;
    }
}

TEST_P(Restore, ASecondOneChangesNothing)
{
    const chip::Snapshot before = brought_up();
    std::vector<int> numbers;
    l3iif_bitmap_t table = {};
    for (int i = 0; i < 2; ++i) {
        const auto next = process();
        const auto result =
            l3lif_lab::restart(next->hardware, next->layer, RestartMode::restore, &config);
        EXPECT_EQ(result.chip_writes, 0U);
        if (i == 0) {
            numbers = numbers_of(next->layer);
            table = l3lif_l3iif_table;
        }
        EXPECT_EQ(numbers_of(next->layer), numbers);
        EXPECT_TRUE(std::ranges::equal(l3lif_l3iif_table.bits, table.bits));
        EXPECT_EQ(chip::snapshot(next->hardware.chip), before);
    }
}

TEST_P(Restore, InterfacesCanBeTakenDownAfterIt)
{
    brought_up();
    const auto second = process();
    l3lif_lab::restart(second->hardware, second->layer, RestartMode::restore, &config);
    l3lif_lab::complete(second->hardware, second->layer, config);
    second->layer.take_down();
    EXPECT_EQ(second->hardware.chip.l3_interfaces.size(), 0U);
    EXPECT_EQ(second->hardware.chip.l3_ingresses.size(), 0U);
}

namespace
{

class RestoreOfKinds : public testing::Test
{
protected:
    std::unique_ptr<Process> process() const
    {
        return std::make_unique<Process>(Kind::trident, folder.path / "state");
    }

    lab_test::Folder folder;
    lab::config::Description config = example("kinds");
};

} // namespace

TEST_F(RestoreOfKinds, NumbersHeldBackComeBack)
{
    int held_back = 0;
    {
        const auto first = process();
        l3lif_lab::bring_all_up(config, first->layer);
        auto *tunnel = first->layer.routed().find("MuxTunnel0");
        held_back = tunnel->lif->iif();
        first->layer.take_down(*tunnel, false);
    }
    const auto second = process();
    const auto result =
        l3lif_lab::restart(second->hardware, second->layer, RestartMode::restore, &config);
    EXPECT_THAT(result.preserved, ElementsAre(held_back));
    EXPECT_TRUE(l3lif_lab::is_set(l3lif_l3iif_table, held_back));
    EXPECT_EQ(result.interfaces.size(), 5U);
    std::uint32_t next = 0;
    ASSERT_EQ(rtifhal_alloc_l3iif(&next), 0);
    EXPECT_NE(static_cast<int>(next), held_back);
}

TEST_F(RestoreOfKinds, OwnerTakesANumberThatWasHeldBack)
{
    int iif = 0;
    {
        const auto first = process();
        l3lif_lab::bring_all_up(config, first->layer);
        iif = first->layer.routed().find("Ethernet0")->lif->iif();
        // As a process leaves it that is killed in a delete, between the two writes to the store.
        simswitch::services::GlobalConfig globals{};
        const auto n = static_cast<std::size_t>(iif);
        globals.at(simswitch::services::GLOBAL_CONFIG_PRESERVE + n / 8) =
            static_cast<unsigned char>(0x80U >> (n % 8));
        ASSERT_TRUE(first->hardware.store.store_global_config(globals.data()).ok());
    }
    const auto second = process();
    const auto result =
        l3lif_lab::restart(second->hardware, second->layer, RestartMode::restore, &config);
    EXPECT_THAT(result.preserved, ElementsAre(iif));
    EXPECT_TRUE(result.interfaces.front().was_preserved);
    EXPECT_FALSE(l3lif_lab::is_set(l3lif_l3iif_table_preserve, iif));
    EXPECT_TRUE(l3lif_lab::is_set(l3lif_l3iif_table, iif));
}

TEST_F(RestoreOfKinds, KeptInterfaceIsNotStoredAndItsNumberIsFree)
{
    int kept = 0;
    {
        const auto first = process();
        l3lif_lab::bring_all_up(config, first->layer);
        auto *port = first->layer.routed().find("Ethernet0");
        kept = port->lif->iif();
        first->layer.take_down(*port, true);
    }
    const auto second = process();
    l3lif_lab::restart(second->hardware, second->layer, RestartMode::restore, &config);
    EXPECT_EQ(second->layer.routed().find("Ethernet0"), nullptr);
    EXPECT_FALSE(l3lif_lab::is_set(l3lif_l3iif_table, kept));
    const auto completion = l3lif_lab::complete(second->hardware, second->layer, config);
    EXPECT_TRUE(completion.ok());
    EXPECT_EQ(second->layer.routed().find("Ethernet0")->lif->iif(), kept);
}

TEST_F(RestoreOfKinds, LostRecordIsMadeUpForFromTheChip)
{
    chip::Snapshot before;
    {
        const auto first = process();
        l3lif_lab::bring_all_up(config, first->layer);
        before = chip::snapshot(first->hardware.chip);
        for (const auto &stored : first->hardware.store.stored_interfaces()) {
            ASSERT_TRUE(first->hardware.store.delete_interface(stored.ifindex).ok());
        }
    }
    const auto second = process();
    const auto result =
        l3lif_lab::restart(second->hardware, second->layer, RestartMode::restore, &config);
    EXPECT_THAT(result.interfaces, IsEmpty());
    const auto completion = l3lif_lab::complete(second->hardware, second->layer, config);
    std::vector<std::string> asked;
    for (const auto &late : completion.requests) {
        EXPECT_FALSE(late.failed) << late.asked << ": " << late.request.last_error();
        asked.push_back(late.asked);
    }
    EXPECT_THAT(asked, Contains("take Ethernet0 over from the chip"));
    EXPECT_THAT(asked, Contains("take PortChannel0001 over from the chip"));
    // No port or VLAN of the chip names a tunnel.
    EXPECT_THAT(asked, Contains("clear the objects 9, which nobody owns"));
    EXPECT_THAT(asked, Contains("add MuxTunnel0"));
    EXPECT_EQ(chip::snapshot(second->hardware.chip), before);
}

TEST_F(RestoreOfKinds, FastAndColdNeedAConfiguration)
{
    const auto first = process();
    for (const RestartMode mode : {RestartMode::fast, RestartMode::cold}) {
        EXPECT_THROW(l3lif_lab::restart(first->hardware, first->layer, mode),
                     std::invalid_argument);
    }
}

TEST_F(RestoreOfKinds, ColdAndFastBeginEmptyAndBringAllUpAnew)
{
    chip::Snapshot before;
    {
        const auto first = process();
        l3lif_lab::bring_all_up(config, first->layer);
        before = chip::snapshot(first->hardware.chip);
    }
    for (const RestartMode mode : {RestartMode::fast, RestartMode::cold}) {
        const auto next = process();
        const auto result = l3lif_lab::restart(next->hardware, next->layer, mode, &config);
        EXPECT_GT(result.chip_writes, 100U);
        EXPECT_EQ(chip::snapshot(next->hardware.chip), before);
        EXPECT_EQ(next->hardware.store.stored_interfaces().size(), 6U);
        const bool fast = mode == RestartMode::fast;
        EXPECT_EQ(result.steps.size(), fast ? 7U : 0U);
        EXPECT_EQ(result.adjacencies.size(), fast ? 7U : 0U);
        EXPECT_EQ(next->hardware.directory.updates().empty(), !fast);
    }
}
