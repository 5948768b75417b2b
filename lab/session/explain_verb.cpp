/*
 * explain_verb.cpp: the command that tells what a number of the chip stands for,
 * and the expectation on it. explain/explain.h finds it out.
 */
#include "session/verbs.h"

#include "explain/explain.h"
#include "explain/report.h"
#include "session/errors.h"
#include "session/expect.h"
#include "session/words.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace lab::session
{

namespace
{

// How many lines are shown as what was seen instead.
constexpr std::size_t EXPLANATION_LINES_MAX = 12;

/** A text with one blank between its words. */
std::string with_single_blanks(const std::string &text)
{
    std::istringstream words(text);
    std::string result;
    for (std::string word; words >> word;) {
        result += (result.empty() ? "" : " ") + word;
    }
    return result;
}

} // namespace

Outcome run_explain(State &state, const Words &words)
{
    const explain::Finding finding = explain::explain(state, words[0], words[1]);
    if (!finding.found) {
        throw Impossible(finding.title);
    }
    return {"", explain::text_of(finding)};
}

void check_explanation(const State &state, const Words &words, bool wanted)
{
    if (words.size() < 3 || words.size() > 4 || words.back().empty()) {
        throw UsageError("expect explain needs a kind and a number, and perhaps a text of one of "
                         "the lines, in quotes, as in: expect explain iif 3 \"Ethernet0\"");
    }
    const explain::Finding finding = explain::explain(state, words[1], words[2]);
    const std::string expected = (wanted ? "" : "no ") + as_written(words);
    if (words.size() == 3) {
        if (finding.found != wanted) {
            throw Unmet(expected, finding.title);
        }
        return;
    }
    const std::vector<std::string> lines = explain::lines_of(finding);
    std::vector<std::string> with_text;
    const std::string text = with_single_blanks(words[3]);
    std::ranges::copy_if(lines, std::back_inserter(with_text), [&text](const std::string &line) {
        return line.find(text) != std::string::npos;
    });
    if (with_text.empty() == wanted) {
        throw Unmet(expected, first_lines(wanted ? lines : with_text, EXPLANATION_LINES_MAX));
    }
}

std::vector<std::string> explain_continuations(const Words &words, const State &state)
{
    if (words.empty()) {
        return explain::subject_words();
    }
    std::vector<std::string> numbers;
    if (words.size() == 1) {
        for (const int number : explain::known_numbers(state, words.front())) {
            numbers.push_back(fmt::to_string(number));
        }
    }
    return numbers;
}

} // namespace lab::session
