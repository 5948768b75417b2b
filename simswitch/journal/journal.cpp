/*
 * journal.cpp: the list of calls and the armed faults. Beside it: call.h, the
 * helper that fills it.
 */
#include "journal/journal.h"

#include <algorithm>
#include <fmt/format.h>

namespace simswitch
{

std::string_view layer_name(Layer layer)
{
    switch (layer) {
    case Layer::sdk:
        return "sdk";
    case Layer::wrapper:
        return "wrapper";
    case Layer::store:
        return "store";
    case Layer::service:
        return "service";
    }
    return "?";
}

std::string CallRecord::text() const
{
    std::string text;
    text.reserve(function.size() + arguments.size() + result.size() + outputs.size() + 8);
    text += function;
    text += '(';
    text += arguments;
    text += ')';
    if (!result.empty()) {
        text += " = ";
        text += result;
    }
    if (!outputs.empty()) {
        text += " [";
        text += outputs;
        text += ']';
    }
    return text;
}

std::uint64_t Journal::begin_request(std::string name)
{
    requests_.push_back(std::move(name));
    if (keep_ == Keep::request) {
        records_.clear();
    }
    return requests_.size();
}

std::string_view Journal::request_name(std::uint64_t request) const
{
    if (request == 0 || request > requests_.size()) {
        return {};
    }
    return requests_[request - 1];
}

void Journal::arm(Fault fault)
{
    faults_.push_back({.fault = std::move(fault)});
}

void Journal::disarm()
{
    faults_.clear();
}

std::vector<std::string> Journal::calls(std::size_t from) const
{
    std::vector<std::string> texts;
    const auto first =
        records_.begin() + static_cast<std::ptrdiff_t>(std::min(from, records_.size()));
    texts.reserve(static_cast<std::size_t>(std::count_if(
        first, records_.end(), [](const auto &record) { return !record.trace_sink; })));
    for (std::size_t i = from; i < records_.size(); ++i) {
        if (!records_[i].trace_sink) {
            texts.push_back(records_[i].text());
        }
    }
    return texts;
}

std::uint64_t Journal::count(std::string_view function) const
{
    return static_cast<std::uint64_t>(
        std::ranges::count(records_, function, &CallRecord::function));
}

void Journal::clear()
{
    records_.clear();
}

std::string Journal::line(const CallRecord &record) const
{
    std::string line =
        fmt::format("{:06} {:<8} {}", record.sequence, layer_name(record.layer), record.text());
    if (!record.reason.empty()) {
        line += "  (" + record.reason + ")";
    }
    if (record.request != 0) {
        line += fmt::format("  #{} {}", record.request, request_name(record.request));
    }
    return line;
}

std::size_t Journal::add(CallRecord record)
{
    record.sequence = next_sequence_++;
    record.request = requests_.size();
    calls_made_ += record.trace_sink ? 0U : 1U;
    records_.push_back(std::move(record));
    return records_.size() - 1;
}

CallRecord *Journal::at(std::size_t index)
{
    return index < records_.size() ? &records_[index] : nullptr;
}

std::optional<int> Journal::take_fault(const CallRecord &record)
{
    std::optional<int> code;
    for (Armed &armed : faults_) {
        const Fault &fault = armed.fault;
        const bool fits =
            fault.function.empty() ? !record.trace_sink : fault.function == record.function;
        if (armed.spent || !fits || (fault.when && !fault.when(record.arguments))) {
            continue;
        }
        ++armed.seen;
        if (armed.seen < fault.nth) {
            continue;
        }
        armed.spent = !fault.forever;
        if (!code) {
            code = fault.code;
        }
    }
    return code;
}

} // namespace simswitch
