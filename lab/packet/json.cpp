/*
 * json.cpp: an explanation for machines. See report.h; docs/packets.md tells the
 * object's shape.
 */
#include "packet/report.h"

#include <nlohmann/json.hpp>

#include <array>
#include <cstddef>
#include <ostream>
#include <string>
#include <utility>

namespace lab::packet
{

namespace
{

using Json = nlohmann::ordered_json;

/** A text; null for an empty one. */
Json text_or_null(const std::string &text)
{
    return text.empty() ? Json(nullptr) : Json(text);
}

Json line_object(const ExplainedLine &line)
{
    constexpr std::array<const char *, 3> MARKS = {"hit", "miss", "none"};
    return {{"mark", MARKS.at(static_cast<std::size_t>(line.mark))},
            {"stage", simswitch::chip::pipeline::text(line.stage)},
            {"table", text_or_null(line.table)},
            {"id", text_or_null(line.id)},
            {"text", line.text},
            {"author", text_or_null(line.author)},
            {"authors", line.authors},
            {"nearest", text_or_null(line.nearest)}};
}

} // namespace

void print_json(const Explanation &explanation, std::ostream &out)
{
    Json lines = Json::array();
    for (const ExplainedLine &line : explanation.lines) {
        lines.push_back(line_object(line));
    }
    Json sent = Json::array();
    for (const SentPort &port : explanation.sent) {
        sent.push_back({{"port", port.name},
                        {"chip_port", port.port},
                        {"tag", port.tagged ? Json(explanation.vlan) : Json(nullptr)}});
    }
    Json changes = Json::array();
    for (const auto &change : explanation.changes) {
        changes.push_back(
            {{"field", change.field}, {"before", change.before}, {"after", change.after}});
    }
    const Json object = {{"in",
                          {{"port", explanation.port_name},
                           {"chip_port", explanation.port},
                           {"note", text_or_null(explanation.note)},
                           {"interface", text_or_null(explanation.interface)},
                           {"vrf", text_or_null(explanation.vrf)},
                           {"size", explanation.size},
                           {"frame", explanation.frame}}},
                         {"stages", std::move(lines)},
                         {"fate", explanation.fate()},
                         {"reason", explanation.reason_text},
                         {"detail", text_or_null(explanation.detail)},
                         {"sent", std::move(sent)},
                         {"vlan", explanation.vlan == 0 ? Json(nullptr) : Json(explanation.vlan)},
                         {"copied_to_cpu", explanation.copied_to_cpu},
                         {"cpu_reason", text_or_null(explanation.cpu_reason)},
                         {"changes", std::move(changes)},
                         {"nearest", text_or_null(explanation.nearest)},
                         {"same_fate", explanation.fates},
                         {"summary", explanation.summary()}};
    out << object.dump(2, ' ', true, Json::error_handler_t::replace) << '\n';
}

} // namespace lab::packet
