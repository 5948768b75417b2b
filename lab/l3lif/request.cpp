/*
 * request.cpp: see request.h.
 */
#include "l3lif/request.h"

#include "l3lif/request_watch.h"
#include "l3lif/shown_calls.h"

#include <glib.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <span>
#include <utility>

namespace lab::l3lif
{

namespace
{

constexpr const char *GLIB = "GLib";

// Lines of progress that the library writes at the error level. A trunk that is
// created, or read while it is there already, is no failure either, nor is a
// subinterface that works on its own record.
constexpr std::array<std::string_view, 5> PROGRESS = {
    "calling bcm_trunk_create_id(", "bcm_trunk_get(unit=", "Searching l3-intf on ", "ifindex ",
    "No context set in l3iif for intf "};

/** Messages begin and end with line ends, for the log that they were made for. */
std::string trimmed(const std::string &text)
{
    const std::size_t first = text.find_first_not_of(" \n");
    return first == std::string::npos
               ? ""
               : text.substr(first, text.find_last_not_of(" \n") - first + 1);
}

bool is_progress(std::string_view message)
{
    return std::any_of(PROGRESS.begin(), PROGRESS.end(),
                       [message](std::string_view start) { return message.starts_with(start); });
}

/** The last call from a record on that gave a negative result, and why; empty for none. */
std::string last_refused_call(const simswitch::Journal &journal, std::size_t first)
{
    const auto &records = journal.records();
    for (std::size_t i = records.size(); i > first; --i) {
        const simswitch::CallRecord &record = records[i - 1];
        if (!record.trace_sink && record.result.starts_with('-')) {
            return record.text() + (record.reason.empty() ? "" : ": " + record.reason);
        }
    }
    return "";
}

std::vector<simswitch::fwm::Message> messages_of(const simswitch::fwm::TraceLog &trace)
{
    std::vector<simswitch::fwm::Message> kept;
    std::ranges::copy_if(trace.messages(), std::back_inserter(kept), [&trace](const auto &message) {
        return !trace.errors_only || message.level == simswitch::fwm::LEVEL_ERROR;
    });
    return kept;
}

/** While a request runs, all its messages are kept for who watches. */
class FullTrace
{
public:
    FullTrace(simswitch::fwm::TraceLog &trace, bool wanted)
        : trace_(trace), errors_only_(trace.errors_only)
    {
        trace_.errors_only = trace_.errors_only && !wanted;
    }
    ~FullTrace() { trace_.errors_only = errors_only_; }
    FullTrace(const FullTrace &) = delete;
    FullTrace &operator=(const FullTrace &) = delete;

private:
    simswitch::fwm::TraceLog &trace_;
    bool errors_only_;
};

void take_message(const gchar * /*domain*/, GLogLevelFlags /*level*/, const gchar *text,
                  gpointer hardware)
{
    static_cast<simswitch::Switch *>(hardware)->trace.add_trace(
        {.function = GLIB, .text = std::string(text) + "\n"});
}

/** Runs a request to its end, and tells who watches. */
void run_watched(simswitch::Switch &hardware, const std::string &name, std::size_t first,
                 const std::function<int()> &work, Request &request)
{
    const RequestWatch *watch = RequestWatch::of(hardware);
    const FullTrace full(hardware.trace, watch != nullptr);
    request.code = work();
    // The end of a request writes out what still waits in the queue.
    const auto report = hardware.wrappers.flush();
    if (report.refused != 0) {
        request.refused_writes = report.text;
    }
    if (watch != nullptr) {
        const std::span records(hardware.journal.records());
        watch->tell({name, request.code, records.subspan(std::min(first, records.size())),
                     hardware.trace.messages(), request.refused_writes});
    }
}

} // namespace

void Request::append(Request next)
{
    code = code != 0 ? code : next.code;
    std::ranges::move(next.calls, std::back_inserter(calls));
    call_count += next.call_count;
    std::ranges::move(next.messages, std::back_inserter(messages));
    if (refused_writes.empty()) {
        refused_writes = std::move(next.refused_writes);
    }
}

std::vector<std::string> Request::errors() const
{
    std::vector<std::string> errors;
    for (const auto &message : messages) {
        std::string text = trimmed(message.text);
        const bool harmless =
            is_progress(text) || (!expected.empty() && text.starts_with(expected));
        if (message.level == simswitch::fwm::LEVEL_ERROR && !harmless) {
            errors.push_back(std::move(text));
        }
    }
    if (!refused_writes.empty()) {
        errors.push_back(refused_writes);
    }
    return errors;
}

std::string Request::last_error() const
{
    auto all = errors();
    if (all.size() > 1 && !refused_writes.empty()) {
        all.pop_back();
    }
    return all.empty() ? "" : std::move(all.back());
}

Request make_request(simswitch::Switch &hardware, const std::string &name,
                     const std::function<int()> &work)
{
    Request request;
    // What still waits in the queue at the end is this request's too.
    const simswitch::chip::Authors::Scope author(hardware.chip.authors, name);
    hardware.trace.clear();
    hardware.journal.begin_request(name);
    const std::size_t first = hardware.journal.records().size();
    const std::uint64_t made = hardware.journal.calls_made();
    run_watched(hardware, name, first, work, request);
    request.call_count = hardware.journal.calls_made() - made;
    if (hardware.journal.keeps_all()) {
        request.calls = hardware.journal.calls(first);
    }
    if (request.code != 0) {
        request.refused_call = last_refused_call(hardware.journal, first);
    }
    request.messages = messages_of(hardware.trace);
    if (ShownCalls::is_on(hardware)) {
        hardware.journal.clear();
    }
    return request;
}

void keep_errors_only(simswitch::Switch &hardware)
{
    hardware.journal.keep(simswitch::Keep::request);
    hardware.trace.errors_only = true;
}

GlibMessages::GlibMessages(simswitch::Switch &hardware)
    : handler_(g_log_set_handler(GLIB, G_LOG_LEVEL_MASK, take_message, &hardware))
{
}

GlibMessages::~GlibMessages()
{
    g_log_remove_handler(GLIB, handler_);
}

} // namespace lab::l3lif
