/*
 * rows_test.cpp: outcomes brought together to rows, rows as a page, and a page
 * that is held against other outcomes.
 */
#include "faults/faults_world.h"
#include "faults/page.h"
#include "faults/row_text.h"
#include "faults/rows.h"
#include "faults/words.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace faults_test
{

namespace
{

using lab::faults::Outcome;
using simswitch::chip::Kind;

Outcome stopped(const std::string &function, std::uint64_t place, int code)
{
    return {.kind = "add a port",
            .variant = "new",
            .asked = "add Ethernet0",
            .failing = {.function = function, .place = place, .code = code},
            .result = code,
            .later = 4,
            .said = function + "(7) failed: no such entry"};
}

/** The outcomes of a call with every code, once and for ever, on both chips. */
std::vector<Outcome> with_all(const Outcome &one)
{
    std::vector<Outcome> all;
    for (const Kind chip : {Kind::trident, Kind::trident2}) {
        for (const int code : lab::faults::ALL_CODES) {
            for (const bool forever : {false, true}) {
                Outcome outcome = one;
                outcome.chip = chip;
                outcome.failing.code = code;
                outcome.failing.forever = forever;
                outcome.result = one.result == one.failing.code ? code : one.result;
                all.push_back(outcome);
            }
        }
    }
    return all;
}

std::vector<std::string> table_of(const std::vector<Outcome> &outcomes)
{
    auto lines = page_lines(lab::faults::rows_of(outcomes));
    lines.erase(lines.begin(), lines.begin() + 4);
    return lines;
}

std::string page_of(const std::vector<Outcome> &outcomes)
{
    lab::faults::SweepResult result;
    result.outcomes = outcomes;
    std::ostringstream out;
    print_page(result, "test.json", out);
    return out.str();
}

void append(std::vector<Outcome> &to, const std::vector<Outcome> &more)
{
    to.insert(to.end(), more.begin(), more.end());
}

} // namespace

TEST(Words, NumbersAndTextsOfErrorsAreLeftOut)
{
    using lab::faults::without_numbers;
    EXPECT_EQ(without_numbers("itf set (0) failed: internal error"), "itf set (N) failed: E");
    EXPECT_EQ(without_numbers("vlan_port(4094,-1) failed: table full"), "vlan_port(N,N) failed: E");
    EXPECT_EQ(without_numbers("bcm_l3_ing of 0x1a000001, l3if"), "bcm_l3_ing of N, l3if");
    EXPECT_EQ(without_numbers(""), "");
}

TEST(Words, DifferencesBecomeSubjects)
{
    using lab::faults::in_words;
    EXPECT_EQ(
        in_words({"- L3 interface Ethernet0: mac 1", "+ L3 interface Ethernet0: mac 2",
                  "- L3 ingress Ethernet0: vrf 1", "+ VLAN 10 members {0,1}", "+ VLAN 10 stg 2",
                  "+ VLAN 10 umc {}", "+ VLAN 10 used by 1 ports, 0 SVI, 0 L2",
                  "- VLAN 11 members {1}", "+ VLAN 11 members {1,2}", "+ port 3 untagged 4094",
                  "- interface Ethernet0 up", "+ interface Ethernet0 down",
                  "+ 2 blocks of memory"}),
        (std::vector<std::string>{"VLAN", "a block of memory", "count of the VLAN's users",
                                  "other L3 interface", "other members of the VLAN",
                                  "other standing of the interface", "untagged VLAN of the port",
                                  "without ingress object"}));
    EXPECT_EQ(in_words({}), std::vector<std::string>{});
}

TEST(Rows, AllCodesOfACallAreOneRow)
{
    EXPECT_EQ(table_of(with_all(stopped("bcm_f", 1, -1))),
              (std::vector<std::string>{
                  "| `bcm_f`: `bcm_f(N) failed: E` | any code | its code | stops |  | works |"}));
}

TEST(Rows, FunctionsWithTheSameConsequencesShareARow)
{
    auto outcomes = with_all(stopped("bcm_f", 1, -1));
    append(outcomes, with_all(stopped("bcm_f", 2, -1)));
    append(outcomes, with_all(stopped("bcm_g", 3, -1)));
    EXPECT_EQ(table_of(outcomes), (std::vector<std::string>{
                                      "| `bcm_f` 1-2: `bcm_f(N) failed: E`<br>`bcm_g` 3: `bcm_g(N) "
                                      "failed: E` | any code | its code | stops |  | works |"}));
}

TEST(Rows, OtherConsequencesAreOtherRows)
{
    auto outcomes = with_all(stopped("bcm_f", 1, -1));
    for (Outcome &outcome : outcomes) {
        if (outcome.failing.code == -8) {
            outcome.result = 0;
            outcome.made = outcome.failing.forever ? 1 : 2;
            outcome.said = "";
            outcome.stays = {"L3 interface"};
            outcome.lasts = {"+ VLAN 10 stg 2", "- VLAN 10 stg 1"};
        }
        if (outcome.chip == Kind::trident2) {
            outcome.variant = "number kept";
        }
    }
    EXPECT_EQ(table_of(outcomes),
              (std::vector<std::string>{
                  "| `bcm_f`: `bcm_f(N) failed: E` | -1 -4 -6 -7 | its code | stops |  | works |",
                  "| `bcm_f` | -8 | 0 | leaves out 2-3 | L3 interface | works, but for good: other "
                  "group of the VLAN |"}));
}

TEST(Rows, AChipOrAVariantOfItsOwnIsNamed)
{
    auto outcomes = with_all(stopped("bcm_f", 1, -1));
    auto others = with_all(stopped("bcm_g", 1, -1));
    std::erase_if(others, [](const Outcome &one) { return one.chip == Kind::trident; });
    for (Outcome &outcome : others) {
        outcome.variant = "number kept";
        outcome.again = "add Ethernet0: code -1, full";
    }
    append(outcomes, others);
    EXPECT_EQ(
        table_of(outcomes),
        (std::vector<std::string>{
            "| `bcm_f`: `bcm_f(N) failed: E` | any code (new) | its code | stops |  | works |",
            "| `bcm_g`: `bcm_g(N) failed: E` | any code, Trident2 (number kept) | its code | "
            "stops |  | refused: add Ethernet0: code N, full |"}));
}

TEST(Page, TellsWhatItWasMadeOf)
{
    auto outcomes = with_all(stopped("bcm_f", 1, -1));
    append(outcomes, with_all(stopped("bcm_f", 3, -1)));
    auto others = with_all(stopped("bcm_f_more", 2, -1));
    for (Outcome &outcome : others) {
        outcome.said = "a|b";
        outcome.variant = "number kept";
        outcome.stays = {outcome.failing.forever ? "L3 interface" : "other|port"};
        outcome.result = 0;
    }
    append(outcomes, others);
    EXPECT_EQ(untold(page_of(outcomes), outcomes), std::vector<std::string>{});
}

TEST(Page, OfTheDocumentationBeginsAsItIsPrinted)
{
    std::ostringstream begin;
    lab::faults::print_page({}, "examples/faults.json", begin);
    EXPECT_TRUE(failures_page().starts_with(begin.str())) << "'./dev faults --write' makes it anew";
}

TEST(Page, DoesNotTellWhatHasChanged)
{
    const auto outcomes = with_all(stopped("bcm_f", 1, -1));
    const std::string page = page_of(outcomes);
    std::vector<Outcome> changed(6, outcomes.front());
    changed[0].result = 0;
    changed[1].made = 4;
    changed[2].failing.place = 2;
    changed[3].said = "something else";
    changed[4].again = "add Ethernet0: code -1";
    changed[5].kind = "add a tunnel";
    EXPECT_EQ(untold(page, changed).size(), changed.size());
    EXPECT_EQ(untold(page, changed).front(),
              "Trident add a port, add Ethernet0: call 1 of bcm_f gives -1: result 0, 0 of 4 later "
              "calls made, says \"bcm_f(N) failed: E\", leaves \"\", again \"works\"");
}

} // namespace faults_test
