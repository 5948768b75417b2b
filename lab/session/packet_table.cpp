/*
 * packet_table.cpp: the last packet as a table of one row, for expectations.
 * packet/report.h shows it to people.
 */
#include "session/tables.h"

#include "packet/explanation.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>

namespace lab::session
{

namespace
{

namespace pipeline = simswitch::chip::pipeline;
using packet::ExplainedLine;
using packet::Explanation;

void append(std::string &list, const std::string &word)
{
    list += (list.empty() ? "" : ",") + word;
}

/** What the way out changed a field to; the field as a column has it, "DESTINATION-MAC". */
std::string changed_to(const Explanation &told, std::string_view title)
{
    for (const pipeline::Change &change : told.changes) {
        std::string field = change.field;
        std::transform(field.begin(), field.end(), field.begin(), [](unsigned char letter) {
            return letter == ' ' ? '-' : static_cast<char>(std::toupper(letter));
        });
        if (field == title) {
            return change.after;
        }
    }
    return "";
}

/** The prefix of the route that was taken, "10.2.0.0/16". */
std::string route_of(const Explanation &told)
{
    for (const ExplainedLine &line : told.lines) {
        if (line.stage == pipeline::Stage::route && line.mark == pipeline::Mark::hit) {
            return line.id.substr(line.id.rfind(' ') + 1);
        }
    }
    return "";
}

/** The stage that missed last. */
std::string miss_of(const Explanation &told)
{
    std::string stage;
    for (const ExplainedLine &line : told.lines) {
        if (line.mark == pipeline::Mark::miss) {
            stage = pipeline::text(line.stage);
        }
    }
    return stage;
}

} // namespace

Table packet_table(const Scene &scene)
{
    Table table{"packets",
                "packet",
                {{"FATE"},
                 {"PORT"},
                 {"TAG"},
                 {"VLAN", true},
                 {"REASON"},
                 {"DETAIL"},
                 {"NEAREST"},
                 {"MISS"},
                 {"IN"},
                 {"INTERFACE"},
                 {"VRF"},
                 {"ROUTE"},
                 {"COPY"},
                 {"DESTINATION-MAC"},
                 {"SOURCE-MAC"},
                 {"INNER-TAG"},
                 {"TTL"},
                 {"HOP-LIMIT"},
                 {"CHECKSUM"},
                 {"OUTER-SOURCE"},
                 {"OUTER-DESTINATION"},
                 {"OUTER-PROTOCOL"}},
                {},
                {}};
    table.single = true;
    if (scene.packet == nullptr) {
        return table;
    }
    const Explanation &told = *scene.packet;
    std::string ports;
    std::string tags;
    for (const packet::SentPort &port : told.sent) {
        append(ports, port.name);
        append(tags, port.tagged ? fmt::to_string(told.vlan) : "untagged");
    }
    Row row{{},
            {told.fate(), ports, tags, unless_zero(told.vlan), told.reason_text, told.detail,
             told.nearest, miss_of(told), told.port_name, told.interface, told.vrf, route_of(told),
             told.copied_to_cpu ? told.cpu_reason : ""}};
    while (row.cells.size() < table.columns.size()) {
        row.cells.push_back(changed_to(told, table.columns[row.cells.size()].title));
    }
    table.rows.push_back(std::move(row));
    return table;
}

} // namespace lab::session
