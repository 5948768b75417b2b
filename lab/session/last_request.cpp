/*
 * last_request.cpp: see last_request.h.
 */
#include "session/last_request.h"

#include "l3lif/layer.h"
#include "report/text.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>
#include <ostream>

namespace lab::session
{

namespace
{

/** A message without the line ends that it was made with. */
std::string on_one_line(std::string text)
{
    std::replace(text.begin(), text.end(), '\n', ' ');
    const std::size_t first = text.find_first_not_of(' ');
    return first == std::string::npos ? ""
                                      : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

} // namespace

bool Step::refused() const
{
    return gives_station ? request.code == l3lif::Layer::NO_STATION : !request.ok();
}

int LastRequest::code() const
{
    if (steps_.size() == 1) {
        return steps_.front().request.code;
    }
    const auto first =
        std::find_if(steps_.begin(), steps_.end(), [](const Step &step) { return step.refused(); });
    return first == steps_.end() ? 0 : first->request.code;
}

bool LastRequest::refused() const
{
    return std::any_of(steps_.begin(), steps_.end(),
                       [](const Step &step) { return step.refused(); });
}

std::size_t LastRequest::call_count() const
{
    std::size_t count = 0;
    for (const Step &step : steps_) {
        count += step.request.call_count;
    }
    return count;
}

std::vector<std::string> LastRequest::calls() const
{
    std::vector<std::string> all;
    for (const Step &step : steps_) {
        all.insert(all.end(), step.request.calls.begin(), step.request.calls.end());
    }
    return all;
}

std::vector<std::string> LastRequest::messages() const
{
    std::vector<std::string> all;
    for (const Step &step : steps_) {
        for (const auto &message : step.request.messages) {
            all.push_back(on_one_line(message.text));
        }
    }
    return all;
}

std::vector<std::string> LastRequest::errors() const
{
    std::vector<std::string> errors;
    for (const Step &step : steps_) {
        for (const std::string &text : step.request.errors()) {
            const std::string error = on_one_line(text);
            errors.push_back(steps_.size() == 1 ? error : fmt::format("{}: {}", step.asked, error));
        }
    }
    return errors;
}

std::string LastRequest::silent_refusal() const
{
    const auto found = std::find_if(steps_.begin(), steps_.end(), [](const Step &step) {
        return step.refused() && step.request.errors().empty();
    });
    return found == steps_.end() ? "" : found->request.refused_call;
}

void LastRequest::print(std::ostream &out) const
{
    const bool several = steps_.size() > 1;
    if (several) {
        fmt::print(out, "{}\n", command_);
    }
    for (const Step &step : steps_) {
        fmt::print(out, "{}{}: code {}, {}, {}\n", several ? "  " : "", step.asked,
                   step.request.code, report::counted(step.request.call_count, "call"),
                   report::counted(step.request.messages.size(), "message"));
        report::View view;
        view.calls = true;
        view.trace = true;
        report::print_request(step.request, view, out);
    }
}

std::string_view function_of(std::string_view call)
{
    return call.substr(0, call.find('('));
}

} // namespace lab::session
