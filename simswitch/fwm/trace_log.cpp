/*
 * trace_log.cpp: the platform's diagnostic sinks, and the system log where an
 * executable wraps it.
 */
#include "fwm/trace_log.h"

#include "journal/call.h"
#include "switch.h"

#include <fwm/trace.h>
#include <services/debug.h>

#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <syslog.h>

using simswitch::Call;
using simswitch::Layer;
using simswitch::Switch;
using simswitch::TraceSink;
using simswitch::fwm::Message;

FILE *dbg_out_file = nullptr;
const char *sdwrap_dbg_modname = "fwm";

namespace simswitch::fwm
{

std::vector<std::string> TraceLog::texts(int level) const
{
    std::vector<std::string> texts;
    for (const Message &message : messages_) {
        if (message.level == level) {
            texts.push_back(message.text);
        }
    }
    return texts;
}

void TraceLog::clear()
{
    messages_.clear();
    syslog_.clear();
    history_.clear();
    debug_texts_.clear();
}

void TraceLog::add_trace(Message message)
{
    message.level = LEVEL_TRACE;
    if (errors_only && !messages_.empty() && messages_.back().level == LEVEL_TRACE) {
        messages_.back() = std::move(message);
        return;
    }
    if (messages_.size() == CAPACITY) {
        messages_.pop_front();
    }
    messages_.push_back(std::move(message));
}

void TraceLog::add_error(Message message)
{
    // An error's trace point goes to the trace buffer first, so the message is
    // there already and lacks only its level.
    message.level = LEVEL_TRACE;
    if (messages_.empty() || messages_.back() != message) {
        add_trace(std::move(message));
    }
    // cppcheck-suppress containerOutOfBounds  // there is one now
    messages_.back().level = LEVEL_ERROR;
}

} // namespace simswitch::fwm

namespace
{

/** The text of a format and its arguments, of any length. */
std::string format_text(const char *format, va_list args)
{
    std::array<char, 256> usual{};
    va_list again;
    va_copy(again, args);
    const int length = vsnprintf(usual.data(), usual.size(), format, args);
    const auto size = length < 0 ? 0 : static_cast<std::size_t>(length);
    std::string text;
    if (size < usual.size()) {
        text.assign(usual.data(), size);
    } else {
        text.resize(size);
        vsnprintf(text.data(), text.size() + 1, format, again);
    }
    va_end(again);
    return text;
}

const char *text_or_empty(const char *text)
{
    return text != nullptr ? text : "";
}

/** The road of a line to the system log: kept by the switch, and passed on where that is wanted. */
void take_syslog(int priority, const char *format, va_list args)
{
    Switch *current = Switch::find_current();
    if (current == nullptr) {
        vsyslog(priority, format, args);
        return;
    }
    va_list again;
    va_copy(again, args);
    const std::string text = format_text(format, args);
    Call call(Layer::service, "syslog", priority, text);
    call.run_void([&] {
        current->trace.add_syslog({.priority = priority, .text = text});
        if (current->trace.pass_on) {
            vsyslog(priority, format, again);
        }
    });
    va_end(again);
}

} // namespace

extern "C" {

void fwm_ds_trace_add(const char *file, const char *function, int line, int zero,
                      const char *format, ...)
{
    va_list args;
    va_start(args, format);
    Message message{.file = text_or_empty(file),
                    .function = text_or_empty(function),
                    .line = line,
                    .text = format_text(format, args)};
    va_end(args);
    Call call(TraceSink{}, __func__, file, function, line, zero, message.text);
    call.run_void([&] { Switch::current().trace.add_trace(std::move(message)); });
}

void fwm_ds_add(const char *file, const char *function, int line, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    Message message{.file = text_or_empty(file),
                    .function = text_or_empty(function),
                    .line = line,
                    .text = format_text(format, args)};
    va_end(args);
    Call call(TraceSink{}, __func__, file, function, line, message.text);
    call.run_void([&] { Switch::current().trace.add_error(std::move(message)); });
}

const char *fwm_debug_elem_descr(int level)
{
    Call call(TraceSink{}, __func__, level);
    return call.run_text([&] { return level == simswitch::fwm::LEVEL_ERROR ? "ERROR" : "TRACE"; });
}

const char *fwm_ctime(void)
{
    // Time is virtual here and stands still, so that two runs print the same.
    Call call(TraceSink{}, __func__);
    return call.run_text([] { return "Thu Jan  1 00:00:00 1970"; });
}

void fwm_check_flush_dbg_out_file(void)
{
    Call call(TraceSink{}, __func__);
    call.run_void([] {
        if (dbg_out_file != nullptr) {
            (void)fflush(dbg_out_file);
        }
    });
}

int sdwrap_hist_event_subtype_check(int type, int subtype)
{
    Call call(TraceSink{}, __func__, type, subtype);
    return call.run([] { return Switch::current().trace.history_wanted ? 0 : 1; });
}

void sdwrap_hist_event(int type, int length, const void *record)
{
    simswitch::fwm::HistoryEvent event{.type = type, .length = length};
    const auto size = length < 0 ? 0 : static_cast<std::size_t>(length);
    if (record != nullptr && size > sizeof event.level) {
        std::memcpy(&event.level, record, sizeof event.level);
        const char *text = static_cast<const char *>(record) + sizeof event.level;
        event.text.assign(text, strnlen(text, size - sizeof event.level));
    }
    Call call(TraceSink{}, __func__, type, length, static_cast<int>(event.level), event.text);
    call.run_void([&] { Switch::current().trace.add_history(std::move(event)); });
}

int sdwrap_chk_int(int level, int a, int b, int c)
{
    Call call(TraceSink{}, __func__, level, a, b, c);
    return call.run([] { return Switch::current().trace.debug_output ? 1 : 0; });
}

void buginf(int kind, const char *modname, int zero, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    const std::string text = format_text(format, args);
    va_end(args);
    Call call(TraceSink{}, __func__, kind, modname, zero, text);
    call.run_void([&] {
        Switch::current().trace.add_debug(
            {.kind = kind, .modname = text_or_empty(modname), .text = text});
    });
}

// The linker sends the system log's callers here. A compiler that checks
// buffers calls the second name.
void __wrap_syslog(int priority, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    take_syslog(priority, format, args);
    va_end(args);
}

void __wrap___syslog_chk(int priority, int /*flag*/, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    take_syslog(priority, format, args);
    va_end(args);
}

} // extern "C"
