/*
 * capture_report.cpp: what became of a capture, for people and for machines. See
 * capture.h.
 */
#include "packet/capture.h"

#include "config/shown.h"
#include "report/text.h"
#include "report/text_table.h"

#include <fmt/format.h>
#include <fmt/ostream.h>
#include <nlohmann/json.hpp>

#include <ostream>

namespace lab::packet
{

namespace
{

void print_not_taken(const CaptureResult &result, std::ostream &out)
{
    for (const NotTaken &some : result.not_taken) {
        fmt::print(out, "  {} not taken: {}, frame {} the first\n",
                   report::counted(some.frames.frames, "frame"), some.why, some.frames.first);
    }
    if (result.backwards != 0) {
        fmt::print(out, "  {} earlier than one before: taken at the time of that one\n",
                   report::counted(result.backwards, "frame"));
    }
    if (!result.broken.empty()) {
        fmt::print(out, "  the file can't be read behind frame {}: {}\n", result.frames,
                   report::plain(result.broken));
    }
}

void print_out(const CaptureResult &result, std::ostream &out)
{
    if (result.out.empty()) {
        out << "\nNothing left the switch.\n";
        return;
    }
    report::TextTable table({{"PORT"}, {"FRAMES", true}, {"BYTES", true}, {"FILE"}}, 0);
    for (const CaptureOut &port : result.out) {
        table.add({port.port, std::to_string(port.traffic.frames),
                   std::to_string(port.traffic.bytes), port.file.string()});
    }
    out << '\n' << table.titles() << '\n';
    for (std::size_t i = 0; i < table.size(); ++i) {
        out << table.line(i, "") << '\n';
    }
}

} // namespace

void print_text(const CaptureResult &result, std::ostream &out)
{
    fmt::print(out, "{}: {}, {} into {}\n", config::harmless(result.in.string()),
               report::counted(result.frames, "frame"),
               result.tally.frames() == result.frames ? "all"
                                                      : fmt::to_string(result.tally.frames()),
               result.port);
    print_not_taken(result, out);
    if (result.tally.frames() != 0) {
        out << '\n';
        print(result.tally, out);
    }
    print_out(result, out);
}

void print_json(const CaptureResult &result, std::ostream &out)
{
    using Json = nlohmann::ordered_json;
    Json not_taken = Json::array();
    for (const NotTaken &some : result.not_taken) {
        not_taken.push_back(
            {{"reason", some.why}, {"frames", some.frames.frames}, {"first", some.frames.first}});
    }
    Json ports = Json::array();
    for (const CaptureOut &port : result.out) {
        ports.push_back({{"port", port.port},
                         {"frames", port.traffic.frames},
                         {"bytes", port.traffic.bytes},
                         {"file", port.file.string()}});
    }
    const Json object = {{"capture", result.in.string()},
                         {"port", result.port},
                         {"frames", result.frames},
                         {"taken", result.tally.frames()},
                         {"not_taken", std::move(not_taken)},
                         {"earlier_than_before", result.backwards},
                         {"broken", result.broken.empty() ? Json() : Json(result.broken)},
                         {"fates", json_of(result.tally)},
                         {"out", std::move(ports)}};
    // A path may be no UTF-8.
    out << object.dump(2, ' ', true, Json::error_handler_t::replace) << '\n';
}

} // namespace lab::packet
