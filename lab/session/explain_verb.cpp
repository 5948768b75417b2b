/*
 * explain_verb.cpp: the command that tells what a number of the chip stands for.
 * explain/explain.h finds it out.
 */
#include "session/verbs.h"

#include "explain/explain.h"
#include "explain/report.h"
#include "session/errors.h"

#include <fmt/format.h>

namespace lab::session
{

Outcome run_explain(State &state, const Words &words)
{
    const explain::Finding finding = explain::explain(state, words[0], words[1]);
    if (!finding.found) {
        throw Impossible(finding.title);
    }
    return {"", explain::text_of(finding)};
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
