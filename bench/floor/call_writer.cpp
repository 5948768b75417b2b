/*
 * call_writer.cpp: see call_writer.h.
 */
#include "call_writer.h"

#include <fmt/format.h>

#include <iterator>
#include <stdexcept>

namespace floor_bench
{

namespace
{

using recording::Kind;
using recording::NotedArgument;
using recording::NotedCall;

constexpr char HEAD[] =
    R"(// Made by write_calls from what the library calls; floor_calls.h tells more.
#include "floor_calls.h"

#include <fwm/state.h>
#include <fwm/trace.h>
#include <fwm/vlan.h>
#include <fwmpd/l3_cache.h>
#include <fwmpd/platform.h>
#include <fwmpd/pss.h>
#include <fwmpd/wrappers.h>
#include <l3lif/l3lif_layer.h>
#include <sdk/field.h>
#include <sdk/l2.h>
#include <sdk/l3.h>
#include <sdk/pbmp.h>
#include <sdk/port.h>
#include <sdk/stg.h>
#include <sdk/switch.h>
#include <sdk/tunnel.h>
#include <services/avl.h>
#include <services/debug.h>
#include <services/if_index.h>
#include <services/l3vm.h>
#include <services/mts.h>
#include <services/system.h>

#include <glib.h>

#include <cstdlib>
#include <cstring>

namespace floor_bench
{

namespace
{

)";

std::string quoted(const std::string &text)
{
    std::string out = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            out += fmt::format("\\{}", c);
        } else if (c >= ' ' && c <= '~') {
            out += c;
        } else {
            out += fmt::format("\\{:03o}", static_cast<unsigned char>(c));
        }
    }
    return out + "\"";
}

std::string bytes_text(const std::string &bytes)
{
    std::string out;
    for (const char c : bytes) {
        out += fmt::format("{},", static_cast<unsigned char>(c));
    }
    return out;
}

bool allocates(const NotedCall &call)
{
    return call.function == "malloc" || call.function == "calloc";
}

bool releases(const NotedCall &call)
{
    return call.function == "free" || call.function == "mtrack_free";
}

} // namespace

std::string CallWriter::constant(const std::string &bytes)
{
    const auto [place, is_new] =
        constants_.try_emplace(bytes, fmt::format("constant_{}", constants_.size()));
    if (is_new) {
        data_ += fmt::format("alignas(16) const unsigned char {}[{}] = {{{}}};\n", place->second,
                             bytes.size(), bytes_text(bytes));
    }
    return place->second;
}

std::string CallWriter::keyed_record(const std::string &function, const NotedArgument &argument)
{
    const auto [place, is_new] = keyed_.try_emplace(fmt::format("{} {}", function, argument.number),
                                                    fmt::format("keyed_{}", keyed_.size()));
    if (is_new) {
        data_ += fmt::format("alignas(16) unsigned char {}[{}] = {{{}}};\n", place->second,
                             argument.size, bytes_text(argument.bytes));
    }
    return place->second;
}

std::string CallWriter::handle_text(const NotedArgument &argument)
{
    if (argument.pointer == nullptr) {
        return "nullptr";
    }
    if (const int number = recording::number_of(argument.pointer); number >= 0) {
        return fmt::format("At{{objects[{}]}}", number);
    }
    const auto given = given_.find(argument.pointer);
    if (given == given_.end()) {
        throw std::runtime_error("a pointer of which nothing is known");
    }
    return fmt::format("At{{held[{}]}}", kept_.at(given->second));
}

std::string CallWriter::input_text(const NotedArgument &argument, std::string &ahead)
{
    if (argument.pointer == nullptr) {
        return "nullptr";
    }
    const std::string name = constant(argument.bytes);
    const auto given = given_.find(argument.pointer);
    if (given == given_.end() || !kept_.contains(given->second)) {
        return fmt::format("At{{{}}}", name);
    }
    // Memory that stays: it has to hold what the library wrote into it.
    const std::size_t held = kept_.at(given->second);
    ahead += fmt::format("    std::memcpy(held[{}], {}, {});\n", held, name, argument.size);
    return fmt::format("At{{held[{}]}}", held);
}

std::string CallWriter::argument_text(const NotedArgument &argument, const NotedCall &call,
                                      std::string &ahead)
{
    switch (argument.kind) {
    case Kind::number:
        return argument.variadic ? fmt::format("static_cast<int>({})", argument.number)
                                 : fmt::format("{}LL", argument.number);
    case Kind::text:
        return argument.pointer != nullptr ? quoted(argument.bytes) : "nullptr";
    case Kind::input:
        return input_text(argument, ahead);
    case Kind::output:
        return "At{scratch}";
    case Kind::keyed:
        return fmt::format("At{{{}}}", keyed_record(call.function, argument));
    case Kind::value:
        return fmt::format("Copy{{{}}}", constant(argument.bytes));
    case Kind::code:
        return "ignored_visit";
    default:
        return argument.variadic
                   ? fmt::format("static_cast<const void *>({})", handle_text(argument))
                   : handle_text(argument);
    }
}

void CallWriter::take_result(const NotedCall &call, Origin here)
{
    if (call.result != nullptr && recording::number_of(call.result) < 0) {
        given_.insert_or_assign(call.result, here);
    }
    if (releases(call)) {
        given_.erase(call.arguments.front().pointer);
    }
}

std::string CallWriter::call_text(const NotedCall &call, Origin here)
{
    std::string ahead;
    std::string arguments;
    for (const NotedArgument &argument : call.arguments) {
        arguments += fmt::format("{}{}", arguments.empty() ? "" : ", ",
                                 argument_text(argument, call, ahead));
    }
    std::string kept;
    if (const auto place = kept_.find(here); place != kept_.end()) {
        kept = fmt::format("held[{}] = ", place->second);
    }
    return fmt::format("{}    {}{}({});\n", ahead, kept, call.function, arguments);
}

void CallWriter::resolve_argument(const NotedArgument &argument, const std::string &where)
{
    const bool may_be_held = argument.kind == Kind::handle || argument.kind == Kind::input;
    if (!may_be_held || recording::number_of(argument.pointer) >= 0) {
        return;
    }
    const auto given = given_.find(argument.pointer);
    if (given == given_.end()) {
        if (argument.kind == Kind::handle && argument.pointer != nullptr) {
            throw std::runtime_error(where + ": a pointer of which nothing is known");
        }
        return;
    }
    if (argument.kind == Kind::handle) {
        kept_.try_emplace(given->second, held_ + kept_.size());
    }
}

/** Finds the results that later calls need. */
void CallWriter::resolve(const std::vector<RecordedRequest> &cycle)
{
    for (std::size_t request = 0; request < cycle.size(); ++request) {
        const recording::Calls &calls = cycle[request].calls;
        for (std::size_t i = 0; i < calls.size(); ++i) {
            for (const NotedArgument &argument : calls[i].arguments) {
                resolve_argument(argument, cycle[request].name + ", " + calls[i].function);
            }
            take_result(calls[i], {request, i});
            if (allocates(calls[i])) {
                kept_.try_emplace({request, i}, held_ + kept_.size());
            }
        }
    }
}

void CallWriter::add(const std::vector<RecordedRequest> &cycle)
{
    kept_.clear();
    given_.clear();
    resolve(cycle);
    given_.clear();
    for (std::size_t request = 0; request < cycle.size(); ++request) {
        const RecordedRequest &recorded = cycle[request];
        functions_ += fmt::format("\n// {}\nvoid request_{}()\n{{\n", recorded.name, requests_);
        for (std::size_t i = 0; i < recorded.calls.size(); ++i) {
            functions_ += call_text(recorded.calls[i], {request, i});
            take_result(recorded.calls[i], {request, i});
        }
        functions_ += "}\n";
        list_ += fmt::format("    {{{}, {}, request_{}}},\n", quoted(recorded.name),
                             recorded.calls.size(), requests_);
        ++requests_;
    }
    held_ += kept_.size();
}

std::string CallWriter::source(const std::string &chip) const
{
    return fmt::format("{}void *held[{}];\n\n{}{}\n"
                       "constexpr FloorRequest REQUESTS[] = {{\n{}}};\n\n"
                       "}} // namespace\n\n"
                       "const FloorRequests floor_of_{} = {{REQUESTS, {}}};\n\n"
                       "}} // namespace floor_bench\n",
                       HEAD, held_ + 1, data_, functions_, list_, chip, requests_);
}

} // namespace floor_bench
