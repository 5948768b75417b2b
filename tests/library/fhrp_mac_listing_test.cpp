/*
 * fhrp_mac_listing_test.cpp: the listing of virtual MACs: where it begins, what
 * the filters pass over, what the record of an entry holds, and that it can be
 * resumed behind any entry.
 *
 * fhrp_mac_order_test.cpp has the order itself.
 */
#include "support/fhrp_roads.h"

#include "rtifhal_kelvo_trident/station/fhrp_mac.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <sys/mman.h>

namespace rtifhal_test::fhrp_mac_listing
{

namespace
{

using namespace fhrp_road;

constexpr std::uint32_t FIRST = 0x10400000;
constexpr std::uint32_t SECOND = 0x10500000;
constexpr std::uint32_t THIRD = 0x30000064;
constexpr Address ZEROS = {};
constexpr Address LAST_MAC = {{0xff, 0xff, 0xff, 0xff, 0xff, 0xff}};
constexpr std::size_t ROOM = 16;
constexpr std::uint8_t DIRT = 0xa5;

const std::string NEXT = "avl_find_next(tree, record) = record";
const std::string NO_NEXT = "avl_find_next(tree, record) = null";

/** Where a listing begins, and what passes. */
struct Question {
    std::uint32_t ifindex = 0;
    std::uint16_t vlan = 0;
    Address mac = {};
    int filter_mac = 0;
    int filter_vlan = 0;
};

std::string line(std::uint32_t ifindex, unsigned vlan, const Address &mac)
{
    return fmt::format("{:#x} {} {}", ifindex, vlan, mac.text());
}

Address mac_of(const rtifhal_fhrp_mac_record_t &record)
{
    Address mac{};
    std::ranges::copy(record.mac, mac.bytes);
    return mac;
}

/** Five entries: one MAC on both ports, another on the first; both on an SVI and a secondary. */
const Calls ALL = {line(FIRST, ROUTED, VMAC), line(FIRST, ROUTED, OTHER),
                   line(SECOND, ROUTED, VMAC), line(THIRD, 100, VMAC), line(THIRD, 101, OTHER)};

class FhrpMacListing : public FhrpTest
{
protected:
    void five_kept()
    {
        rtifhal_fhrp_mac_save(THIRD, OTHER.bytes, 101, 5);
        rtifhal_fhrp_mac_save(SECOND, VMAC.bytes, ROUTED, 3);
        rtifhal_fhrp_mac_save(FIRST, VMAC.bytes, ROUTED, 1);
        rtifhal_fhrp_mac_save(THIRD, VMAC.bytes, 100, 4);
        rtifhal_fhrp_mac_save(FIRST, OTHER.bytes, ROUTED, 2);
        start();
    }

    /** Lists into the records; how many there were. */
    int list(const Question &question, int room = ROOM)
    {
        std::array<rtifhal_fhrp_mac_record_t *, ROOM> places{};
        for (std::size_t i = 0; i < ROOM; ++i) {
            places.at(i) = &records.at(i);
        }
        EXPECT_EQ(rtifhal_trident_fhrp_mac_getnext(question.ifindex, question.vlan,
                                                   question.mac.bytes, question.filter_mac,
                                                   question.filter_vlan, &room, places.data()),
                  0);
        return room;
    }

    /** The same as lines. */
    Calls listed(const Question &question, int room = ROOM)
    {
        Calls lines;
        const int count = list(question, room);
        for (int i = 0; i < count; ++i) {
            const auto &record = records.at(static_cast<std::size_t>(i));
            lines.push_back(line(record.ifindex, record.vlan, mac_of(record)));
        }
        return lines;
    }

    /** Asks for `room` entries at a time, each time behind the last one. */
    Calls listed_in_pieces(Question question, int room)
    {
        Calls lines;
        for (Calls piece = listed(question, room); !piece.empty(); piece = listed(question, room)) {
            lines = join({lines, piece});
            const auto &last = records.at(piece.size() - 1);
            question.ifindex = last.ifindex;
            question.vlan = static_cast<std::uint16_t>(last.vlan);
            question.mac = mac_of(last);
        }
        return lines;
    }

    static Message invoked(int vlan, int filter_mac)
    {
        return trace(LIST, fmt::format("invoked with vlan {}, filter_mac {}", vlan, filter_mac));
    }

    static Message returning(int count)
    {
        return trace(LIST, fmt::format("returning with total {} entries", count));
    }

    std::array<rtifhal_fhrp_mac_record_t, ROOM> records{};
};

} // namespace

TEST_F(FhrpMacListing, ListsEverythingInTheTreesOrder)
{
    five_kept();
    EXPECT_EQ(listed({}), ALL);
    expect_calls({NEXT, NEXT, NEXT, NEXT, NEXT, NO_NEXT});
    expect_messages({invoked(0, 0), returning(5)});
}

TEST_F(FhrpMacListing, WithoutATreeListsNothing)
{
    EXPECT_EQ(listed({.vlan = 7, .filter_mac = 3}), Calls{});
    expect_calls({});
    expect_messages({invoked(7, 3), returning(0)});
}

TEST_F(FhrpMacListing, OfAnEmptyTreeListsNothing)
{
    const Lif &lif = known_port();
    added(lif);
    del(lif);
    start();
    EXPECT_EQ(listed({}), Calls{});
    expect_calls({NO_NEXT});
}

TEST_F(FhrpMacListing, WithoutRoomListsNothing)
{
    five_kept();
    EXPECT_EQ(listed({}, 0), Calls{});
    expect_calls({NEXT});
    expect_messages({invoked(0, 0), returning(0)});
}

TEST_F(FhrpMacListing, WithoutRoomNorTreeListsNothing)
{
    EXPECT_EQ(listed({}, 0), Calls{});
    expect_messages({invoked(0, 0), returning(0)});
}

TEST_F(FhrpMacListing, NegativeRoomIsNone)
{
    five_kept();
    EXPECT_EQ(list({}, -1), 0);
    expect_messages({invoked(0, 0), returning(0)});
}

TEST_F(FhrpMacListing, EndsWhenTheRoomIsFull)
{
    five_kept();
    EXPECT_EQ(listed({}, 2), (Calls{ALL[0], ALL[1]}));
    expect_calls({NEXT, NEXT, NEXT});
    expect_messages({invoked(0, 0), returning(2)});
}

TEST_F(FhrpMacListing, ExactRoomTakesAll)
{
    five_kept();
    EXPECT_EQ(listed({}, 5), ALL);
}

TEST_F(FhrpMacListing, BeginsBehindTheGivenEntry)
{
    five_kept();
    EXPECT_EQ(listed({.ifindex = FIRST, .vlan = ROUTED, .mac = VMAC}),
              (Calls{ALL[1], ALL[2], ALL[3], ALL[4]}));
    EXPECT_EQ(listed({.ifindex = THIRD, .vlan = 101, .mac = OTHER}), Calls{});
}

TEST_F(FhrpMacListing, BeginsBehindAKeyThatIsNotThere)
{
    five_kept();
    EXPECT_EQ(listed({.ifindex = SECOND}), (Calls{ALL[2], ALL[3], ALL[4]}));
    EXPECT_EQ(listed({.ifindex = FIRST, .vlan = ROUTED, .mac = LAST_MAC}),
              (Calls{ALL[2], ALL[3], ALL[4]}));
    EXPECT_EQ(listed({.ifindex = THIRD, .vlan = 100, .mac = LAST_MAC}), Calls{ALL[4]});
}

TEST_F(FhrpMacListing, GoesOnBehindAnEntryThatWentMeanwhile)
{
    five_kept();
    rtifhal_fhrp_mac_remove(SECOND, VMAC.bytes, ROUTED);
    EXPECT_EQ(listed({.ifindex = SECOND, .vlan = ROUTED, .mac = VMAC}), (Calls{ALL[3], ALL[4]}));
}

TEST_F(FhrpMacListing, IndexZeroIgnoresVlanAndMacAsAStart)
{
    five_kept();
    EXPECT_EQ(listed({.ifindex = 0, .vlan = 4095, .mac = LAST_MAC}), ALL);
    expect_messages({invoked(4095, 0), returning(5)});
}

TEST_F(FhrpMacListing, IndexZeroStillFiltersByTheVlan)
{
    five_kept();
    EXPECT_EQ(listed({.vlan = 101, .mac = LAST_MAC, .filter_vlan = 1}), Calls{ALL[4]});
    EXPECT_EQ(listed({.vlan = ROUTED, .mac = LAST_MAC, .filter_vlan = 1}),
              (Calls{ALL[0], ALL[1], ALL[2]}));
}

TEST_F(FhrpMacListing, IndexZeroStillFiltersByTheMac)
{
    five_kept();
    EXPECT_EQ(listed({.vlan = 4095, .mac = OTHER, .filter_mac = 1}), (Calls{ALL[1], ALL[4]}));
}

TEST_F(FhrpMacListing, FiltersTakeAnyNonzeroWord)
{
    five_kept();
    EXPECT_EQ(listed({.mac = OTHER, .filter_mac = -1}), (Calls{ALL[1], ALL[4]}));
    EXPECT_EQ(listed({.vlan = 100, .filter_vlan = 256}), Calls{ALL[3]});
}

TEST_F(FhrpMacListing, BothFiltersMustPass)
{
    five_kept();
    EXPECT_EQ(listed({.vlan = ROUTED, .mac = OTHER, .filter_mac = 1, .filter_vlan = 1}),
              Calls{ALL[1]});
    EXPECT_EQ(listed({.vlan = 100, .mac = OTHER, .filter_mac = 1, .filter_vlan = 1}), Calls{});
    expect_reports({});
}

TEST_F(FhrpMacListing, SkippedEntriesTakeNoRoom)
{
    five_kept();
    EXPECT_EQ(listed({.mac = OTHER, .filter_mac = 1}, 1), Calls{ALL[1]});
    expect_calls({NEXT, NEXT, NEXT});
}

TEST_F(FhrpMacListing, FilterComparesAllBytesOfTheMac)
{
    five_kept();
    Address close = VMAC;
    close.bytes[5] = 0x0a;
    EXPECT_EQ(listed({.mac = close, .filter_mac = 1}), Calls{});
    close = VMAC;
    close.bytes[0] = 0x06;
    EXPECT_EQ(listed({.mac = close, .filter_mac = 1}), Calls{});
}

TEST_F(FhrpMacListing, ResumedOneByOneGivesTheSameList)
{
    five_kept();
    EXPECT_EQ(listed_in_pieces({}, 1), ALL);
}

TEST_F(FhrpMacListing, ResumedInAnyPiecesGivesTheSameList)
{
    five_kept();
    for (int room = 2; room <= 6; ++room) {
        EXPECT_EQ(listed_in_pieces({}, room), ALL) << room;
    }
}

TEST_F(FhrpMacListing, ResumedOneByOneUnderAFilterGivesTheSameList)
{
    five_kept();
    EXPECT_EQ(listed_in_pieces({.vlan = ROUTED, .filter_vlan = 1}, 1),
              (Calls{ALL[0], ALL[1], ALL[2]}));
    EXPECT_EQ(listed_in_pieces({.mac = VMAC, .filter_mac = 1}, 1), (Calls{ALL[0], ALL[2], ALL[3]}));
}

TEST_F(FhrpMacListing, SecondariesAreListedUnderThePrimarysInterface)
{
    const Lif &lif = primary_svi({101, 102});
    added(lif);
    EXPECT_EQ(listed({}), (Calls{line(lif.lif.ifindex, 100, VMAC), line(lif.lif.ifindex, 101, VMAC),
                                 line(lif.lif.ifindex, 102, VMAC)}));
}

TEST_F(FhrpMacListing, RecordIsWrittenWholeAndNothingBeyondIt)
{
    constexpr std::size_t size = 184;
    constexpr std::size_t guard = 24;
    five_kept();
    alignas(8) std::array<std::uint8_t, guard + size + guard> memory{};
    memory.fill(DIRT);
    auto *record = reinterpret_cast<rtifhal_fhrp_mac_record_t *>(&memory[guard]);
    int count = 1;
    rtifhal_trident_fhrp_mac_getnext(THIRD, 100, VMAC.bytes, 0, 0, &count, &record);
    std::array<std::uint8_t, guard + size + guard> expected{};
    expected.fill(DIRT);
    std::memset(&expected[guard], 0, size);
    std::memcpy(&expected[guard], OTHER.bytes, sizeof OTHER.bytes);
    const std::array<std::uint32_t, 5> words = {1, 101, THIRD, 1, 0};
    std::memcpy(&expected[guard + 8], words.data(), sizeof words);
    EXPECT_EQ(count, 1);
    EXPECT_EQ(memory, expected);
}

TEST_F(FhrpMacListing, RecordsBehindTheLastEntryAreLeftAlone)
{
    five_kept();
    std::memset(records.data(), DIRT, sizeof records);
    const auto dirty = [] {
        std::array<std::uint8_t, sizeof(rtifhal_fhrp_mac_record_t)> bytes{};
        bytes.fill(DIRT);
        return bytes;
    }();
    EXPECT_EQ(list({.vlan = 101, .filter_vlan = 1}), 1);
    EXPECT_EQ(std::memcmp(&records[1], dirty.data(), dirty.size()), 0);
}

TEST_F(FhrpMacListing, NullPlaceIsPassedOverAndCounted)
{
    five_kept();
    std::array<rtifhal_fhrp_mac_record_t *, 3> places = {&records[0], nullptr, &records[2]};
    int count = 3;
    EXPECT_EQ(rtifhal_trident_fhrp_mac_getnext(0, 0, ZEROS.bytes, 0, 0, &count, places.data()), 0);
    EXPECT_EQ(count, 3);
    EXPECT_EQ(line(records[0].ifindex, records[0].vlan, mac_of(records[0])), ALL[0]);
    EXPECT_EQ(records[1].ifindex, 0U);
    EXPECT_EQ(line(records[2].ifindex, records[2].vlan, mac_of(records[2])), ALL[2]);
    expect_messages({invoked(0, 0), returning(3)});
}

TEST_F(FhrpMacListing, NullArrayOnlyCounts)
{
    five_kept();
    int count = 4;
    EXPECT_EQ(rtifhal_trident_fhrp_mac_getnext(0, 0, ZEROS.bytes, 0, 0, &count, nullptr), 0);
    EXPECT_EQ(count, 4);
    expect_calls({NEXT, NEXT, NEXT, NEXT, NEXT});
}

TEST_F(FhrpMacListing, NullCountDoesNothing)
{
    five_kept();
    auto *record = records.data();
    EXPECT_EQ(rtifhal_trident_fhrp_mac_getnext(0, 0, ZEROS.bytes, 0, 0, nullptr, &record), 0);
    EXPECT_EQ(records[0].ifindex, 0U);
    expect_calls({});
}

TEST_F(FhrpMacListing, NullMacCountsAsZerosInStartAndFilter)
{
    five_kept();
    rtifhal_fhrp_mac_save(SECOND, ZEROS.bytes, ROUTED, 6);
    auto *record = records.data();
    int count = 1;
    EXPECT_EQ(rtifhal_trident_fhrp_mac_getnext(SECOND, ROUTED, nullptr, 0, 0, &count, &record), 0);
    EXPECT_EQ(line(records[0].ifindex, records[0].vlan, mac_of(records[0])), ALL[2]);
    count = 1;
    EXPECT_EQ(rtifhal_trident_fhrp_mac_getnext(0, 0, nullptr, 1, 0, &count, &record), 0);
    EXPECT_EQ(count, 1);
    EXPECT_EQ(line(records[0].ifindex, records[0].vlan, mac_of(records[0])),
              line(SECOND, ROUTED, ZEROS));
}

TEST_F(FhrpMacListing, MacIsNotReadWithIndexZeroAndNoFilter)
{
    five_kept();
    void *page = mmap(nullptr, 1, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(page, MAP_FAILED);
    EXPECT_EXIT(
        {
            int count = 5;
            rtifhal_trident_fhrp_mac_getnext(0, 0, static_cast<const std::uint8_t *>(page), 0, 0,
                                             &count, nullptr);
            std::_Exit(count);
        },
        ::testing::ExitedWithCode(5), "");
    munmap(page, 1);
}

TEST_F(FhrpMacListing, ListingChangesNeitherTreeNorChip)
{
    const Lif &lif = known_port();
    added(lif);
    const Calls before = kept();
    listed({});
    EXPECT_EQ(kept(), before);
    EXPECT_EQ(stations().size(), 1U);
    EXPECT_EQ(calls_of({"malloc", "rtifhal_get_bcm_unit"}), Calls{});
}

} // namespace rtifhal_test::fhrp_mac_listing
