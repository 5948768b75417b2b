/*
 * outcome.cpp: see outcome.h.
 */
#include "faults/outcome.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace lab::faults
{

std::string to_line(const Outcome &outcome)
{
    const nlohmann::json json = {
        {"chip", static_cast<int>(outcome.chip)},
        {"road", outcome.road},
        {"kind", outcome.kind},
        {"variant", outcome.variant},
        {"asked", outcome.asked},
        {"function", outcome.failing.function},
        {"place", outcome.failing.place},
        {"code", outcome.failing.code},
        {"forever", outcome.failing.forever},
        {"has_code", outcome.failing.has_code},
        {"result", outcome.result},
        {"later", outcome.later},
        {"made", outcome.made},
        {"other", outcome.other},
        {"said", outcome.said},
        {"stays", outcome.stays},
        {"again", outcome.again},
        {"lasts", outcome.lasts},
        {"broken", outcome.broken},
    };
    return json.dump(-1, ' ', true, nlohmann::json::error_handler_t::replace);
}

Outcome from_line(const std::string &line)
{
    const auto json = nlohmann::json::parse(line);
    Outcome outcome;
    outcome.chip = static_cast<simswitch::chip::Kind>(json.at("chip").get<int>());
    json.at("road").get_to(outcome.road);
    json.at("kind").get_to(outcome.kind);
    json.at("variant").get_to(outcome.variant);
    json.at("asked").get_to(outcome.asked);
    json.at("function").get_to(outcome.failing.function);
    json.at("place").get_to(outcome.failing.place);
    json.at("code").get_to(outcome.failing.code);
    json.at("forever").get_to(outcome.failing.forever);
    json.at("has_code").get_to(outcome.failing.has_code);
    json.at("result").get_to(outcome.result);
    json.at("later").get_to(outcome.later);
    json.at("made").get_to(outcome.made);
    json.at("other").get_to(outcome.other);
    json.at("said").get_to(outcome.said);
    json.at("stays").get_to(outcome.stays);
    json.at("again").get_to(outcome.again);
    json.at("lasts").get_to(outcome.lasts);
    json.at("broken").get_to(outcome.broken);
    return outcome;
}

std::string pace(const Outcome &outcome)
{
    if (outcome.made == outcome.later) {
        return outcome.later == 0 ? "last call" : "goes on";
    }
    return outcome.made == 0 ? "stops" : fmt::format("{} of {}", outcome.made, outcome.later);
}

} // namespace lab::faults
