/*
 * report.cpp: see report.h.
 */
#include "explain/report.h"

#include "config/shown.h"
#include "report/text_table.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace lab::explain
{

namespace
{

constexpr const char *UNKNOWN_AUTHOR = "-";
constexpr const char *AUTHOR_NOTE =
    "-: there from power-on, or written before a restart; the chip keeps its tables over one,\n"
    "and not who wrote them\n";

/** "set up Vlan100, add Vlan100"; of more than two "add Ethernet0 +39". */
std::string since_text(const Fact &fact)
{
    if (!fact.is_entry) {
        return "";
    }
    switch (fact.authors.size()) {
    case 0:
        return UNKNOWN_AUTHOR;
    case 1:
        return fact.authors[0];
    case 2:
        return fmt::format("{}, {}", fact.authors[0], fact.authors[1]);
    default:
        return fmt::format("{} +{}", fact.authors[0], fact.authors.size() - 1);
    }
}

} // namespace

std::string text_of(const Finding &finding)
{
    report::TextTable table({{"OBJECT", false}, {"ID", false}, {"WHAT", false}, {"SINCE", false}},
                            0);
    bool has_unknown = false;
    for (const Section &section : finding.sections) {
        for (const Fact &fact : section.facts) {
            table.add({fact.what, fact.id, fact.text, since_text(fact)});
            has_unknown = has_unknown || (fact.is_entry && fact.authors.empty());
        }
    }
    if (table.size() == 0) {
        return fmt::format("{}\n", config::harmless(finding.title));
    }
    std::string text = fmt::format("{}\n\n  {}\n", config::harmless(finding.title), table.titles());
    std::size_t line = 0;
    for (const Section &section : finding.sections) {
        text += fmt::format("{}\n", section.title);
        for (std::size_t i = 0; i < section.facts.size(); ++i) {
            text += fmt::format("  {}\n", table.line(line++, ""));
        }
    }
    return has_unknown ? fmt::format("{}\n{}", text, AUTHOR_NOTE) : text;
}

std::vector<std::string> lines_of(const Finding &finding)
{
    std::vector<std::string> lines = {config::harmless(finding.title)};
    for (const Section &section : finding.sections) {
        lines.emplace_back(section.title);
        for (const Fact &fact : section.facts) {
            std::string line = fact.what;
            for (const std::string &part : {fact.id, fact.text, since_text(fact)}) {
                line += part.empty() ? "" : " " + part;
            }
            lines.push_back(config::harmless(line));
        }
    }
    return lines;
}

std::string json_of(const Finding &finding)
{
    using Json = nlohmann::ordered_json;
    Json sections = Json::array();
    for (const Section &section : finding.sections) {
        Json facts = Json::array();
        for (const Fact &fact : section.facts) {
            facts.push_back({{"object", fact.what}, {"id", fact.id}, {"text", fact.text}});
            if (fact.is_entry) {
                facts.back()["since"] = fact.authors;
            }
        }
        sections.push_back({{"title", section.title}, {"objects", std::move(facts)}});
    }
    const Json object = {
        {"found", finding.found}, {"title", finding.title}, {"sections", std::move(sections)}};
    return object.dump(2, ' ', true, Json::error_handler_t::replace) + "\n";
}

} // namespace lab::explain
