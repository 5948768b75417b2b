/*
 * dump_bitmap_test.cpp: the dump of interface numbers as ranges, how it breaks
 * into lines, and the dump of both tables.
 *
 * dump_l3lif_test.cpp has the dump of an interface.
 */
#include "support/l3_objects.h"
#include "support/library_test.h"

#include <services/cmd.h>

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

namespace rtifhal_test::dump_bitmap
{

namespace
{

using Lines = std::vector<std::string>;
using Bits = std::vector<unsigned>;

constexpr unsigned BITS = 8192;
constexpr std::size_t LIST_MAX = 62;
const std::string HEAD = " l3lif bitmap: ";

std::unique_ptr<l3iif_bitmap_t> bitmap(const Bits &bits)
{
    auto made = std::make_unique<l3iif_bitmap_t>();
    made->size = sizeof made->bits;
    for (const unsigned bit : bits) {
        std::uint8_t &byte = made->bits[bit / 8];
        byte = static_cast<std::uint8_t>(byte | (0x80U >> (bit % 8)));
    }
    return made;
}

/** All bits of these ranges, both ends included. */
Bits ranges(const std::vector<std::pair<unsigned, unsigned>> &wanted)
{
    Bits bits;
    for (const auto &[first, last] : wanted) {
        for (unsigned bit = first; bit <= last; ++bit) {
            bits.push_back(bit);
        }
    }
    return bits;
}

std::string line(const std::string &list)
{
    return HEAD + list + "\n";
}

/** The bits that a list of ranges names. */
Bits bits_of(const std::string &list)
{
    Bits bits;
    std::size_t at = 0;
    while (at < list.size()) {
        const std::size_t end = std::min(list.find(',', at), list.size());
        const std::string run = list.substr(at, end - at);
        const std::size_t dash = run.find('-');
        const auto first = static_cast<unsigned>(std::stoul(run));
        const auto last = dash == std::string::npos
                              ? first
                              : static_cast<unsigned>(std::stoul(run.substr(dash + 1)));
        for (unsigned bit = first; bit <= last; ++bit) {
            bits.push_back(bit);
        }
        at = end + 1;
    }
    return bits;
}

/** `count` bits from `first` on, each a run of its own. */
Bits lone_bits(unsigned first, unsigned count)
{
    Bits bits(count);
    for (unsigned i = 0; i < count; ++i) {
        bits[i] = first + 2 * i;
    }
    return bits;
}

/** The list of such bits. */
std::string list_of(const Bits &lone)
{
    return fmt::format("{}", fmt::join(lone, ","));
}

Bits joined(Bits bits, const Bits &more)
{
    bits.insert(bits.end(), more.begin(), more.end());
    return bits;
}

class DumpBitmap : public LibraryTest
{
protected:
    /** The lines that a command gets; noted with each is where the dump stands. */
    Lines dumped(const Bits &bits)
    {
        auto &output = sw.command_outputs.open();
        positions.clear();
        sw.journal.disarm();
        sw.journal.arm({.function = "cmd_prt", .forever = true, .when = [this](std::string_view) {
                            positions.push_back(printf_curr_idx);
                            return false;
                        }});
        fwm_dump_bitmap(bitmap(bits).get(), &output);
        return output.lines();
    }

    /** Prints as above; the command moves the dump to `place` with the first line. */
    Lines dumped_moved_to(int place, const Bits &bits)
    {
        sw.journal.disarm();
        bool moved = false;
        sw.journal.arm(
            {.function = "cmd_prt", .forever = true, .when = [&moved, place](std::string_view) {
                 if (!std::exchange(moved, true)) {
                     printf_curr_idx = place;
                 }
                 return false;
             }});
        auto &output = sw.command_outputs.open();
        fwm_dump_bitmap(bitmap(bits).get(), &output);
        sw.journal.disarm();
        return output.lines();
    }

    /** The lists alone; every line has its head and its end. */
    Lines lists(const Bits &bits)
    {
        Lines found;
        for (const std::string &text : dumped(bits)) {
            EXPECT_TRUE(text.starts_with(HEAD) && text.ends_with("\n")) << text;
            found.push_back(text.substr(HEAD.size(), text.size() - HEAD.size() - 1));
        }
        return found;
    }

    std::vector<int> positions;
};

class DumpTables : public LibraryTest
{
protected:
    Lines dumped(std::uint32_t ignored = 0)
    {
        auto &output = sw.command_outputs.open();
        rtifhal_kelvo_dump_global_info(ignored, &output);
        return output.lines();
    }
};

} // namespace

TEST_F(DumpBitmap, EmptyOneGivesOneLine)
{
    EXPECT_EQ(dumped({}), Lines{" l3lif bitmap: \n"});
    EXPECT_EQ(positions, std::vector<int>{0});
}

TEST_F(DumpBitmap, RunsOfBitsAreRanges)
{
    EXPECT_EQ(dumped({1, 2, 3, 7}), Lines{" l3lif bitmap: 1-3,7\n"});
    EXPECT_EQ(dumped({4, 5}), Lines{line("4-5")});
    EXPECT_EQ(dumped({4, 6}), Lines{line("4,6")});
    EXPECT_EQ(dumped({9}), Lines{line("9")});
}

TEST_F(DumpBitmap, LineGoesToTheTraceWithoutACommand)
{
    fwm_dump_bitmap(bitmap({1, 2, 3, 7}).get(), nullptr);
    expect_calls({});
    expect_messages({trace("fwm_dump_bitmap", " l3lif bitmap: 1-3,7\n")});
}

TEST_F(DumpBitmap, LineGoesToTheCommandAlone)
{
    dumped({1, 2, 3, 7});
    expect_calls({R"(cmd_prt(command, " l3lif bitmap: 1-3,7\n", 0) = 0)"});
    expect_messages({});
}

TEST_F(DumpBitmap, BitIsCountedFromTheTopOfItsByteInEveryByteOfAWord)
{
    for (const unsigned bit : {0U, 7U, 8U, 15U, 16U, 23U, 24U, 31U, 32U, 8160U, 8191U}) {
        EXPECT_EQ(dumped({bit}), Lines{line(fmt::format("{}", bit))});
    }
}

TEST_F(DumpBitmap, RunsGoOnFromWordToWord)
{
    EXPECT_EQ(dumped(ranges({{7, 8}, {30, 33}, {62, 129}})), Lines{line("7-8,30-33,62-129")});
}

TEST_F(DumpBitmap, FirstAndLastBit)
{
    EXPECT_EQ(dumped({0, BITS - 1}), Lines{line("0,8191")});
    EXPECT_EQ(positions, std::vector<int>{0});
}

TEST_F(DumpBitmap, RunEndsWithTheTableWhateverIsBehindIt)
{
    struct {
        l3iif_bitmap_t table;
        std::uint8_t behind[8];
    } memory = {*bitmap({BITS - 2, BITS - 1}), {0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff}};
    auto &output = sw.command_outputs.open();
    fwm_dump_bitmap(&memory.table, &output);
    EXPECT_EQ(output.lines(), Lines{line("8190-8191")});
}

TEST_F(DumpBitmap, FullOneIsOneRange)
{
    EXPECT_EQ(dumped(ranges({{0, BITS - 1}})), Lines{line("0-8191")});
}

TEST_F(DumpBitmap, AllButOneBit)
{
    EXPECT_EQ(dumped(ranges({{1, BITS - 1}})), Lines{line("1-8191")});
    EXPECT_EQ(dumped(ranges({{0, BITS - 2}})), Lines{line("0-8190")});
    EXPECT_EQ(dumped(ranges({{0, 99}, {101, BITS - 1}})), Lines{line("0-99,101-8191")});
}

TEST_F(DumpBitmap, SizeWordIsSkipped)
{
    for (const std::uint32_t size : {0U, 1U, 0xffffffffU}) {
        const auto made = bitmap({0, 8191});
        made->size = size;
        auto &output = sw.command_outputs.open();
        fwm_dump_bitmap(made.get(), &output);
        EXPECT_EQ(output.lines(), Lines{line("0,8191")});
    }
}

TEST_F(DumpBitmap, ListOf62CharactersFits)
{
    const Bits bits = joined({10}, lone_bits(100, 15));
    const std::string list = list_of(bits);
    ASSERT_EQ(list.size(), LIST_MAX);
    EXPECT_EQ(lists(bits), Lines{list});
    EXPECT_EQ(positions, std::vector<int>{0});
}

TEST_F(DumpBitmap, ListOf63CharactersBreaksAndTheVeryLastRunEndsTheDump)
{
    const Bits bits = joined({0, 1, 2}, lone_bits(100, 15));
    const std::string list = "0-2," + list_of(lone_bits(100, 15));
    ASSERT_EQ(list.size(), LIST_MAX + 1);
    EXPECT_EQ(lists(bits), (Lines{"0-2," + list_of(lone_bits(100, 14)), "128"}));
    EXPECT_EQ(positions, (std::vector<int>{126, 0}));
}

TEST_F(DumpBitmap, RangeThatEndsAt62CharactersFits)
{
    const Bits before = joined({2, 10}, lone_bits(100, 12));
    const std::string list = list_of(before) + ",1000-1001";
    ASSERT_EQ(list.size(), LIST_MAX);
    EXPECT_EQ(lists(joined(before, {1000, 1001})), Lines{list});
    EXPECT_EQ(lists(joined(before, {1000, 1001, 2000})), (Lines{list, "2000"}));
    EXPECT_EQ(positions, (std::vector<int>{1001, 0}));
}

TEST_F(DumpBitmap, RangeThatWouldEndAt63CharactersStandsWholeOnTheNextLine)
{
    const Bits before = joined({10, 11, 12}, lone_bits(100, 12));
    const std::string list = "10-12," + list_of(lone_bits(100, 12));
    ASSERT_EQ(list.size() + std::string(",1000-1001").size(), LIST_MAX + 1);
    EXPECT_EQ(lists(joined(before, {1000, 1001})), (Lines{list, "1000-1001"}));
    EXPECT_EQ(positions, (std::vector<int>{122, 0}));
    EXPECT_EQ(lists(joined(before, {1000, 1001, 2000})), (Lines{list, "1000-1001,2000"}));
}

TEST_F(DumpBitmap, RunBehindAFullLineBeginsTheNextOneWithoutAComma)
{
    const Bits first = joined({10}, lone_bits(100, 15));
    const Bits second = lone_bits(1000, 12); // 59 characters
    const Bits bits = joined(joined(first, second), {5000});
    EXPECT_EQ(lists(bits), (Lines{list_of(first), list_of(second), "5000"}));
    EXPECT_EQ(positions, (std::vector<int>{128, 1022, 0}));
}

TEST_F(DumpBitmap, LineThatBreaksAtTheLastBitOfAll)
{
    const Bits bits = joined(lone_bits(1000, 12), {8191});
    EXPECT_EQ(lists(bits), (Lines{list_of(lone_bits(1000, 12)), "8191"}));
}

TEST_F(DumpBitmap, AlternatingBitsComeInOrderOnFullLines)
{
    for (const unsigned first : {0U, 1U}) {
        const Bits bits = lone_bits(first, BITS / 2);
        const Lines found = lists(bits);
        Bits seen;
        for (std::size_t i = 0; i < found.size(); ++i) {
            const Bits part = bits_of(found[i]);
            ASSERT_FALSE(part.empty()) << i;
            seen = joined(std::move(seen), part);
            EXPECT_LE(found[i].size(), LIST_MAX);
            const bool is_last = i + 1 == found.size();
            EXPECT_EQ(positions.at(i), is_last ? 0 : static_cast<int>(part.back()));
            if (!is_last) { // the next run would not have found room
                const std::string next = found[i + 1].substr(0, found[i + 1].find(','));
                EXPECT_GT(found[i].size() + 1 + next.size(), LIST_MAX) << found[i];
            }
        }
        EXPECT_TRUE(seen == bits);
        EXPECT_GT(found.size(), 300U);
    }
}

TEST_F(DumpBitmap, RangesWithOneBitBetweenComeInOrder)
{
    Bits bits(BITS);
    std::iota(bits.begin(), bits.end(), 0U);
    std::erase_if(bits, [](unsigned bit) { return bit % 3 == 2; });
    Bits seen;
    for (const std::string &list : lists(bits)) {
        EXPECT_LE(list.size(), LIST_MAX);
        EXPECT_NE(list.front(), ',');
        seen = joined(std::move(seen), bits_of(list));
    }
    EXPECT_TRUE(seen == bits);
    EXPECT_EQ(printf_curr_idx, 0);
}

TEST_F(DumpBitmap, ManyLinesGoToTheTraceToo)
{
    const Bits bits = lone_bits(0, BITS / 2);
    const Lines expected = dumped(bits);
    start();
    fwm_dump_bitmap(bitmap(bits).get(), nullptr);
    Lines seen;
    for (const Message &message : messages()) {
        EXPECT_EQ(message.level, 104);
        EXPECT_EQ(message.function, "fwm_dump_bitmap");
        seen.push_back(message.text);
    }
    EXPECT_TRUE(seen == expected);
    expect_calls({});
}

TEST_F(DumpBitmap, PlaceThatTheCommandMovesBeforeTheFirstNumberIsTheFirst)
{
    const Bits bits = lone_bits(0, 40);
    Lines expected = dumped(bits);
    ASSERT_GT(expected.size(), 1U);
    expected.insert(expected.begin(), expected.front());
    EXPECT_EQ(dumped_moved_to(-7, bits), expected);
}

TEST_F(DumpBitmap, NumberRightAboveThePlaceThatTheCommandMovesComesNext)
{
    const Bits bits = lone_bits(0, 40);
    const Lines expected = {dumped(bits).front(), line("70,72,74,76,78")};
    EXPECT_EQ(dumped_moved_to(69, bits), expected);
}

TEST_F(DumpBitmap, PositionOfAnEarlierDumpDoesNotCount)
{
    for (const int left : {5000, 3, -1, 8191, 100000}) {
        printf_curr_idx = left;
        EXPECT_EQ(dumped({3, 4, 5000}), Lines{line("3-4,5000")});
        EXPECT_EQ(printf_curr_idx, 0);
        printf_curr_idx = left;
        EXPECT_EQ(dumped({}), Lines{line("")});
        EXPECT_EQ(printf_curr_idx, 0);
    }
}

TEST_F(DumpBitmap, BitmapStaysAsItIs)
{
    const Bits bits = lone_bits(0, BITS / 2);
    const auto made = bitmap(bits);
    const l3iif_bitmap_t before = *made;
    fwm_dump_bitmap(made.get(), nullptr);
    EXPECT_EQ(std::memcmp(made.get(), &before, sizeof before), 0);
}

TEST_F(DumpBitmap, NullPrintsNothing)
{
    auto &output = sw.command_outputs.open();
    fwm_dump_bitmap(nullptr, &output);
    fwm_dump_bitmap(nullptr, nullptr);
    expect_calls({});
    expect_messages({});
}

TEST_F(DumpBitmap, CommandThatIsGoneDoesNotStopTheDump)
{
    auto &output = sw.command_outputs.open();
    void *const handle = &output;
    sw.command_outputs.close(handle);
    fwm_dump_bitmap(bitmap(lone_bits(1000, 24)).get(), handle);
    EXPECT_EQ(sw.journal.count("cmd_prt"), 2U);
    EXPECT_EQ(printf_curr_idx, 0);
    expect_messages({});
}

TEST_F(DumpTables, AreTheNumbersInUseAndThenThoseHeldBack)
{
    for (const unsigned iif : {3U, 4U, 5U, 9U}) {
        take(iif);
    }
    hold_back(50);
    EXPECT_EQ(dumped(), (Lines{line("3-5,9,50"), line("50")}));
    expect_messages({});
}

TEST_F(DumpTables, AreTwoEmptyOnesBeforeTheFirstInterface)
{
    EXPECT_EQ(dumped(), (Lines{line(""), line("")}));
    expect_calls({R"(cmd_prt(command, " l3lif bitmap: \n", 0) = 0)",
                  R"(cmd_prt(command, " l3lif bitmap: \n", 0) = 0)"});
    EXPECT_EQ(l3lif_l3iif_table_inited, 0U);
}

TEST_F(DumpTables, ShowTheReservedNumbersAfterTheSetUp)
{
    l3iif_table_init();
    start();
    EXPECT_EQ(dumped(), (Lines{line("0-2,3584-8191"), line("")}));
}

TEST_F(DumpTables, GoToTheTraceWithoutACommand)
{
    take(3);
    hold_back(50);
    rtifhal_kelvo_dump_global_info(0, nullptr);
    expect_calls({});
    expect_messages({trace("fwm_dump_bitmap", line("3,50")), trace("fwm_dump_bitmap", line("50"))});
}

TEST_F(DumpTables, FirstWordIsIgnored)
{
    take(3);
    EXPECT_EQ(dumped(0), dumped(0xffffffff));
}

} // namespace rtifhal_test::dump_bitmap
