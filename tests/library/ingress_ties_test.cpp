/*
 * ingress_ties_test.cpp: how an L3 ingress object is tied to a port, to the
 * members of a port-channel, or to nothing.
 *
 * ingress_svi_tie_test.cpp has the SVI, ingress_create_test.cpp the object
 * itself.
 */
#include "support/ingress_tie.h"

#include "services/ifindex.h"
#include "services/tree.h"

#include <sdk/error.h>

namespace rtifhal_test::ingress_ties
{

namespace
{

constexpr const char *CREATE = "rtifhal_l3_ing_create";
constexpr int TRUNK = 41;

/** Port-channel 7, trunk 41. */
class IngressTieOfPortChannel : public IngressTie
{
protected:
    IngressTieOfPortChannel()
    {
        lif->with_record(TIED_IIF);
        sw.host.set_trunk_id(lif->lif.ifindex, TRUNK);
        start();
    }

    /** Makes the trunk with members of those generic ports. */
    void make_trunk(const std::vector<std::uint32_t> &gports)
    {
        simswitch::chip::Trunk trunk;
        for (const auto gport : gports) {
            trunk.members.push_back({.gport = static_cast<int>(gport)});
        }
        ASSERT_TRUE(sw.chip.trunks.create(TRUNK, trunk).ok());
    }
    Calls port_controls() const { return calls_of({"fwmpd_bcm_port_control_set"}); }
    /** The calls of the tie up to the reading of the trunk. */
    Calls trunk_calls(const std::string &trunk) const
    {
        return {called::is_tunnel(*lif, 0),
                called::is_sub(*lif, 0),
                called::is_port_channel(*lif, 1),
                called::is_port_channel(*lif, 1),
                "fwm_ifindex_2_tid(" + lif->index() + ") = 0 [tid=41]",
                "bcm_trunk_info_t_init()",
                called::flush(),
                "bcm_trunk_get(0, 41, 32) = " + trunk};
    }
    Message tid_found() const
    {
        return trace("fwmpd_ifindex_to_bcm_tid", "rc = 0 ifindex = " + lif->hex() + " tid = 41 \n");
    }

    std::unique_ptr<Lif> lif = port_channel(7);
};

class IngressTieOfPort : public IngressTie
{
protected:
    IngressTieOfPort()
    {
        lif->with_record(TIED_IIF);
        start();
    }

    std::unique_ptr<Lif> lif = port(5);
};

class IngressTieOfSubinterface : public IngressTie
{
};

} // namespace

TEST_F(IngressTieOfPortChannel, EachMemberOfTheTrunkIsTied)
{
    make_trunk({0x8000005, 0x8000006});
    EXPECT_EQ(create(*lif), 0);
    Calls tie = trunk_calls("0 [info={flags=0x0 psc=0 ipmc_psc=0 dlf=-1 mc=-1 ipmc=-1 size=0} "
                            "count=2 members=[{flags=0x0 gport=0x8000005},"
                            "{flags=0x0 gport=0x8000006}]]");
    tie.insert(tie.end(), {called::port_control(5, TIED_IIF), called::port_control(6, TIED_IIF)});
    expect_calls(with_object(*lif, 22, tie));
    EXPECT_EQ(tie_messages(), Messages({tid_found(), trace(CREATE, "tid = 41\n"),
                                        trace(CREATE, "total member ports = 2\n"),
                                        trace(CREATE, "member port[0] = gport 134217733, port 5\n"),
                                        trace(CREATE, "member port[1] = gport 134217734, port 6\n"),
                                        success(*lif, -1)}));
}

TEST_F(IngressTieOfPortChannel, ChipLearnsOfItWithTheQueue)
{
    make_trunk({0x8000005});
    create(*lif);
    sw.end_request();
    EXPECT_EQ(sw.chip.ports.control(5, 67), TIED_IIF);
}

TEST_F(IngressTieOfPortChannel, NoMemberTiesNothing)
{
    make_trunk({});
    EXPECT_EQ(create(*lif), 0);
    expect_calls(
        with_object(*lif, 22,
                    trunk_calls("0 [info={flags=0x0 psc=0 ipmc_psc=0 dlf=-1 mc=-1 ipmc=-1 size=0} "
                                "count=0 members=[]]")));
    EXPECT_EQ(tie_messages(),
              Messages({tid_found(), trace(CREATE, "tid = 41\n"),
                        trace(CREATE, "total member ports = 0\n"), success(*lif, -1)}));
}

TEST_F(IngressTieOfPortChannel, MemberThatIsNoPortGetsItsControlOnPortMinusOne)
{
    // A trunk, a word whose top bit is set, and no kind at all.
    make_trunk({0xC000009, 0x88000005, 0x5});
    EXPECT_EQ(create(*lif), 0);
    const auto minus_one = called::port_control(-1, TIED_IIF, -4);
    EXPECT_EQ(port_controls(), Calls({minus_one, minus_one, minus_one}));
    const auto refused = report(CREATE, "bcm_port_control_set(-1) failed\n");
    expect_reports({refused, refused, refused});
    EXPECT_EQ(tie_messages()[3], trace(CREATE, "member port[0] = gport 201326601, port -1\n"));
    EXPECT_EQ(tie_messages()[5], trace(CREATE, "member port[1] = gport -2013265915, port -1\n"));
}

TEST_F(IngressTieOfPortChannel, PortOfAMemberIsTheLowElevenBits)
{
    make_trunk({0x8000000 | (3 << 11) | 9, 0x80007FF});
    create(*lif);
    EXPECT_EQ(port_controls(),
              Calls({called::port_control(9, TIED_IIF), called::port_control(2047, TIED_IIF, -4)}));
}

TEST_F(IngressTieOfPortChannel, RefusedMemberIsReportedAndTheNextOneIsTied)
{
    make_trunk({0x8000005, 0x8000006, 0x8000007});
    fail_when("fwmpd_bcm_port_control_set", "0, 5, 67, 7", -4);
    fail_when("fwmpd_bcm_port_control_set", "0, 6, 67, 7", 1);
    EXPECT_EQ(create(*lif), 0);
    EXPECT_EQ(port_controls(),
              Calls({called::port_control(5, TIED_IIF, -4), called::port_control(6, TIED_IIF, 1),
                     called::port_control(7, TIED_IIF)}));
    expect_reports({report(CREATE, "bcm_port_control_set(5) failed\n"),
                    report(CREATE, "bcm_port_control_set(6) failed\n")});
}

TEST_F(IngressTieOfPortChannel, FullTrunkIsWalkedWhole)
{
    std::vector<std::uint32_t> gports;
    for (std::uint32_t port = 1; port <= 32; ++port) {
        gports.push_back(0x8000000 | port);
    }
    make_trunk(gports);
    create(*lif);
    EXPECT_EQ(port_controls().size(), 32U);
    EXPECT_EQ(port_controls().back(), called::port_control(32, TIED_IIF));
}

TEST_F(IngressTieOfPortChannel, MembersAboveTheRoomForThemAreNotWalked)
{
    make_trunk(std::vector<std::uint32_t>(32, 0x8000005));
    // The embedded switch takes no more than 32; another chip's count may be larger.
    auto &members = const_cast<simswitch::chip::Trunk *>(sw.chip.trunks.find(TRUNK))->members;
    members.push_back(members.front());
    create(*lif);
    EXPECT_EQ(port_controls(), Calls(32, called::port_control(5, TIED_IIF)));
    EXPECT_EQ(tie_messages()[2], trace(CREATE, "total member ports = 33\n"));
    EXPECT_EQ(messages().back(), success(*lif, -1));
}

TEST_F(IngressTieOfPortChannel, PositiveAnswerToTheTrunkIsReportedToo)
{
    fail("bcm_trunk_get", 1);
    EXPECT_EQ(create(*lif), 0);
    expect_calls(with_object(*lif, 22, trunk_calls("1")));
    expect_reports({report(CREATE, "bcm_trunk_get(41) failed\n")});
}

TEST_F(IngressTieOfPortChannel, MissingTrunkIsReportedAndTiesNothing)
{
    EXPECT_EQ(create(*lif), 0);
    expect_calls(with_object(*lif, 22, trunk_calls("-7")));
    EXPECT_EQ(tie_messages(),
              Messages({tid_found(), trace(CREATE, "tid = 41\n"),
                        report(CREATE, "bcm_trunk_get(41) failed\n"),
                        trace(CREATE, "total member ports = 0\n"), success(*lif, -1)}));
}

TEST_F(IngressTieOfPortChannel, MissingTrunkIdIsReportedAndTheTrunkIsStillAskedFor)
{
    fail("if_index_is_eth_port_channel_intf", 0, 2);
    EXPECT_EQ(create(*lif), 0);
    expect_calls(
        with_object(*lif, 22,
                    {called::is_tunnel(*lif, 0), called::is_sub(*lif, 0),
                     called::is_port_channel(*lif, 1), called::is_port_channel(*lif, 0),
                     "bcm_trunk_info_t_init()", called::flush(), "bcm_trunk_get(0, 0, 32) = -7"}));
    EXPECT_EQ(tie_messages(),
              Messages({report(CREATE, "ifindex_to_bcm_tid(" + lif->hex() + ") failed\n"),
                        trace(CREATE, "tid = 0\n"), report(CREATE, "bcm_trunk_get(0) failed\n"),
                        trace(CREATE, "total member ports = 0\n"), success(*lif, -1)}));
}

TEST_F(IngressTieOfPortChannel, TrunkIdThatTheForwardingManagerLacksIsTheChannelPlusOne)
{
    sw.host.forget_trunk_id(lif->lif.ifindex);
    EXPECT_EQ(create(*lif), 0);
    EXPECT_EQ(calls_of({"bcm_trunk_get"}), Calls({"bcm_trunk_get(0, 8, 32) = -7"}));
    expect_reports(
        {report("fwmpd_ifindex_to_bcm_tid", "ERR: rc = 1 ifindex = " + lif->hex() + " tid = 8 \n"),
         report(CREATE, "bcm_trunk_get(8) failed\n")});
}

TEST_F(IngressTieOfPortChannel, MembersComeFromTheChipAndNotFromTheMemberTree)
{
    std::uint32_t member = simswitch::if_index::port(8);
    const simswitch::services::TreeOwner members{
        avl_create(simswitch::services::compare_by_ifindex, 0)};
    avl_insert(members.get(), &member);
    lif->lif.pc_member_tree = members.get();
    make_trunk({0x8000005});
    start();
    create(*lif);
    EXPECT_EQ(port_controls(), Calls({called::port_control(5, TIED_IIF)}));
}

TEST_F(IngressTieOfPortChannel, RefusedObjectDoesNotStopTheTie)
{
    make_trunk({0x8000005});
    fail("rtifhal_bcm_l3_ingress_create", -6);
    EXPECT_EQ(create(*lif), 0);
    EXPECT_EQ(port_controls(), Calls({called::port_control(5, TIED_IIF)}));
}

TEST_F(IngressTieOfPort, UnknownPortIsReportedAndMinusOneIsWritten)
{
    fail("if_index_get_port", 1);
    EXPECT_EQ(create(*lif), 0);
    expect_calls(with_object(*lif, 26,
                             {called::is_tunnel(*lif, 0), called::is_sub(*lif, 0),
                              called::is_port_channel(*lif, 0), called::type(*lif, 26),
                              "if_index_get_port(" + lif->index() + ") = 1",
                              called::port_control(-1, TIED_IIF, -4)}));
    EXPECT_EQ(
        tie_messages(),
        Messages({report(CREATE, "bcm_l3_ing_create(" + lif->decimal() + ") get port failed\n"),
                  trace(CREATE, "L3Ingress L3 Phy or L3 PC port = -1 iif = 7\n"),
                  report(CREATE, "bcm_port_control_set(" + lif->hex() +
                                     ") failed: " + _shr_errmsg[4] + "\n"),
                  success(*lif, -1)}));
}

TEST_F(IngressTieOfPort, UnknownTypeInThePortLookUpIsReported)
{
    fail("if_index_get_type", -1, 2);
    EXPECT_EQ(create(*lif), 0);
    EXPECT_EQ(reports().at(0),
              report(CREATE, "bcm_l3_ing_create(" + lif->decimal() + ") get port failed\n"));
}

TEST_F(IngressTieOfPort, RefusedControlIsReportedAndTheCreationSucceeds)
{
    fail("fwmpd_bcm_port_control_set", -16);
    EXPECT_EQ(create(*lif), 0);
    EXPECT_EQ(tie_messages(),
              Messages({trace(CREATE, "L3Ingress L3 Phy or L3 PC port = 5 iif = 7\n"),
                        report(CREATE, "bcm_port_control_set(" + lif->hex() +
                                           ") failed: " + _shr_errmsg[16] + "\n"),
                        success(*lif, 5)}));
}

TEST_F(IngressTieOfPort, PortBeyondTheChipsIsRefusedAndTheCreationSucceeds)
{
    const auto beyond = port(256);
    EXPECT_EQ(create(beyond->with_record(TIED_IIF)), 0);
    EXPECT_EQ(calls().back(), called::port_control(256, TIED_IIF, -4));
    EXPECT_EQ(messages().back(), success(*beyond, 256));
}

TEST_F(IngressTieOfPort, PositiveAnswerToTheControlIsNoFailure)
{
    fail("fwmpd_bcm_port_control_set", 1);
    EXPECT_EQ(create(*lif), 0);
    expect_reports({});
}

TEST_F(IngressTieOfPort, MemberPortGetsThePortChannelsNumber)
{
    const auto main = port_channel(7);
    main->with_record(TIED_IIF);
    const auto member = port(5);
    member->lif.main_l3lif = main->get();
    fail("if_index_get_port", 1);
    EXPECT_EQ(create(*member), 0);
    EXPECT_EQ(calls_of({"fwmpd_bcm_port_control_set"}),
              Calls({called::port_control(-1, TIED_IIF, -4)}));
    expect_reports({report(CREATE, "bcm_l3_ing_create(" + main->decimal() + ") get port failed\n"),
                    report(CREATE, "bcm_port_control_set(" + member->hex() +
                                       ") failed: " + _shr_errmsg[4] + "\n")});
    EXPECT_EQ(messages().back(), success(*member, -1));
}

TEST_F(IngressTieOfPort, AnyNonzeroAnswerTellsTheKind)
{
    fail("if_index_is_eth_port_channel_intf", -1);
    EXPECT_EQ(create(*lif), 0);
    EXPECT_EQ(sw.journal.count("bcm_trunk_get"), 1U);
    for (const char *kind : {"if_index_is_tunnel_intf", "if_index_is_sub_intf"}) {
        start();
        fail(kind, -1);
        EXPECT_EQ(create(*lif), 0);
        EXPECT_EQ(calls().back(), std::string(kind) + "(" + lif->index() + ") = -1");
        EXPECT_EQ(tie_messages(), Messages({success(*lif, -1)}));
    }
}

TEST_F(IngressTieOfPort, UnitIsThePlatforms)
{
    fail("rtifhal_get_bcm_unit", 3);
    EXPECT_EQ(create(*lif), 0); // this chip has no other unit
    EXPECT_EQ(calls_of({"rtifhal_bcm_l3_ingress_create", "fwmpd_bcm_port_control_set"}),
              Calls({"rtifhal_bcm_l3_ingress_create(3, " + TIED_OBJECT + ", 7) = -3",
                     "fwmpd_bcm_port_control_set(3, 5, 67, 7) = -3"}));
}

TEST_F(IngressTieOfPortChannel, UnitIsThePlatforms)
{
    make_trunk({0x8000005});
    fail("rtifhal_get_bcm_unit", 3);
    EXPECT_EQ(create(*lif), 0);
    EXPECT_EQ(calls_of({"bcm_trunk_get"}), Calls({"bcm_trunk_get(3, 41, 32) = -3"}));
}

TEST_F(IngressTie, TunnelHasTheObjectAlone)
{
    const auto lif = tunnel(3);
    EXPECT_EQ(create(lif->with_record(TIED_IIF)), 0);
    expect_calls(with_object(*lif, 24, {called::is_tunnel(*lif, 1)}));
    EXPECT_EQ(tie_messages(), Messages({success(*lif, -1)}));
}

TEST_F(IngressTieOfSubinterface, OnAPortHasItsOwnObjectAlone)
{
    const auto main = port(5);
    main->with_record(3);
    const auto sub = subinterface(*main, 10);
    EXPECT_EQ(create(sub->with_record(TIED_IIF)), 0);
    expect_calls({called::ingress_init(), called::unit(), called::type(*sub, 26),
                  called::is_port_channel(*main, 0), called::trident2(0),
                  called::write_ingress(TIED_OBJECT, TIED_IIF), called::is_tunnel(*sub, 0),
                  called::is_sub(*sub, 1)});
    EXPECT_EQ(messages()[0], trace(CREATE, "inl3lif->ifindex = " + sub->hex() +
                                               " l3lif->ifindex = " + sub->hex() + "\n"));
    expect_reports({});
}

TEST_F(IngressTieOfSubinterface, OnAPortChannelWritesThePortChannelsObjectAndTouchesNoPort)
{
    const auto main = port_channel(7);
    main->with_record(41).record()->acl_qos_label_ingress = 5;
    main->properties.vrf = 12;
    const auto sub = subinterface(*main, 10);
    EXPECT_EQ(create(sub->with_record(TIED_IIF)), 0);
    expect_calls({called::ingress_init(), called::unit(), called::type(*sub, 22),
                  called::is_port_channel(*main, 1), called::trident2(0),
                  called::write_ingress("{flags=0x6 vrf=12 urpf=0 class=69 ipmc=0 qos=0}", 41),
                  called::is_tunnel(*sub, 0), called::is_sub(*sub, 1)});
    EXPECT_EQ(messages()[0], trace(CREATE, "main ifindex = " + main->hex() + "\n"));
    EXPECT_EQ(messages()[1], trace(CREATE, "inl3lif->ifindex = " + sub->hex() +
                                               " l3lif->ifindex = " + main->hex() + "\n"));
    EXPECT_EQ(messages().back(),
              trace(CREATE, "bcm_l3_ing_create(" + sub->hex() + ") success: -1, 41\n"));
}

TEST_F(IngressTieOfSubinterface, OnAPortChannelFailuresNameThePortChannel)
{
    const auto main = port_channel(7);
    const auto sub = subinterface(*main, 10);
    sub->with_record(TIED_IIF);
    EXPECT_EQ(create(*sub), -1);
    expect_reports({report(CREATE, "Failed to get l3lif pd context for intf " + main->index())});
    main->with_record(41);
    fail("rtifhal_bcm_l3_ingress_create", -6);
    start();
    EXPECT_EQ(create(*sub), 0);
    expect_reports({report(CREATE, "bcm_l3_ing_create(" + main->hex() +
                                       ") failed: " + _shr_errmsg[6] + "\n")});
}

} // namespace rtifhal_test::ingress_ties
