/*
 * check_text.cpp: see check_text.h.
 */
#include "report/check_text.h"

#include "config/shown.h"
#include "report/text.h"

#include <fmt/format.h>
#include <fmt/ostream.h>
#include <nlohmann/json.hpp>

#include <ostream>
#include <utility>

namespace lab::report
{

void print_check(const check::CheckResult &result, const std::string &state,
                 const std::string &chip, std::ostream &out)
{
    fmt::print(out, "{}: {}, {}, {} in the chip: {}\n", config::harmless(state), chip,
               counted(result.stored, "stored interface"),
               counted(result.l3_interfaces, "L3 interface"),
               result.differences.empty() ? "no difference"
                                          : counted(result.differences.size(), "difference"));
    for (const auto &difference : result.differences) {
        fmt::print(out, "\n  {}\n    likely: {}\n", plain(difference.what), difference.cause);
    }
    if (!result.notes.empty()) {
        fmt::print(out, "\nNotes:\n");
        for (const std::string &note : result.notes) {
            fmt::print(out, "  {}\n", plain(note));
        }
    }
}

void print_check_json(const check::CheckResult &result, const std::string &state,
                      const std::string &chip, std::ostream &out)
{
    using Json = nlohmann::ordered_json;
    Json differences = Json::array();
    for (const auto &difference : result.differences) {
        differences.push_back({{"what", difference.what}, {"cause", difference.cause}});
    }
    const Json object = {{"state", state},
                         {"chip", chip},
                         {"stored_interfaces", result.stored},
                         {"l3_interfaces", result.l3_interfaces},
                         {"differences", std::move(differences)},
                         {"notes", result.notes}};
    // A path may be no UTF-8.
    out << object.dump(2, ' ', true, Json::error_handler_t::replace) << '\n';
}

} // namespace lab::report
