/*
 * expect.cpp: see expect.h.
 */
#include "session/expect.h"

#include "session/comparison.h"
#include "session/errors.h"
#include "session/nearest.h"
#include "session/platform_functions.h"
#include "session/tables.h"
#include "session/words.h"

#include "report/text.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <string_view>

namespace lab::session
{

namespace
{

// What isn't a row of a table; run_expect has the last one.
constexpr std::array<std::string_view, 4> OTHER_SUBJECTS = {"code", "call", "message", "explain"};
constexpr std::string_view COUNT = "count";
// How many calls or messages are shown as what was seen instead.
constexpr std::size_t SEEN_MAX = 6;

const TableKind *find_kind(std::string_view subject)
{
    for (const TableKind &kind : table_kinds()) {
        if (kind.subject == subject) {
            return &kind;
        }
    }
    return nullptr;
}

// What the last command came to.

void need_request(const LastRequest &last)
{
    if (last.empty()) {
        throw UsageError("nothing was asked of the library yet");
    }
}

bool matches_call(const std::string &call, const std::string &wanted)
{
    return wanted.find('(') == std::string::npos ? function_of(call) == wanted
                                                 : call.starts_with(wanted);
}

void check_call(const Words &words, bool wanted, const LastRequest &last)
{
    if (words.size() < 2) {
        throw UsageError("expect call needs a function's name, or the beginning of a call");
    }
    const std::string function(function_of(words[1]));
    check_function(function);
    need_request(last);
    const auto calls = last.calls();
    std::vector<std::string> found;
    std::vector<std::string> of_function;
    for (const std::string &call : calls) {
        if (matches_call(call, words[1])) {
            found.push_back(call);
        }
        if (function_of(call) == function) {
            of_function.push_back(call);
        }
    }
    if (words.size() > 2) {
        const Words tail(words.begin() + 2, words.end());
        if (tail.front() != COUNT || !wanted) {
            throw UsageError("behind a call stands nothing, or count = N");
        }
        const Comparison comparison = take_comparison({tail.begin() + 1, tail.end()});
        if (!holds(comparison, {fmt::to_string(found.size())})) {
            throw Unmet(as_written(words),
                        fmt::format("{}{}", report::counted(found.size(), "call"),
                                    first_lines(of_function, SEEN_MAX)));
        }
        return;
    }
    if (wanted && found.empty()) {
        throw Unmet(
            as_written(words),
            of_function.empty()
                ? fmt::format("{}, none of {}", report::counted(calls.size(), "call"), function)
                : first_lines(of_function, SEEN_MAX));
    }
    if (!wanted && !found.empty()) {
        throw Unmet("no " + as_written(words), first_lines(found, SEEN_MAX));
    }
}

void check_message(const Words &words, bool wanted, const LastRequest &last)
{
    if (words.size() != 2 || words[1].empty()) {
        throw UsageError("expect message needs one text, in quotes");
    }
    need_request(last);
    std::vector<std::string> found;
    for (const std::string &message : last.messages()) {
        if (message.find(words[1]) != std::string::npos) {
            found.push_back(message);
        }
    }
    if (wanted && found.empty()) {
        const auto errors = last.errors();
        throw Unmet(
            as_written(words),
            fmt::format(
                "{}, none with that text; {}{}", report::counted(last.messages().size(), "message"),
                errors.empty() ? "no error" : "the errors are:", first_lines(errors, SEEN_MAX)));
    }
    if (!wanted && !found.empty()) {
        throw Unmet("no " + as_written(words), first_lines(found, SEEN_MAX));
    }
}

void check_code(const Words &words, bool wanted, const LastRequest &last)
{
    const Comparison comparison = take_comparison({words.begin() + 1, words.end()});
    if (!wanted) {
        throw UsageError("expect no code makes no sense: use != in place of =");
    }
    need_request(last);
    if (!holds(comparison, {fmt::to_string(last.code())})) {
        const auto errors = last.errors();
        throw Unmet(as_written(words),
                    fmt::format("code {}{}", last.code(), first_lines(errors, SEEN_MAX)));
    }
}

// Rows of a table.

/** The values of a column or control in some rows. */
std::vector<std::string> values_of(const Table &table, const std::vector<const Row *> &rows,
                                   const Words &field, const Scene &scene)
{
    const auto control = field.empty() ? std::nullopt : numbered_control(table, field, rows, scene);
    if (control) {
        return *control;
    }
    if (field.size() > 1) {
        throw UsageError(fmt::format("'{}' is too much: {} has the fields {}", field[1],
                                     table.subject, fmt::join(table.fields(), ", ")));
    }
    const auto column = field.empty() ? std::size_t{0} : table.column(field.front());
    if (!column) {
        throw UsageError(
            unknown("field", field.front(), table.fields()) +
            fmt::format(" (fields of {}: {})", table.subject, fmt::join(table.fields(), ", ")));
    }
    std::vector<std::string> values;
    values.reserve(rows.size());
    for (const Row *row : rows) {
        values.push_back(row->cells[*column]);
    }
    return values;
}

void check_count(const Table &table, const Words &words, const Words &key,
                 const Comparison &comparison)
{
    const std::size_t count = key.empty() ? table.count() : table.find(key.front()).size();
    if (!holds(comparison, {fmt::to_string(count)})) {
        throw Unmet(as_written(words), fmt::to_string(count));
    }
}

void check_presence(const Table &table, const Words &words, bool wanted)
{
    if (words[1] == COUNT) {
        throw UsageError("put '=' and a number behind count");
    }
    const auto sign = std::find_if(words.begin() + 2, words.end(), [](const std::string &word) {
        return !word.empty() && word.find_first_not_of("=!<>") == std::string::npos;
    });
    if (sign != words.end()) {
        throw UsageError(fmt::format("a value is compared by = or !=, not by '{}'", *sign));
    }
    if (words.size() != 2) {
        throw UsageError(fmt::format("put '=' and a value behind it, as in: expect {} {} {} = …",
                                     words[0], words[1], words[2]));
    }
    const auto rows = table.find(words[1]);
    if (rows.empty()) {
        check_key(table, words[1]);
    }
    if (rows.empty() == wanted) {
        throw Unmet((wanted ? "" : "no ") + as_written(words),
                    wanted ? fmt::format("no {} {}", table.subject, words[1]) : "it is there");
    }
}

/** Of a table whose one row needs no key: a field and a value. */
void check_single(const Table &table, const Words &words, bool wanted, const Scene &scene)
{
    constexpr std::size_t SIGN = 2;
    if (!wanted || words.size() <= SIGN || find_sign(words) != SIGN) {
        throw UsageError(fmt::format("expect {0} needs a field, = or !=, and a value, as in: "
                                     "expect {0} {1} = …",
                                     table.subject, table.fields().front()));
    }
    if (table.rows.empty()) {
        throw UsageError(fmt::format("there was no {} yet", table.subject));
    }
    const Comparison comparison = take_comparison({words.begin() + SIGN, words.end()});
    const auto values = values_of(table, {&table.rows.front()}, {words[1]}, scene);
    if (!holds(comparison, values)) {
        const std::string &seen = values.front();
        throw Unmet(as_written(words), seen.empty() ? "nothing" : seen);
    }
}

void check_table(const Table &table, const Words &words, bool wanted, const Scene &scene)
{
    if (table.single) {
        return check_single(table, words, wanted, scene);
    }
    if (words.size() < 2) {
        throw UsageError(fmt::format("expect {} needs a key, or count", table.subject));
    }
    const auto sign = find_sign(words);
    if (sign == words.size()) {
        return check_presence(table, words, wanted);
    }
    if (!wanted) {
        throw UsageError("'no' goes with a key alone: use != in place of =");
    }
    const auto middle = words.begin() + static_cast<std::ptrdiff_t>(sign);
    const Comparison comparison = take_comparison({middle, words.end()});
    Words key(words.begin() + 1, middle);
    if (!key.empty() && key.back() == COUNT && key.size() <= 2) {
        key.pop_back();
        return check_count(table, words, key, comparison);
    }
    if (key.empty()) {
        throw UsageError(fmt::format("expect {} needs a key, or count", table.subject));
    }
    // The controls of the switch belong to one thing that needs no key.
    const bool keyless = numbered_control(table, key, {}, scene).has_value();
    const Words field(key.begin() + (keyless ? 0 : 1), key.end());
    const auto rows = keyless ? std::vector<const Row *>{} : table.find(key.front());
    if (rows.empty() && !keyless) {
        check_key(table, key.front());
        values_of(table, rows, field, scene);
        throw Unmet(as_written(words), fmt::format("no {} {}", table.subject, key.front()));
    }
    const auto values = values_of(table, rows, field, scene);
    if (!holds(comparison, values)) {
        throw Unmet(as_written(words), fmt::format("{}", fmt::join(values, " and ")));
    }
}

// What may come next.

Words signs()
{
    return {"=", "!="};
}

/** What may stand behind a table's subject. */
Words keys_expected(const Table &table)
{
    Words keys = table.known_keys;
    for (const Row &row : table.rows) {
        if (row.shown) {
            keys.insert(keys.end(), row.keys.begin(), row.keys.end());
        }
    }
    keys.emplace_back(table.subject == "switch" ? "control" : COUNT);
    return keys;
}

/** What may stand behind a table's subject and key. @param words  those, and more, but no sign */
Words behind_key(const Table &table, const Words &words)
{
    const std::string &key = words[1];
    if (table.subject == "switch" && key == "control") {
        return words.size() == 3 ? signs() : Words{};
    }
    if (words.size() == 2) {
        Words next = signs();
        if (key == COUNT) {
            return next;
        }
        const Words fields = table.fields();
        next.insert(next.end(), fields.begin(), fields.end());
        if (table.subject == "port") {
            next.insert(next.end(), {"control", "vlan-control"});
        }
        next.emplace_back(COUNT);
        return next;
    }
    const bool numbered = words[2] == "control" || words[2] == "vlan-control";
    return words.size() == (numbered ? 4 : 3) ? signs() : Words{};
}

} // namespace

std::string first_lines(const std::vector<std::string> &lines, std::size_t most)
{
    const std::size_t shown = std::min(lines.size(), most);
    std::string text;
    for (std::size_t i = 0; i < shown; ++i) {
        text += fmt::format("\n      {}", lines[i]);
    }
    if (shown < lines.size()) {
        text += fmt::format("\n      and {} more", lines.size() - shown);
    }
    return text;
}

void check(const Words &words, const Scene &scene, const LastRequest &last)
{
    const bool wanted = words.empty() || words.front() != "no";
    const Words rest(words.begin() + (wanted ? 0 : 1), words.end());
    if (rest.empty()) {
        throw UsageError("expect needs what is expected, such as: expect code = 0");
    }
    const std::string &subject = rest.front();
    if (subject == "code") {
        check_code(rest, wanted, last);
    } else if (subject == "call") {
        check_call(rest, wanted, last);
    } else if (subject == "message") {
        check_message(rest, wanted, last);
    } else if (const TableKind *kind = find_kind(subject)) {
        check_table(kind->make(scene), rest, wanted, scene);
    } else {
        throw UsageError(unknown("subject", subject, expect_subjects()));
    }
}

bool looks_at_outcome(const Words &words)
{
    const std::size_t at = !words.empty() && words.front() == "no" ? 1 : 0;
    return words.size() > at && (words[at] == "code" || words[at] == "message");
}

std::vector<std::string> expect_subjects()
{
    std::vector<std::string> subjects(OTHER_SUBJECTS.begin(), OTHER_SUBJECTS.end());
    for (const TableKind &kind : table_kinds()) {
        subjects.emplace_back(kind.subject);
    }
    return subjects;
}

std::vector<std::string> expect_continuations(const Words &words, const Scene &scene)
{
    const std::size_t at = !words.empty() && words.front() == "no" ? 1 : 0;
    if (words.size() == at) {
        auto subjects = expect_subjects();
        if (at == 0) {
            subjects.emplace_back("no");
        }
        return subjects;
    }
    const std::size_t behind = words.size() - at;
    if (find_sign(words) != words.size()) {
        return {};
    }
    if (words[at] == "code") {
        return behind == 1 && at == 0 ? signs() : Words{};
    }
    if (words[at] == "call") {
        return behind == 1              ? platform_functions()
               : behind == 2 && at == 0 ? Words{std::string(COUNT)}
               : behind == 3 && at == 0 ? signs()
                                        : Words{};
    }
    const TableKind *kind = find_kind(words[at]);
    if (kind == nullptr) {
        return {};
    }
    const Table table = kind->make(scene);
    if (table.single) {
        return behind == 1 ? table.fields() : behind == 2 ? signs() : Words{};
    }
    if (behind == 1) {
        return keys_expected(table);
    }
    return at == 0 ? behind_key(table, words) : Words{};
}

} // namespace lab::session
