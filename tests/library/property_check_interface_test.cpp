/*
 * property_check_interface_test.cpp: rtifhal_ingress_add_l3int, the check that an
 * interface's number still names an object in the chip.
 */
#include "support/misread.h"
#include "support/property_port_roads.h"

#include <sdk/error.h>

#include <fmt/format.h>

namespace rtifhal_test::property_check_interface
{

namespace
{

using namespace property_road;

const std::string CHECK = "rtifhal_ingress_add_l3int";

int check(Lif &lif)
{
    return rtifhal_ingress_add_l3int(lif.get());
}

/** The calls of the check, the object's read last. */
Calls checked(const std::string &read)
{
    return {called::unit(), called::intf_init(), called::intf_init(), called::flush(), read};
}

class InterfaceCheck : public PortTest
{
protected:
    using PortTest::PortTest;
};

class InterfaceCheckOnTrident2 : public InterfaceCheck
{
protected:
    InterfaceCheckOnTrident2() : InterfaceCheck(Kind::trident2) {}
};

} // namespace

TEST_F(InterfaceCheck, ObjectIsReadOnceBehindAFlush)
{
    EXPECT_EQ(check(*lif), 0);
    expect_calls(checked(object_read()));
    expect_messages({});
}

TEST_F(InterfaceCheckOnTrident2, ObjectIsReadOnceBehindAFlush)
{
    EXPECT_EQ(check(*lif), 0);
    expect_calls(checked(object_read()));
    expect_messages({});
}

TEST_F(InterfaceCheck, NothingIsWritten)
{
    const auto before = sw.wrappers.chip_writes();
    lif->properties.mtu = 9000;
    check(*lif);
    sw.end_request();
    EXPECT_EQ(sw.wrappers.chip_writes(), before);
}

TEST_F(InterfaceCheck, ObjectThatStillWaitsInTheQueueIsThere)
{
    const auto other = port(6);
    ASSERT_EQ(rtifhal_trident_add_l3port(other->get(), 1), 0);
    ASSERT_GT(sw.wrappers.pending(), 0U);
    EXPECT_EQ(check(*other), 0);
}

TEST_F(InterfaceCheck, PropertiesAreNotNeeded)
{
    lif->without_properties();
    EXPECT_EQ(check(*lif), 0);
    expect_calls(checked(object_read()));
}

TEST_F(InterfaceCheck, ObjectThatIsGoneGivesTheReadsOwnCode)
{
    ASSERT_TRUE(sw.chip.l3_interfaces.remove(IIF).ok());
    EXPECT_EQ(check(*lif), -7);
    expect_calls(checked("bcm_l3_intf_get(0, 3) = -7"));
    expect_messages({});
}

TEST_F(InterfaceCheck, RefusedReadWithTheRightNumberComesOutAsItIs)
{
    for (const int code : {-15, -1, 3}) {
        fail(READ_INTERFACE, code);
        EXPECT_EQ(check(*lif), code);
    }
    expect_messages({});
}

TEST_F(InterfaceCheck, MismatchIsReportedWithTheTextOfTheRead)
{
    const MisreadInterface answer(9, 0, -15);
    EXPECT_EQ(check(*lif), -1);
    expect_messages({report(CHECK, fmt::format("itf get (3) mismatch: {}\n", _shr_errmsg[15]))});
}

TEST_F(InterfaceCheck, AnswerOfAnotherObjectIsAMismatch)
{
    const MisreadInterface answer(9);
    EXPECT_EQ(check(*lif), -1);
    expect_calls(checked(object_read()));
    expect_messages({report(CHECK, fmt::format("itf get (3) mismatch: {}\n", _shr_errmsg[0]))});
}

TEST_F(InterfaceCheck, LiveNumberIsCheckedAndNotTheParkedOne)
{
    lif->record()->brcm_prog_complete = 1;
    lif->record()->prev_l3_if_index = 300;
    EXPECT_EQ(check(*lif), 0);
    expect_calls(checked(object_read()));
}

TEST_F(InterfaceCheck, NumberZeroIsReadLikeAnyOther)
{
    const auto parked = port(9);
    parked->with_parked(12);
    EXPECT_EQ(check(*parked), -7);
    expect_calls(checked("bcm_l3_intf_get(0, 0) = -7"));
    expect_messages({});
}

TEST_F(InterfaceCheck, NullInterfaceIsRefusedWithoutACall)
{
    EXPECT_EQ(rtifhal_ingress_add_l3int(nullptr), -1);
    expect_calls({});
    expect_messages({report(CHECK, " Got l3lif as null")});
}

TEST_F(InterfaceCheck, MissingContextIsReportedWithTheTextOfSuccess)
{
    const auto bare = port(9);
    EXPECT_EQ(check(*bare), -1);
    expect_calls({called::unit(), called::intf_init()});
    expect_messages(
        {report(CHECK, fmt::format("bcm_l3_intf_find_vlan(0) NULL: {}\n", _shr_errmsg[0]))});
}

TEST_F(InterfaceCheck, MissingRecordFailsSilentlyWithoutARead)
{
    const auto bare = port(9);
    bare->with_bare_context();
    EXPECT_EQ(check(*bare), -1);
    expect_calls({called::unit(), called::intf_init()});
    expect_messages({});
}

} // namespace rtifhal_test::property_check_interface
