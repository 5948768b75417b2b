/*
 * l3_disable_failure_test.cpp: stopping an interface from routing when
 * something is missing, most of which looks like success, or refused.
 *
 * l3_disable_object_test.cpp has the road without failures.
 */
#include "support/property_port_roads.h"
#include "support/setter_roads.h"

#include <sdk/error.h>

#include <fmt/format.h>

namespace rtifhal_test::l3_disable_failure
{

namespace
{

using setter_road::IIF;
using setter_road::WRITE_INGRESS;

const std::string DISABLE = "rtifhal_trident_l3_disable";
const std::string READ_INGRESS = "bcm_l3_ingress_get";

/** Port 5 is up under the number 3, and the layer above knows it. */
class L3DisableFailure : public property_road::PortTest
{
protected:
    explicit L3DisableFailure(Kind chip = Kind::trident) : PortTest(chip)
    {
        sw.directory.add(lif->get());
    }

    int disable() const { return disable(*lif); }
    static int disable(const Lif &other) { return rtifhal_trident_l3_disable(other.lif.ifindex); }
    /** The layer above knows this one in the place of the port. */
    void known(Lif &other)
    {
        sw.directory.add(other.get());
        start();
    }
    /** The interface is found and the local object made ready. */
    static Calls begun(const Lif &other)
    {
        return {"l3lif_find_lif_from_ifindex(" + other.index() + ") = record",
                called::ingress_init(), called::unit()};
    }
    /** The calls up to the read of the object. */
    Calls object_read() const
    {
        return join({begun(*lif), Calls{READ_INGRESS + "(0, 3) = 0 [ingress=" +
                                        setter_road::ip4_ingress(Kind::trident) + "]"}});
    }
    static Message number_said(const std::string &number)
    {
        return trace(DISABLE, "l3_if_index = " + number + " ipmc_intf_id = 0x0 iif = 0x0\n");
    }
    static Message object_said() { return trace(DISABLE, "ipmc_intf_id = 0 class 40 flags = 2\n"); }
    std::uint32_t flags_in_the_chip()
    {
        sw.end_request();
        return sw.chip.l3_ingresses.find(IIF)->flags;
    }
};

class L3DisableFailureOnTrident2 : public L3DisableFailure
{
protected:
    L3DisableFailureOnTrident2() : L3DisableFailure(Kind::trident2) {}
};

} // namespace

TEST_F(L3DisableFailure, UnknownInterfaceIsSilentSuccess)
{
    const auto unknown = port(9);
    EXPECT_EQ(disable(*unknown), 0);
    expect_calls({"l3lif_find_lif_from_ifindex(" + unknown->index() + ") = null"});
    expect_messages({});
}

TEST_F(L3DisableFailure, InterfaceThatWasNeverCreatedIsReportedAndLooksLikeSuccess)
{
    const auto no_context = port(9);
    known(*no_context);
    EXPECT_EQ(disable(*no_context), 0);
    expect_calls(begun(*no_context));
    expect_messages({report(DISABLE, "l3lif_pd_ctxt is NULL for " + no_context->index() + "\n")});
}

TEST_F(L3DisableFailure, MissingContextIsReportedThoughThePropertiesAreMissingToo)
{
    const auto nothing = port(9);
    nothing->without_properties();
    known(*nothing);
    EXPECT_EQ(disable(*nothing), 0);
    expect_messages({report(DISABLE, "l3lif_pd_ctxt is NULL for " + nothing->index() + "\n")});
}

TEST_F(L3DisableFailure, MissingRecordIsSilentSuccess)
{
    const auto no_record = port(9);
    no_record->with_bare_context();
    known(*no_record);
    EXPECT_EQ(disable(*no_record), 0);
    expect_calls(begun(*no_record));
    expect_messages({});
}

TEST_F(L3DisableFailure, InterfaceWithoutALiveNumberIsSuccess)
{
    const auto no_number = port(9);
    no_number->with_record(0);
    const auto parked = port(9);
    parked->with_parked(IIF);
    for (Lif *other : {no_number.get(), parked.get()}) {
        known(*other);
        EXPECT_EQ(disable(*other), 0);
        expect_calls(begun(*other));
        expect_messages({number_said("0x0")});
    }
}

TEST_F(L3DisableFailure, LiveNumberIsTakenThoughTheRecordSaysTakenDown)
{
    lif->record()->brcm_prog_complete = 1;
    lif->record()->prev_l3_if_index = 12;
    EXPECT_EQ(disable(), 0);
    EXPECT_EQ(flags_in_the_chip(), 0x5E2U);
}

TEST_F(L3DisableFailure, ObjectThatIsNotInTheChipGivesTheSdksCode)
{
    ASSERT_TRUE(sw.chip.l3_ingresses.remove(IIF).ok());
    EXPECT_EQ(disable(), -7);
    expect_calls(join({begun(*lif), Calls{READ_INGRESS + "(0, 3) = -7"}}));
    expect_messages(
        {number_said("0x3"), report(DISABLE, fmt::format("bcm_l3_ing_create({}) get failed: {}\n",
                                                         lif->decimal(), _shr_errmsg[7]))});
}

TEST_F(L3DisableFailureOnTrident2, ObjectThatIsNotInTheChipGivesTheSdksCode)
{
    ASSERT_TRUE(sw.chip.l3_ingresses.remove(IIF).ok());
    EXPECT_EQ(disable(), -7);
    expect_calls(join({begun(*lif), Calls{READ_INGRESS + "(0, 3) = -7"}}));
}

TEST_F(L3DisableFailure, ObjectThatStillWaitsInTheQueueIsNotInTheChip)
{
    const auto other = tunnel(1);
    ASSERT_EQ(rtifhal_trident_add_l3tun(other->get(), 1), 0);
    known(*other);
    EXPECT_EQ(disable(*other), -7);
    EXPECT_EQ(calls_of({WRITE_INGRESS}), Calls{});
}

TEST_F(L3DisableFailure, RefusedReadIsFoundBeforeTheMissingProperties)
{
    lif->without_properties();
    fail(READ_INGRESS, -9);
    EXPECT_EQ(disable(), -9);
    expect_reports({report(DISABLE, fmt::format("bcm_l3_ing_create({}) get failed: {}\n",
                                                lif->decimal(), _shr_errmsg[9]))});
}

TEST_F(L3DisableFailure, PositiveAnswerOfTheReadIsNoFailure)
{
    fail(READ_INGRESS, 3);
    EXPECT_EQ(disable(), 0);
    expect_calls(join(
        {begun(*lif),
         Calls{READ_INGRESS + "(0, 3) = 3",
               called::write_ingress("{flags=0x5e2 vrf=0 urpf=0 class=0 ipmc=0 qos=0}", IIF)}}));
    expect_reports({});
}

TEST_F(L3DisableFailure, WithoutPropertiesNothingIsWrittenAndItLooksLikeSuccess)
{
    lif->without_properties();
    EXPECT_EQ(disable(), 0);
    expect_calls(object_read());
    expect_messages({number_said("0x3"), object_said(),
                     report(DISABLE, "l3lif_pi_ctxt is NULL for " + lif->index() + "\n")});
    EXPECT_EQ(flags_in_the_chip(), 0x6U);
}

TEST_F(L3DisableFailure, RefusedWriteGivesTheSdksCode)
{
    fail(WRITE_INGRESS, -6);
    EXPECT_EQ(disable(), -6);
    expect_calls(
        join({object_read(), Calls{called::write_ingress(
                                 "{flags=0x5e2 vrf=1 urpf=0 class=64 ipmc=0 qos=0}", IIF, -6)}}));
    expect_messages({number_said("0x3"), object_said(),
                     report(DISABLE, fmt::format("bcm_l3_ing_create({}) failed: {}\n", lif->hex(),
                                                 _shr_errmsg[6]))});
    EXPECT_EQ(flags_in_the_chip(), 0x6U);
}

TEST_F(L3DisableFailureOnTrident2, RefusedWriteGivesTheSdksCode)
{
    fail(WRITE_INGRESS, -6);
    EXPECT_EQ(disable(), -6);
    expect_reports({report(
        DISABLE, fmt::format("bcm_l3_ing_create({}) failed: {}\n", lif->hex(), _shr_errmsg[6]))});
    EXPECT_EQ(flags_in_the_chip(), 0x486U);
}

TEST_F(L3DisableFailure, PositiveAnswerOfTheWriteIsSuccess)
{
    fail(WRITE_INGRESS, 3);
    EXPECT_EQ(disable(), 0);
    expect_reports({});
}

TEST_F(L3DisableFailure, CodeWithoutATextOfItsOwnGetsTheLastText)
{
    fail(WRITE_INGRESS, -19);
    EXPECT_EQ(disable(), -19);
    expect_reports({report(
        DISABLE, fmt::format("bcm_l3_ing_create({}) failed: {}\n", lif->hex(), _shr_errmsg[19]))});
}

} // namespace rtifhal_test::l3_disable_failure
