/*
 * wire.cpp: see wire.h.
 */
#include "commands/wire.h"

#include "config/shown.h"
#include "l3lif/bring_up.h"
#include "report/text.h"
#include "session/errors.h"
#include "session/state.h"
#include "session/verbs.h"
#include "wire/report.h"

#include <fmt/format.h>
#include <fmt/ostream.h>
#include <fmt/ranges.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <functional>
#include <ostream>
#include <set>
#include <string_view>

namespace lab::commands
{

namespace
{

using Json = nlohmann::ordered_json;

/** What is printed while it runs. Each line is seen at once. */
class Log
{
public:
    Log(const Terminal &terminal, bool json) : out_(terminal.out), json_(json) {}

    void tell(std::string_view line)
    {
        if (json_) {
            event("told", {{"text", line}});
        } else {
            fmt::print(out_, "{}\n", line);
        }
        out_.flush();
    }

    void ready(const session::State &state, const std::string &summary,
               const std::vector<wire::Binding> &ports)
    {
        std::vector<std::string> texts;
        Json objects = Json::array();
        for (const wire::Binding &binding : ports) {
            texts.push_back(fmt::format("{} on {}", binding.port, binding.interface));
            objects.push_back({{"port", binding.port}, {"interface", binding.interface}});
        }
        if (json_) {
            event("ready", {{"file", state.config->file},
                            {"summary", summary},
                            {"ports", std::move(objects)}});
        } else {
            fmt::print(out_, "ready: {}; {}: {}\n", fmt::join(texts, ", "), state.config->file,
                       summary);
        }
        out_.flush();
    }

    void end(const wire::Wire &wire)
    {
        if (json_) {
            event("end", wire::json_of(wire));
        } else {
            out_ << '\n';
            wire::print_text(wire, out_);
        }
        out_.flush();
    }

private:
    void event(std::string_view name, const Json &object)
    {
        Json line = {{"event", name}};
        line.update(object);
        out_ << line.dump(-1, ' ', true, Json::error_handler_t::replace) << '\n';
    }

    std::ostream &out_;
    bool json_;
};

bool has_ipv6(const config::Description &config)
{
    return std::any_of(config.interfaces.begin(), config.interfaces.end(),
                       [](const auto &interface) { return interface.routes(true); });
}

void refuse_twice(const std::vector<wire::Binding> &bindings)
{
    std::set<std::string> ports;
    std::set<std::string> interfaces;
    for (const wire::Binding &binding : bindings) {
        if (!ports.insert(binding.port).second) {
            throw session::UsageError(
                fmt::format("--port: {} is given twice: a port is on one interface", binding.port));
        }
        if (!interfaces.insert(binding.interface).second) {
            throw session::UsageError(fmt::format(
                "--port: {} is given twice: an interface stands for one port", binding.interface));
        }
    }
}

/** Brings the configuration up; returns what came of it in a few words. */
std::string bring_up(session::State &state, const WireOptions &options, Log &log)
{
    state.notes = l3lif::forget_earlier_run(state.hardware, options.state_dir);
    session::Outcome outcome = session::run_up(state, {options.config.string(), "open"});
    std::string summary = outcome.summary;
    const auto tell = [&log](const session::Outcome &done) {
        for (std::string_view rest = done.shown; !rest.empty();) {
            const std::size_t end = std::min(rest.find('\n'), rest.size());
            log.tell(rest.substr(0, end));
            rest.remove_prefix(std::min(end + 1, rest.size()));
        }
    };
    tell(outcome);
    if (options.ipv6 || has_ipv6(*state.config)) {
        outcome = session::run_ipv6(state, {"on"});
        if (outcome.refused) {
            log.tell("IPv6 of the switch: " + outcome.summary);
            tell(outcome);
        }
    }
    for (const std::string &problem : state.routing.problems()) {
        log.tell(problem);
    }
    return summary;
}

int run_wire(simswitch::Switch &hardware, const WireOptions &options, const Terminal &terminal)
{
    refuse_twice(options.ports);
    Log log(terminal, options.json);
    session::State state{hardware, options.state_dir};
    const std::string summary = bring_up(state, options, log);
    wire::Wire wire(state, options.ports, [&log](std::string_view line) { log.tell(line); });
    if (options.verbose) {
        wire.tell_frames();
    }
    log.ready(state, summary, options.ports);
    wire.run(options.lasts);
    log.end(wire);
    l3lif::check_state(hardware);
    return wire.works() ? EXIT_DONE : EXIT_REFUSED;
}

} // namespace

wire::Binding parse_binding(const std::string &text)
{
    const std::size_t at = text.find('=');
    const bool two_names = at != std::string::npos && at != 0 && at + 1 != text.size();
    if (!two_names || report::plain(text) != text) {
        throw session::UsageError(
            fmt::format("--port is a port and its interface, such as Ethernet0=veth0, not '{}'",
                        report::plain(text)));
    }
    return {text.substr(0, at), text.substr(at + 1)};
}

int wire(const WireOptions &options, const Terminal &terminal)
{
    simswitch::Switch hardware({.chip = options.chip, .state_dir = options.state_dir});
    return wire_on(hardware, options, terminal);
}

int wire_on(simswitch::Switch &hardware, const WireOptions &options, const Terminal &terminal)
{
    try {
        return run_wire(hardware, options, terminal);
    } catch (const session::UsageError &error) {
        fmt::print(terminal.err, "{}\n", config::harmless_lines(error.what()));
        return EXIT_USAGE;
    } catch (const std::exception &error) {
        fmt::print(terminal.err, "{}\n", config::harmless_lines(error.what()));
        return EXIT_REFUSED;
    }
}

} // namespace lab::commands
