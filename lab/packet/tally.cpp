/*
 * tally.cpp: see tally.h.
 */
#include "packet/tally.h"

#include "report/text_table.h"

#include <functional>
#include <ostream>
#include <string>
#include <string_view>

namespace lab::packet
{

namespace
{

namespace pipeline = simswitch::chip::pipeline;

std::string_view verdict_text(pipeline::Verdict verdict)
{
    switch (verdict) {
    case pipeline::Verdict::sent:
        return "sent";
    case pipeline::Verdict::to_cpu:
        return "to CPU";
    case pipeline::Verdict::dropped:
        break;
    }
    return "dropped";
}

using Line =
    std::function<void(std::string_view fate, pipeline::Reason reason, const Count &count)>;

/** All fates in their order: sent, to the CPU, dropped, then copies. */
void for_each(const Tally &tally, const Line &line)
{
    for (const auto &[key, count] : tally.fates()) {
        const auto &[verdict, reason] = key;
        line(verdict_text(verdict), reason, count);
    }
    for (const auto &[reason, count] : tally.copies()) {
        line("CPU too", reason, count);
    }
}

} // namespace

void Tally::came_in(std::uint64_t number, const pipeline::Result &result)
{
    ++frames_;
    fates_[{result.verdict, result.reason}].add(number);
    if (result.verdict == Verdict::sent && result.cpu) {
        copies_[result.cpu_reason].add(number);
    }
}

void Tally::went_out(int port, std::size_t bytes)
{
    Traffic &traffic = out_[port];
    ++traffic.frames;
    traffic.bytes += bytes;
}

void print(const Tally &tally, std::ostream &out)
{
    if (tally.frames() == 0) {
        return;
    }
    report::TextTable table({{"FATE"}, {"FRAMES", true}, {"FIRST", true}, {"REASON"}}, 0);
    for_each(tally, [&table](std::string_view fate, pipeline::Reason reason, const Count &count) {
        table.add({std::string(fate), std::to_string(count.frames), std::to_string(count.first),
                   pipeline::text(reason)});
    });
    out << table.titles() << '\n';
    for (std::size_t i = 0; i < table.size(); ++i) {
        out << table.line(i, "") << '\n';
    }
}

nlohmann::ordered_json json_of(const Tally &tally)
{
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for_each(tally, [&list](std::string_view fate, pipeline::Reason reason, const Count &count) {
        list.push_back({{"fate", fate},
                        {"reason", pipeline::text(reason)},
                        {"frames", count.frames},
                        {"first", count.first}});
    });
    return list;
}

} // namespace lab::packet
