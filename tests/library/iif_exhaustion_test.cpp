/*
 * iif_exhaustion_test.cpp: the numbers of routed interfaces run out: the last
 * free one of each chip, and what comes behind it.
 *
 * iif_table_test.cpp has the tables themselves.
 */
#include "support/l3_objects.h"
#include "support/library_test.h"

namespace rtifhal_test::iif_exhaustion
{

namespace
{

constexpr int HELD_BACK = 2000;
constexpr int STEPS = 40;

/** A chip whose numbers are all taken, the last of them by allocation. */
template <class Base> class Exhaustion : public Base
{
protected:
    /** The next number, or -1. */
    static int allocate()
    {
        std::uint32_t iif = 0;
        return rtifhal_alloc_l3iif(&iif) == 0 ? static_cast<int>(iif) : -1;
    }
    /** Takes the free numbers, which begin at `first`, up to the last one. */
    static void take_all(int first, int last)
    {
        ASSERT_EQ(allocate(), first);
        for (int number = first; number <= last - STEPS; ++number) {
            take(static_cast<unsigned>(number));
        }
        for (int number = last - STEPS + 1; number <= last; ++number) {
            ASSERT_EQ(allocate(), number);
        }
    }
    static Message entered()
    {
        return trace("l3iif_table_init", " l3iif_table_init called with :1 \n");
    }

    /** A number that is held back comes next, and behind it there is nothing. */
    void expect_held_back_number_then_nothing()
    {
        hold_back(HELD_BACK);
        this->start();
        EXPECT_EQ(allocate(), HELD_BACK);
        EXPECT_TRUE(in_use(HELD_BACK));
        EXPECT_FALSE(held_back(HELD_BACK));
        EXPECT_FALSE(held_back_in_config(HELD_BACK));
        this->expect_calls({called::inband_init(), called::store_globals()});
        this->expect_messages({entered(), trace("rtifhal_alloc_l3iif", " iif_index = 0x7d0\n")});

        this->start();
        EXPECT_EQ(allocate(), -1);
        this->expect_calls({called::inband_init()});
        this->expect_messages({entered(), report("rtifhal_alloc_l3iif", "Failed to create l3iif")});
    }
};

class IifExhaustion : public Exhaustion<LibraryTest>
{
};

class IifExhaustionOnTrident2 : public Exhaustion<Trident2Test>
{
};

} // namespace

TEST_F(IifExhaustion, LastFreeNumberIs3583AndTheNextIsTheHeldBackOne)
{
    take_all(3, 3583);
    expect_held_back_number_then_nothing();
}

TEST_F(IifExhaustionOnTrident2, LastFreeNumberIs7679AndTheNextIsTheHeldBackOne)
{
    take_all(3, 7679);
    expect_held_back_number_then_nothing();
}

TEST_F(IifExhaustion, SdnAgentLeavesTheNumbersFrom1667To3583)
{
    fwmpd_asic_sdn_agent_enabled = 1;
    take_all(1667, 3583);
    expect_held_back_number_then_nothing();
}

TEST_F(IifExhaustionOnTrident2, SdnAgentLeavesTheNumbersFrom3331To7679)
{
    fwmpd_asic_sdn_agent_enabled = 1;
    take_all(3331, 7679);
    expect_held_back_number_then_nothing();
}

TEST_F(IifExhaustion, AnyNonzeroAnswerMeansATrident2)
{
    fail("bcm_pd_is_device_trident2", -1);
    take_all(3, 7679);
    expect_held_back_number_then_nothing();
}

TEST_F(IifExhaustion, LowestHeldBackNumberMayBeZero)
{
    take_all(3, 3583);
    hold_back(0);
    hold_back(HELD_BACK);
    EXPECT_EQ(allocate(), 0);
    EXPECT_FALSE(held_back(0));
    EXPECT_EQ(allocate(), HELD_BACK);
}

} // namespace rtifhal_test::iif_exhaustion
