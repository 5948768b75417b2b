/*
 * pvlan_svi_many_macs_test.cpp: a pair that goes takes all virtual MACs off the
 * secondary, however many, and comes to an end when they can't be forgotten.
 */
#include "support/pvlan_roads.h"

namespace rtifhal_test::pvlan_road
{

namespace
{

using fhrp_road::Address;

/** The n-th of many virtual MACs. */
Address numbered(int n)
{
    return {{0x02, 0x5a, 0x00, 0x00, static_cast<std::uint8_t>(n / 256),
             static_cast<std::uint8_t>(n % 256)}};
}

class PvlanManyMacs : public PvlanTest, public ::testing::WithParamInterface<int>
{
protected:
    /** So many virtual MACs are on the primary's SVI and, mirrored, on the secondary. */
    void mirrored_macs(int count)
    {
        std::vector<Address> macs;
        macs.reserve(static_cast<std::size_t>(count));
        for (int n = 0; n < count; ++n) {
            macs.push_back(numbered(n));
        }
        virtual_macs(macs);
        pair_appears(PRIMARY, SECONDARY);
        start();
    }

    std::size_t deletes() const { return calls_of({"bcm_l2_station_delete"}).size(); }
};

} // namespace

TEST_P(PvlanManyMacs, AllLeaveTheSecondaryAndNoneThePrimary)
{
    const int count = GetParam();
    mirrored_macs(count);
    ASSERT_EQ(fhrp_mac_hash->count, 2U * static_cast<unsigned>(count));
    pair_goes(PRIMARY, SECONDARY);
    EXPECT_EQ(deletes(), static_cast<std::size_t>(count));
    EXPECT_EQ(fhrp_mac_hash->count, static_cast<unsigned>(count));
    for (const auto &line : fhrp_road::kept()) {
        EXPECT_NE(line.find(" 100 "), std::string::npos) << line;
    }
}

TEST_P(PvlanManyMacs, EachIsDeletedOnceInTheOrderOfTheTree)
{
    const int count = GetParam();
    mirrored_macs(count);
    const std::vector<std::string> before = fhrp_road::kept();
    std::vector<std::string> expected;
    for (const auto &line : before) {
        if (line.find(" 101 ") != std::string::npos) {
            expected.push_back("bcm_l2_station_delete(0, " + line.substr(line.find('@') + 1) +
                               ") = 0");
        }
    }
    pair_goes(PRIMARY, SECONDARY);
    EXPECT_EQ(calls_of({"bcm_l2_station_delete"}), expected);
}

TEST_P(PvlanManyMacs, EntriesThatCannotBeForgottenDoNotKeepItGoing)
{
    mirrored_macs(GetParam());
    fail_when("avl_find", "tree, record", 0);
    pair_goes(PRIMARY, SECONDARY);
    EXPECT_LE(deletes(), static_cast<std::size_t>(GetParam()));
    EXPECT_EQ(calls_of({"avl_delete"}), std::vector<std::string>{});
}

INSTANTIATE_TEST_SUITE_P(Counts, PvlanManyMacs, ::testing::Values(1, 63, 64, 65, 128, 200));

} // namespace rtifhal_test::pvlan_road
