/*
 * library_test.cpp: see library_test.h.
 */
#include "support/library_test.h"

#include <algorithm>
#include <sstream>

namespace rtifhal_test
{

namespace
{

std::string visible(const std::string &text)
{
    std::string shown;
    for (const char c : text) {
        shown += c == '\n' ? std::string("\\n") : std::string(1, c);
    }
    return shown;
}

/** Expected and seen side by side, the first difference marked. */
std::string side_by_side(const std::vector<std::string> &expected,
                         const std::vector<std::string> &seen)
{
    std::size_t width = 20;
    for (const auto &line : expected) {
        width = std::max(width, line.size());
    }
    std::ostringstream text;
    text << "   " << std::string("expected").append(width - 8, ' ') << " | seen\n";
    for (std::size_t i = 0; i < std::max(expected.size(), seen.size()); ++i) {
        const std::string left = i < expected.size() ? expected[i] : "";
        const std::string right = i < seen.size() ? seen[i] : "";
        text << (left == right ? "   " : " ! ") << left << std::string(width - left.size(), ' ')
             << " | " << right << '\n';
    }
    return text.str();
}

std::vector<std::string> lines_of(const std::vector<Message> &messages)
{
    std::vector<std::string> lines;
    for (const auto &message : messages) {
        std::ostringstream line;
        line << message;
        lines.push_back(line.str());
    }
    return lines;
}

std::vector<Message> of_level(const std::vector<Message> &messages, int level)
{
    std::vector<Message> chosen;
    std::copy_if(messages.begin(), messages.end(), std::back_inserter(chosen),
                 [level](const Message &message) { return message.level == level; });
    return chosen;
}

} // namespace

std::ostream &operator<<(std::ostream &stream, const Message &message)
{
    return stream << message.level << ' ' << message.function << ' ' << visible(message.text);
}

Message trace(std::string function, std::string text)
{
    return {104, std::move(function), std::move(text)};
}

Message report(std::string function, std::string text)
{
    return {102, std::move(function), std::move(text)};
}

LibraryTest::LibraryTest(const simswitch::Options &options) : sw(options)
{
    reset_library();
    start();
}

void LibraryTest::start()
{
    sw.journal.clear();
    sw.trace.clear();
    sw.heap.tracking = true;
}

std::vector<std::string> LibraryTest::calls() const
{
    return sw.journal.calls();
}

std::vector<std::string> LibraryTest::calls_of(const std::vector<std::string> &functions) const
{
    std::vector<std::string> chosen;
    for (const auto &record : sw.journal.records()) {
        if (std::find(functions.begin(), functions.end(), record.function) != functions.end()) {
            chosen.push_back(record.text());
        }
    }
    return chosen;
}

std::vector<Message> LibraryTest::messages() const
{
    std::vector<Message> seen;
    for (const auto &message : sw.trace.messages()) {
        seen.push_back({message.level, message.function, message.text});
    }
    return seen;
}

std::vector<Message> LibraryTest::reports() const
{
    return of_level(messages(), 102);
}

void LibraryTest::expect_calls(const std::vector<std::string> &expected) const
{
    const auto seen = calls();
    EXPECT_EQ(expected == seen, true) << side_by_side(expected, seen);
}

void LibraryTest::expect_messages(const std::vector<Message> &expected) const
{
    const auto seen = messages();
    EXPECT_EQ(expected == seen, true) << side_by_side(lines_of(expected), lines_of(seen));
}

void LibraryTest::expect_reports(const std::vector<Message> &expected) const
{
    const auto seen = reports();
    EXPECT_EQ(expected == seen, true) << side_by_side(lines_of(expected), lines_of(seen));
}

void LibraryTest::fail(const std::string &function, int code, std::uint64_t nth)
{
    sw.journal.arm({.function = function, .code = code, .nth = nth});
}

void LibraryTest::fail_when(const std::string &function, const std::string &arguments, int code)
{
    sw.journal.arm({.function = function,
                    .code = code,
                    .forever = true,
                    .when = [arguments](std::string_view seen) { return seen == arguments; }});
}

} // namespace rtifhal_test
