/*
 * session_verbs.cpp: the commands that are on no interface or address: IPv6 of
 * the switch, faults, showing, expecting, saving, help.
 */
#include "session/verbs.h"

#include "config/names.h"
#include "config/shown.h"
#include "session/comparison.h"
#include "session/errors.h"
#include "session/expect.h"
#include "session/nearest.h"
#include "session/platform_functions.h"
#include "session/tables.h"

#include "report/text.h"

#include "rtifhal_property.h"

#include <fmt/format.h>
#include <fmt/ostream.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <sstream>
#include <utility>
#include <vector>

namespace lab::session
{

namespace
{

constexpr std::string_view CALLS = "calls";
constexpr std::string_view PACKET = "packet";
constexpr std::string_view ALWAYS = "always";

int parse_code(const std::string &word)
{
    int code = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), code);
    if (error != std::errc{} || end != word.data() + word.size()) {
        throw UsageError(fmt::format("a code is a number such as -1, not '{}'", word));
    }
    return code;
}

/** Which call of a function fails. */
void parse_place(const std::string &word, simswitch::Fault &fault)
{
    if (word == ALWAYS) {
        fault.forever = true;
        return;
    }
    const auto nth = config::parse_number(word);
    if (!nth || *nth == 0) {
        throw UsageError(
            fmt::format("which call fails is a number from 1, or 'always', not '{}'{}", word,
                        nearest(word, {std::string(ALWAYS)}) ? ": did you mean 'always'?" : ""));
    }
    fault.nth = *nth;
}

/** Looks whether a word can stand alone behind `fail`, or begin what stands there. */
void check_fault(const std::string &word)
{
    std::vector<std::string> known = platform_functions();
    known.emplace_back("off");
    if (std::find(known.begin(), known.end(), word) == known.end()) {
        throw UsageError(unknown("function", word, known));
    }
}

/**
 * The tables with the rows of a key, those without any left out.
 *
 * @throws UsageError for a key that none of these tables could have
 */
std::vector<Table> rows_of(const std::vector<Table> &tables, const std::string &key)
{
    std::vector<Table> found;
    for (const Table &table : tables) {
        Table kept = table;
        kept.rows.clear();
        for (const Row *row : table.find(key)) {
            kept.rows.push_back(*row);
            kept.rows.back().shown = true;
        }
        if (!kept.rows.empty()) {
            found.push_back(std::move(kept));
        }
    }
    if (found.empty()) {
        check_key(tables.front(), key);
    }
    return found;
}

std::string show_tables(const State &state, const Words &words)
{
    const Scene scene = state.scene();
    std::vector<Table> tables;
    for (const TableKind &kind : table_kinds()) {
        if (kind.show == words.front()) {
            tables.push_back(kind.make(scene));
        }
    }
    if (words.size() == 2) {
        tables = rows_of(tables, words[1]);
        if (tables.empty()) {
            return fmt::format("no {} {}\n", words[0], words[1]);
        }
    }
    std::ostringstream out;
    for (const Table &table : tables) {
        out << (out.tellp() > 0 ? "\n" : "");
        print(table, state.width, out);
    }
    return out.str();
}

/** The commands, each on a line where the terminal has room for it. */
std::string list_of_verbs(Width width)
{
    std::size_t usage = 0;
    std::size_t help = 0;
    for (const Verb &known : verbs()) {
        usage = std::max(usage, known.usage.size());
        help = std::max(help, known.help.size());
    }
    const bool side_by_side = width == 0 || usage + help + 2 <= width;
    std::string text;
    for (const Verb &known : verbs()) {
        text += side_by_side ? fmt::format("{:<{}}  {}\n", known.usage, usage, known.help)
                             : fmt::format("{}\n    {}\n", known.usage, known.help);
    }
    return text;
}

} // namespace

Outcome run_ipv6(State &state, const Words &words)
{
    const int value = is_on(words.front()) ? 1 : 0;
    const std::string command = fmt::format("ipv6 {}", words.front());
    return state.finish(command, {{command, l3lif::make_request(state.hardware, command, [value] {
                                       return rtifhal_set_kelvo_l3_ipv6_config(value);
                                   })}});
}

Outcome run_fail(State &state, const Words &words)
{
    if (words.size() == 1) {
        if (words.front() != "off") {
            check_fault(words.front());
            throw UsageError("the code is missing that the call fails with, such as -1");
        }
        state.hardware.journal.disarm();
        return {"all faults are off"};
    }
    check_function(words.front());
    simswitch::Fault fault;
    fault.function = words.front();
    fault.code = parse_code(words.back());
    if (words.size() == 3) {
        parse_place(words[1], fault);
    }
    const std::string which = fault.forever    ? "each call"
                              : fault.nth == 1 ? "the next call"
                                               : fmt::format("call {} from here", fault.nth);
    Outcome outcome{fmt::format("{} gives {}", which, fault.code)};
    state.hardware.journal.arm(std::move(fault));
    return outcome;
}

std::vector<std::string> show_names()
{
    std::vector<std::string> names = {std::string(CALLS)};
    for (const TableKind &kind : table_kinds()) {
        if (std::find(names.begin(), names.end(), kind.show) == names.end()) {
            names.emplace_back(kind.show);
        }
    }
    return names;
}

Outcome run_show(State &state, const Words &words)
{
    const std::string &name = words.front();
    const auto names = show_names();
    if (std::find(names.begin(), names.end(), name) == names.end()) {
        throw UsageError(unknown("table", name, names) +
                         fmt::format(" (known: {})", fmt::join(names, ", ")));
    }
    if (name != CALLS && name != PACKET) {
        return {"", show_tables(state, words)};
    }
    if (words.size() == 2) {
        throw UsageError(fmt::format("show {} takes no key: it shows the last {}", name,
                                     name == CALLS ? "command's" : "one"));
    }
    if (name == PACKET) {
        return {"", packet_text(state)};
    }
    std::ostringstream out;
    if (state.last.empty()) {
        out << "nothing was asked of the library yet\n";
    } else {
        state.last.print(out);
    }
    return {"", out.str()};
}

Outcome run_expect(State &state, const Words &words)
{
    const bool wanted = words.front() != "no";
    const Words what(words.begin() + (wanted ? 0 : 1), words.end());
    if (!what.empty() && what.front() == "explain") {
        check_explanation(state, what, wanted);
        return {"as expected"};
    }
    check(words, state.scene(), state.last);
    Outcome outcome{"as expected"};
    outcome.looked = looks_at_outcome(words);
    return outcome;
}

Outcome run_save(State &state, const Words & /*words*/)
{
    if (state.state_dir.empty()) {
        throw Impossible("nothing can be saved: the store is in memory; start with --state DIR");
    }
    const std::size_t waiting = state.hardware.wrappers.pending();
    const auto report = state.hardware.wrappers.flush();
    const std::size_t interfaces = state.hardware.store.stored_interfaces().size();
    const bool global = state.hardware.store.global_config().has_value();
    Outcome outcome{fmt::format(
        "{} written out; {} holds {}{}", report::counted(waiting, "waiting write"),
        config::harmless(state.state_dir.string()), report::counted(interfaces, "interface"),
        global ? " and the global configuration" : "")};
    if (report.refused != 0) {
        outcome.refused = true;
        outcome.shown = fmt::format("    {}\n", report.text);
    }
    return outcome;
}

Outcome run_quit(State & /*state*/, const Words & /*words*/)
{
    Outcome outcome{""};
    outcome.quit = true;
    return outcome;
}

Outcome run_help(State &state, const Words &words)
{
    if (!words.empty()) {
        const Verb &known = verb(words.front());
        return {"", fmt::format("{}\n    {}\n", known.usage, known.help)};
    }
    return {"", list_of_verbs(state.width)};
}

} // namespace lab::session
