/*
 * check.cpp: see check.h.
 */
#include "model/check.h"

#include "config/reader.h"

#include <fmt/format.h>

#include <rapidcheck/detail/TestListenerAdapter.h>

#include <fstream>
#include <string>
#include <unordered_map>
#include <vector>

namespace model_test
{

namespace
{

std::filesystem::path write_script(const CheckOptions &options, const std::string &text)
{
    auto out = options.out.empty() ? std::filesystem::temp_directory_path() /
                                         fmt::format("lifecycle-{}.rtif", options.seed)
                                   : options.out;
    std::ofstream(out) << text;
    return out;
}

std::string told(const CheckOptions &options, const Checked &checked)
{
    std::string seen;
    for (const Difference &one : checked.shortest.differences) {
        seen += fmt::format("    {}: expected {}, seen {}\n", one.key, one.expected, one.seen);
    }
    const bool is_trident2 = options.chip == simswitch::chip::Kind::trident2;
    return fmt::format(
        "seed {}: the switch and the model differ after\n{}\nin\n{}\nrtif run "
        "--chip {} {}{}\n",
        options.seed, checked.shortest.text(), seen, is_trident2 ? "trident2" : "trident",
        checked.shortest.restarts != 0 ? "--state $(mktemp -d) " : "", checked.out.string());
}

} // namespace

Checked &Checked::operator+=(const Checked &other)
{
    steps += other.steps;
    lifecycles += other.lifecycles;
    faults += other.faults;
    restarts += other.restarts;
    if (text.empty()) {
        text = other.text;
        out = other.out;
        shortest = other.shortest;
    }
    return *this;
}

Checked check_lifecycles(const CheckOptions &options)
{
    const auto config = lab::config::read_config(options.config);
    const auto lists = any_steps(config, options.draw);
    Walk begin = options.walk;
    begin.config = options.config;
    begin.chip = options.chip;
    Checked checked;
    // RapidCheck shrinks the list while it goes on failing: the last failure is the shortest.
    const auto property = [&] {
        const std::vector<Step> steps = *lists;
        Walked walked = walk(begin, steps);
        if (!walked.differences.empty()) {
            checked.shortest = std::move(walked);
            RC_FAIL("differs");
        }
        if (!checked.shortest.differences.empty()) {
            return; // A try to shrink that shows nothing.
        }
        ++checked.lifecycles;
        checked.steps += walked.steps;
        checked.faults += walked.faults;
        checked.restarts += walked.restarts;
    };
    rc::detail::TestParams params;
    params.seed = options.seed;
    params.maxSuccess = options.lifecycles;
    params.maxSize = options.length;
    // A listener of our own: the ordinary one tells of a seed that isn't this one.
    rc::detail::TestListenerAdapter silent;
    const rc::detail::TestResult result =
        rc::detail::checkTestable(property, rc::detail::TestMetadata(), params, silent,
                                  std::unordered_map<std::string, rc::detail::Reproduce>());
    rc::detail::FailureResult failure;
    if (result.match(failure)) {
        checked.out = write_script(options, checked.shortest.text());
        checked.text = told(options, checked);
    } else if (!result.is<rc::detail::SuccessResult>()) {
        checked.text = "no lifecycles could be drawn\n";
    }
    return checked;
}

} // namespace model_test
