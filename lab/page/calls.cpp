/*
 * calls.cpp: see calls.h.
 */
#include "page/calls.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace lab::page
{

namespace
{

using simswitch::CallRecord;
using simswitch::Layer;

// Wrappers that answer 0 and leave nothing in the queue: the flush itself, and
// those that work on a cache alone or write at once.
constexpr std::array<std::string_view, 5> AT_ONCE = {
    "fwmpd_trident_batch_flush", "fwmpd_bcm_set_vlan_pbmp", "fwmpd_trident_vlan_bvcvt_store",
    "rtifhal_bcm_vxlan_port_create", "rtifhal_bcm_vxlan_port_delete"};
constexpr std::string_view FLUSH = "fwmpd_trident_batch_flush";

constexpr std::string_view TRACE_POINT = "fwm_ds_trace_add";
constexpr std::string_view ERROR_POINT = "fwm_ds_add";

std::string on_one_line(const std::string &text)
{
    std::string line;
    for (const char letter : text) {
        const bool blank = letter == '\n' || letter == ' ';
        if (!blank || (!line.empty() && line.back() != ' ')) {
            line += blank ? ' ' : letter;
        }
    }
    while (!line.empty() && line.back() == ' ') {
        line.pop_back();
    }
    return line;
}

/**
 * Which message a trace sink has made. An error's trace point stands in the
 * journal twice, first as a trace; other messages, those of GLib, have no sink.
 */
class MessagePlaces
{
public:
    explicit MessagePlaces(const std::vector<simswitch::fwm::Message> &messages)
        : messages_(messages)
    {
    }

    /** The next message when this call has made one; null otherwise. */
    const simswitch::fwm::Message *of(const CallRecord &sink)
    {
        const bool is_trace = sink.function == TRACE_POINT;
        if (!is_trace && sink.function != ERROR_POINT) {
            return nullptr;
        }
        if (!is_trace && awaits_error_) {
            awaits_error_ = false;
            return nullptr;
        }
        const simswitch::fwm::Message *message = next();
        awaits_error_ =
            is_trace && message != nullptr && message->level == simswitch::fwm::LEVEL_ERROR;
        return message;
    }
    /** The next message that no sink has made before; null at the end. */
    const simswitch::fwm::Message *next()
    {
        return at_ < messages_.size() ? &messages_[at_++] : nullptr;
    }

private:
    const std::vector<simswitch::fwm::Message> &messages_;
    std::size_t at_ = 0;
    bool awaits_error_ = false;
};

} // namespace

bool leaves_a_write(const CallRecord &call)
{
    return call.layer == Layer::wrapper && call.result == "0" &&
           std::ranges::find(AT_ONCE, call.function) == AT_ONCE.end();
}

std::vector<JournalRequest> journal_requests(const simswitch::Journal &journal)
{
    std::vector<JournalRequest> requests;
    const auto &records = journal.records();
    std::size_t at = 0;
    for (std::uint64_t number = 1; !journal.request_name(number).empty(); ++number) {
        while (at < records.size() && records[at].request < number) {
            ++at;
        }
        JournalRequest request{std::string(journal.request_name(number)), at, at};
        for (; at < records.size() && records[at].request == number; ++at) {
            request.calls += records[at].trace_sink ? 0U : 1U;
        }
        request.end = at;
        requests.push_back(std::move(request));
    }
    return requests;
}

std::size_t CallBook::function(const std::string &name)
{
    const auto [found, is_new] = functions_.try_emplace(name, page_.functions.size());
    if (is_new) {
        page_.functions.push_back(name);
    }
    return found->second;
}

int CallBook::call_item(const CallRecord &call)
{
    const auto [found, is_new] = calls_.try_emplace(call.text() + '\n' + call.reason,
                                                    static_cast<int>(page_.call_lines.size()));
    if (is_new) {
        page_.call_lines.push_back({call.layer, function(call.function), call.arguments,
                                    call.result, call.outputs, call.reason, leaves_a_write(call)});
    }
    return found->second;
}

int CallBook::message_item(const simswitch::fwm::Message &message)
{
    MessageLine line{false, message.function, on_one_line(message.text)};
    line.is_error = errors_.contains(line.text);
    const auto [found, is_new] = messages_.try_emplace({line.is_error, line.function, line.text},
                                                       static_cast<int>(page_.messages.size()));
    if (is_new) {
        page_.messages.push_back(std::move(line));
    }
    return -found->second - 1;
}

std::vector<RequestLines> CallBook::lines(const std::vector<JournalRequest> &requests,
                                          const l3lif::Request &request, bool with_calls)
{
    std::vector<RequestLines> lines;
    MessagePlaces places(request.messages);
    errors_.clear();
    for (const std::string &error : with_calls ? request.errors() : std::vector<std::string>{}) {
        errors_.insert(on_one_line(error));
    }
    for (const JournalRequest &asked : requests) {
        RequestLines line{.asked = asked.name, .calls = asked.calls, .kept = with_calls};
        for (std::size_t i = asked.first; with_calls && i < asked.end; ++i) {
            const CallRecord &record = journal_.records()[i];
            if (!record.trace_sink) {
                line.items.push_back(call_item(record));
                line.waiting = record.function == FLUSH
                                   ? 0
                                   : line.waiting + (leaves_a_write(record) ? 1U : 0U);
            } else if (const auto *message = places.of(record)) {
                line.items.push_back(message_item(*message));
            }
        }
        lines.push_back(std::move(line));
    }
    if (lines.empty()) {
        return lines;
    }
    lines.back().refused = request.refused_writes;
    while (const auto *message = with_calls ? places.next() : nullptr) {
        lines.back().items.push_back(message_item(*message));
    }
    return lines;
}

} // namespace lab::page
