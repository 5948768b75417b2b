/*
 * check_test.cpp: `rtif check`: nothing to tell of a folder that is in order,
 * and each kind of disorder with its cause.
 */
#include "restart_run.h"

#include "check/check.h"
#include "l3lif/restart_state.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <tuple>
#include <vector>

namespace
{

namespace chip = simswitch::chip;
using lab_test::bytes_of;
using lab_test::example;
using lab_test::Kind;
using lab_test::Process;
using testing::AllOf;
using testing::Combine;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Values;

/** The differences that a check finds, as "what; cause". */
std::vector<std::string> differences(Kind kind, const std::filesystem::path &state,
                                     const lab::config::Description *config)
{
    Process process(kind, state);
    std::vector<std::string> lines;
    for (const auto &found : lab::check::check(process.hardware, config).differences) {
        lines.push_back(found.what + "; " + found.cause);
    }
    return lines;
}

class CleanCheck : public testing::TestWithParam<std::tuple<Kind, const char *>>
{
protected:
    CleanCheck() : kind(std::get<0>(GetParam())), config(example(std::get<1>(GetParam()))) {}

    std::vector<std::string> found() const { return differences(kind, state, &config); }

    Kind kind;
    lab::config::Description config;
    lab_test::Folder folder;
    std::filesystem::path state = folder.path / "state";
};

INSTANTIATE_TEST_SUITE_P(
    Examples, CleanCheck,
    Combine(Values(Kind::trident, Kind::trident2), Values("kinds", "leaf", "campus", "everything")),
    [](const auto &info) {
        return std::string(std::get<0>(info.param) == Kind::trident ? "Trident_" : "Trident2_") +
               std::get<1>(info.param);
    });

} // namespace

TEST_P(CleanCheck, BroughtUpAndRestoredItFindsNothing)
{
    {
        Process first(kind, state);
        lab::l3lif::bring_all_up(config, first.layer);
    }
    EXPECT_THAT(found(), IsEmpty()) << "brought up";
    EXPECT_THAT(differences(kind, state, nullptr), IsEmpty()) << "without the configuration";
    {
        Process second(kind, state);
        lab::l3lif::restart(second.hardware, second.layer, lab::l3lif::RestartMode::restore,
                            &config);
    }
    EXPECT_THAT(found(), IsEmpty()) << "restored";
}

TEST_P(CleanCheck, EachSecondInterfaceDeletedItFindsNothing)
{
    for (const bool keep : {true, false}) {
        {
            Process next(kind, state);
            lab::l3lif::restart(next.hardware, next.layer, lab::l3lif::RestartMode::cold, &config);
            for (const auto &plan :
                 lab::l3lif::virtual_mac_plans_of(config, lab::l3lif::plans_of(config))) {
                next.layer.remove_virtual_mac(plan);
            }
            const auto &interfaces = next.layer.interfaces();
            std::size_t turn = 0;
            for (auto it = interfaces.rbegin(); it != interfaces.rend(); ++it) {
                const bool is_main = !next.layer.routed().subinterfaces_of(**it).empty();
                if (turn++ % 2 == 0 && !is_main) {
                    next.layer.take_down(**it, keep);
                }
            }
        }
        EXPECT_THAT(found(), IsEmpty()) << (keep ? "kept" : "deleted");
    }
}

namespace
{

class Disorder : public testing::Test
{
protected:
    Disorder()
    {
        Process first(Kind::trident, state);
        lab::l3lif::bring_all_up(config, first.layer);
    }

    /** Brings disorder into the folder, and gives what a check finds. */
    std::vector<std::string> after(const std::function<void(simswitch::Switch &)> &change) const
    {
        {
            simswitch::Switch hardware({.state_dir = state});
            change(hardware);
        }
        return differences(Kind::trident, state, &config);
    }

    lab::config::Description config = example("kinds");
    lab_test::Folder folder;
    std::filesystem::path state = folder.path / "state";
};

constexpr std::uint32_t ETHERNET0 = 0x10000000;

/** A record of a number in the store. */
void store(simswitch::Switch &hardware, std::uint32_t ifindex, std::uint16_t iif,
           std::uint16_t mtu = 9100)
{
    l3_pd pd{.brcm_prog_complete = 0,
             .l3intf_id = iif,
             .prev_l3_if_index = 0,
             .acl_qos_label_ingress = 0};
    l3lif_pd_ctxt context{.unused_owned = nullptr, .l3_pd = &pd};
    l3lif_pi_ctxt properties{};
    properties.mtu = mtu;
    ::l3lif lif{};
    lif.ifindex = ifindex;
    lif.int_vlan = 4094;
    lif.l3lif_pd_ctxt = &context;
    lif.l3lif_pi_ctxt = &properties;
    ASSERT_TRUE(hardware.store.store_interface(lif).ok());
}

} // namespace

TEST_F(Disorder, SubinterfaceOfAPortChannelWithALabelIsStoredTwice)
{
    {
        Process process(Kind::trident, state);
        lab::l3lif::restart(process.hardware, process.layer, lab::l3lif::RestartMode::cold,
                            &config);
        const lab::l3lif::Interface *labelled = process.layer.routed().find("PortChannel0001.20");
        ASSERT_NE(labelled, nullptr);
        store(process.hardware, labelled->lif->plan().ifindex,
              static_cast<std::uint16_t>(labelled->lif->iif()));
    }
    Process process(Kind::trident, state);
    const auto result = lab::check::check(process.hardware, &config);
    EXPECT_THAT(result.differences, IsEmpty());
    EXPECT_THAT(result.notes, Contains(HasSubstr("stored under its own ifindex too")));
}

TEST_F(Disorder, InterfaceThatNobodyStored)
{
    const auto found = after([](simswitch::Switch &hardware) {
        ASSERT_TRUE(hardware.store.delete_interface(ETHERNET0).ok());
    });
    EXPECT_THAT(found, Contains(AllOf(HasSubstr("L3 interface 3 (VLAN 4094, VRF 1) is in the chip, "
                                                "and no record is stored"),
                                      HasSubstr("its store failed"))));
    EXPECT_THAT(found, Contains(HasSubstr("port 1: its control 67 names ingress object 3, which "
                                          "nobody stored")));
}

TEST_F(Disorder, RecordWithoutAnL3Interface)
{
    EXPECT_THAT(after([](simswitch::Switch &hardware) {
                    ASSERT_TRUE(hardware.chip.l3_interfaces.remove(3).ok());
                }),
                Contains(AllOf(HasSubstr("Ethernet0: stored under number 3, and the chip has no "
                                         "such L3 interface"),
                               HasSubstr("killed in its add"))));
}

TEST_F(Disorder, OtherPropertiesInTheChip)
{
    EXPECT_THAT(after([](simswitch::Switch &hardware) { store(hardware, ETHERNET0, 3, 1400); }),
                ElementsAre(AllOf(HasSubstr("Ethernet0: its L3 interface 3 has MTU 9100 in the "
                                            "chip, 1400 in the store"),
                                  HasSubstr("a property was changed"))));
}

TEST_F(Disorder, IngressObjectThatIsGoneOrAnothers)
{
    EXPECT_THAT(after([](simswitch::Switch &hardware) {
                    ASSERT_TRUE(hardware.chip.l3_ingresses.remove(3).ok());
                }),
                Contains(HasSubstr("Ethernet0: the chip has no L3 ingress object 3")));
    EXPECT_THAT(after([](simswitch::Switch &hardware) {
                    hardware.wrappers.set_port_control(1, chip::PORT_CONTROL_INGRESS, 4);
                    hardware.end_request();
                }),
                Contains(HasSubstr("Ethernet0: stored under number 3, and the chip counts its "
                                   "frames to ingress object 4")));
}

TEST_F(Disorder, PortAndVlanThatNameWhatNobodyHas)
{
    EXPECT_THAT(after([](simswitch::Switch &hardware) {
                    hardware.wrappers.set_port_control(99, chip::PORT_CONTROL_INGRESS, 77);
                    hardware.end_request();
                }),
                Contains(HasSubstr("port 99: its control 67 names ingress object 77, which isn't "
                                   "there")));
    EXPECT_THAT(after([](simswitch::Switch &hardware) {
                    bcm_vlan_control_vlan_t controls = *hardware.wrappers.vlan_controls(101);
                    controls.vc_ingress_if = 88;
                    hardware.wrappers.set_vlan_controls(101, controls);
                    hardware.end_request();
                }),
                Contains(HasSubstr("VLAN 101: its controls name ingress object 88")));
}

TEST_F(Disorder, TranslationThatLeadsNowhere)
{
    const auto found = after([](simswitch::Switch &hardware) {
        ASSERT_TRUE(hardware.chip.vlan_translations
                        .create({0x8000009, chip::KEY_TYPE_PORT_OUTER, 999, chip::ANY_INNER_VLAN},
                                {998, 66, 2, 0})
                        .ok());
    });
    EXPECT_THAT(found, Contains(HasSubstr("translation of VLAN 999 on port 9: leads to ingress "
                                          "object 66, which isn't there")));
    EXPECT_THAT(found, Contains(HasSubstr("translation of VLAN 999 on port 9: there is no VLAN "
                                          "999")));
    EXPECT_THAT(found, Contains(HasSubstr("there is no VLAN 998")));
}

TEST_F(Disorder, VlanWithPortsThatNobodyUses)
{
    EXPECT_THAT(after([](simswitch::Switch &hardware) {
                    ASSERT_TRUE(hardware.wrappers.create_vlan(700).ok());
                    hardware.wrappers.add_vlan_ports(700, {0, 30, 31}, {});
                    hardware.wrappers.add_vlan_ports(4094, {33}, {33});
                    hardware.end_request();
                }),
                ElementsAre(HasSubstr("VLAN 700: neither an interface nor the L2 side uses it on "
                                      "ports {30,31}"),
                            HasSubstr("VLAN 4094: neither an interface nor the L2 side uses it on "
                                      "ports {33}")));
}

TEST_F(Disorder, VlanThatTheChipLost)
{
    EXPECT_THAT(
        after([](simswitch::Switch &hardware) { ASSERT_TRUE(hardware.host.vlans.add(801).ok()); }),
        ElementsAre(HasSubstr("VLAN 801: the forwarding manager knows it, the chip "
                              "doesn't")));
}

TEST_F(Disorder, OneNumberForTwo)
{
    EXPECT_THAT(after([](simswitch::Switch &hardware) { store(hardware, 0x11e00000, 3); }),
                Contains(AllOf(HasSubstr("are both stored under number 3"),
                               HasSubstr("handed out twice"))));
}

TEST_F(Disorder, NumberHeldBackThatIsOwnedOrInTheChip)
{
    const auto hold_back = [](simswitch::Switch &hardware) {
        simswitch::services::GlobalConfig globals{};
        globals.at(simswitch::services::GLOBAL_CONFIG_PRESERVE) = 0x80U >> 3U;
        ASSERT_TRUE(hardware.store.store_global_config(globals.data()).ok());
    };
    EXPECT_THAT(after(hold_back), ElementsAre(AllOf(HasSubstr("Ethernet0: the stored configuration "
                                                              "holds its number 3 back"),
                                                    HasSubstr("killed in its delete"))));
    EXPECT_THAT(after([](simswitch::Switch &hardware) {
                    ASSERT_TRUE(hardware.store.delete_interface(ETHERNET0).ok());
                }),
                Contains(AllOf(HasSubstr("L3 interface 3"), HasSubstr("its number is held back"),
                               HasSubstr("killed in its delete"))));
}

TEST_F(Disorder, StationsTwiceOrWithoutARoute)
{
    const auto add = [](simswitch::Switch &hardware, std::uint16_t vlan) {
        int id = 0;
        const chip::Station station{
            0x3c, {2, 0, 0, 0, 1, 1}, {255, 255, 255, 255, 255, 255}, vlan, 0xfff, 0, 0};
        ASSERT_TRUE(hardware.chip.stations.create(station, id).ok());
    };
    EXPECT_THAT(after([&](simswitch::Switch &hardware) {
                    add(hardware, 101);
                    add(hardware, 777);
                    add(hardware, 100);
                    add(hardware, 100);
                }),
                ElementsAre(AllOf(HasSubstr("are both MAC 02:00:00:00:01:01 in VLAN 100"),
                                  HasSubstr("added again after a restart")),
                            HasSubstr("VLAN 101 isn't routed"), HasSubstr("there is no VLAN 777")));
}

TEST_F(Disorder, CachedControlsThatWereNotWritten)
{
    EXPECT_THAT(
        after([](simswitch::Switch &hardware) {
            bcm_vlan_control_vlan_t controls = *hardware.wrappers.vlan_controls(101);
            controls.vc_vrf = 7;
            hardware.wrappers.set_vlan_controls(101, controls);
            hardware.save();
            hardware.wrappers.drop_pending();
        }),
        ElementsAre(HasSubstr("VLAN 101: VRF 0x0 in the chip, 0x7 in the wrappers' cache")));
}

TEST_F(Disorder, MemberThatIsNotInItsTrunk)
{
    const auto leaf = example("leaf");
    const std::filesystem::path other = folder.path / "leaf";
    {
        Process first(Kind::trident, other);
        lab::l3lif::bring_all_up(leaf, first.layer);
        auto *channel = first.layer.routed().find("PortChannel0002");
        const auto trunk = channel->lif->plan().trunk;
        auto record = *first.hardware.chip.trunks.find(trunk);
        record.members.erase(record.members.begin());
        ASSERT_TRUE(first.hardware.wrappers.set_trunk(trunk, record).ok());
        first.hardware.end_request();
    }
    EXPECT_THAT(differences(Kind::trident, other, &leaf),
                Contains(HasSubstr("PortChannel0002: stored with port")));
}

/** Names and contents of all files of a folder. */
static std::map<std::string, std::string> contents(const std::filesystem::path &folder)
{
    std::map<std::string, std::string> files;
    for (const auto &file : std::filesystem::directory_iterator(folder)) {
        files[file.path().filename().string()] = bytes_of(file.path());
    }
    return files;
}

TEST_F(Disorder, CommandLeavesTheFolderAsItIs)
{
    const auto before = contents(state);
    const auto clean = lab_test::rtif("check --state " + state.string());
    EXPECT_EQ(clean.code, 0) << clean.out;
    EXPECT_THAT(clean.out,
                HasSubstr("Trident, 6 stored interfaces, 7 L3 interfaces in the chip: no "
                          "difference\n"));
    EXPECT_EQ(contents(state), before);

    after([](simswitch::Switch &hardware) {
        ASSERT_TRUE(hardware.chip.l3_interfaces.remove(3).ok());
    });
    const auto found = lab_test::rtif("check --state " + state.string());
    EXPECT_EQ(found.code, 1);
    EXPECT_THAT(found.out, AllOf(HasSubstr("1 difference\n"), HasSubstr("    likely: ")));
    const auto json = lab_test::rtif("check --json --state " + state.string());
    EXPECT_EQ(json.code, 1);
    EXPECT_THAT(json.out, HasSubstr("\"cause\": "));
    EXPECT_EQ(lab_test::rtif("check").code, 2);
}
