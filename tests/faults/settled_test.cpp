/*
 * settled_test.cpp: docs/failures.md held against settled_rules.h: the result
 * of each failing call of an add or delete of an interface, and whether the
 * request goes on behind it.
 */
#include "faults/faults_world.h"
#include "faults/settled_rules.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace faults_test
{

namespace
{

constexpr std::array<std::string_view, 10> KINDS = {
    "add a port",
    "add a port-channel",
    "add a VLAN interface",
    "add a subinterface of a port",
    "add a tunnel",
    "delete a port",
    "delete a port-channel",
    "delete a VLAN interface",
    "delete a subinterface of a port",
    "delete a tunnel",
};

/** A call of a row of the page. */
struct Told {
    std::string kind;
    std::string function;
    std::string message;
    std::string fails;
    std::string result;
    std::string then;

    std::string text() const
    {
        return fmt::format("{}: {} \"{}\" ({}): {}, {}", kind, function, message, fails, result,
                           then);
    }
};

std::vector<std::string> split(std::string_view text, std::string_view between)
{
    std::vector<std::string> parts;
    for (std::size_t end = text.find(between); end != std::string_view::npos;
         end = text.find(between)) {
        parts.emplace_back(text.substr(0, end));
        text.remove_prefix(end + between.size());
    }
    parts.emplace_back(text);
    return parts;
}

/** Takes "`function` 1-3: `message`" apart. */
Told told_by(const std::string &call)
{
    Told told;
    const std::size_t end = call.find('`', 1);
    told.function = call.substr(1, end - 1);
    const std::size_t message = call.find(": `", end);
    if (message != std::string::npos) {
        told.message = call.substr(message + 3, call.size() - message - 4);
    }
    return told;
}

/** What the page says of calls that fail once, in the kinds above. */
std::vector<Told> told_calls()
{
    std::vector<Told> all;
    std::istringstream page(failures_page());
    std::string kind;
    for (std::string line; std::getline(page, line);) {
        if (line.starts_with("## ")) {
            kind = line.substr(3);
        }
        const bool is_row = line.starts_with("| `") && std::ranges::count(KINDS, kind) == 1;
        const auto cells = is_row ? split(line.substr(2), " | ") : std::vector<std::string>{};
        if (cells.size() != 6 || cells[1].find("for ever") != std::string::npos) {
            continue;
        }
        for (const std::string &call : split(cells[0], "<br>")) {
            Told told = told_by(call);
            told.kind = kind;
            told.fails = cells[1];
            told.result = cells[2];
            told.then = cells[3];
            all.push_back(std::move(told));
        }
    }
    return all;
}

/** Whether a text is a pattern's, in which each * stands for any words. */
bool fits(std::string_view text, std::string_view pattern)
{
    const std::size_t star = pattern.find('*');
    if (star == std::string_view::npos) {
        return text == pattern;
    }
    if (!text.starts_with(pattern.substr(0, star))) {
        return false;
    }
    const std::string_view rest = pattern.substr(star + 1);
    for (std::size_t at = star; at <= text.size(); ++at) {
        if (fits(text.substr(at), rest)) {
            return true;
        }
    }
    return false;
}

/** Whether a rule is for the codes with which a row's calls fail. */
bool is_for(const Rule &rule, const std::string &fails)
{
    std::string codes = fails.substr(0, fails.find_first_of(",("));
    while (codes.ends_with(' ')) {
        codes.pop_back();
    }
    return rule.codes.empty() || rule.codes == codes;
}

const Rule *find_rule(const Told &told)
{
    const auto *const rule = std::ranges::find_if(RULES, [&](const Rule &one) {
        return fits(told.kind, one.kind) && fits(told.function, one.function) &&
               told.message.starts_with(one.message) && is_for(one, told.fails);
    });
    return rule == RULES.end() ? nullptr : rule;
}

/** Whether a row's "then" is a rule's. */
bool is_then(const Told &told, Then then)
{
    const bool leaves_out = told.then.starts_with("leaves out ");
    switch (then) {
    case Then::goes_on:
        return told.then == "goes on";
    case Then::goes_less:
        return told.then == "goes on" || leaves_out;
    case Then::part_stops:
        return told.then == "stops" || leaves_out;
    case Then::stops:
        break;
    }
    // The members of a port-channel are requests of their own to the library.
    return told.then == "stops" || (leaves_out && told.kind.ends_with("port-channel"));
}

} // namespace

TEST(SettledFailures, ResultAndWhatFollowsAreAsSettledForEachStep)
{
    const auto calls = told_calls();
    EXPECT_GT(calls.size(), 150U);
    for (const Told &told : calls) {
        const Rule *rule = find_rule(told);
        EXPECT_NE(rule, nullptr) << "no rule for " << told.text();
        EXPECT_TRUE(rule != nullptr && (rule->result.empty() || told.result == rule->result) &&
                    is_then(told, rule->then))
            << told.text();
    }
}

TEST(SettledFailures, EachKindIsOnThePage)
{
    std::set<std::string> kinds;
    for (const Told &told : told_calls()) {
        kinds.insert(told.kind);
    }
    EXPECT_EQ(kinds.size(), KINDS.size());
}

TEST(SettledFailures, AStarStandsForAnyWords)
{
    EXPECT_TRUE(fits("add a port-channel", "add*"));
    EXPECT_TRUE(fits("delete a VLAN interface", "* a VLAN interface"));
    EXPECT_TRUE(fits("bcm_vlan_control_vlan_get", "*vlan_control_vlan*"));
    EXPECT_FALSE(fits("add a port-channel", "add a port"));
    EXPECT_FALSE(fits("delete a port", "add*"));
}

} // namespace faults_test
