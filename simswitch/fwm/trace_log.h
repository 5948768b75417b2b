/*
 * trace_log.h: what the library says: its trace points, its lines in the
 * system log, its events in the history, its debug output.
 *
 * The platform's sinks (fwm/trace.h, services/debug.h) write here. They are in
 * the journal as trace sinks, so Journal::calls leaves them out; the system
 * log's lines are calls like any other. Beside it: host_state.h.
 *
 * The system log is taken over in an executable that is linked with
 * -Wl,--wrap=syslog,--wrap=__syslog_chk against the library's static archive.
 */
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

namespace simswitch::fwm
{

/** The levels of a trace point. */
inline constexpr int LEVEL_TRACE = 104;
inline constexpr int LEVEL_ERROR = 102;

/** A message of a trace point, with its arguments filled in. */
struct Message {
    int level = LEVEL_TRACE;   ///< 104 trace, 102 error
    std::string file = {};     ///< source unit that the trace point gives
    std::string function = {}; ///< function that the trace point stands in
    int line = 0;              ///< source line
    std::string text = {};     ///< the text, its line end included

    bool operator==(const Message &) const = default;
};

/** A line of the system log. */
struct SyslogLine {
    int priority = 0; ///< as syslog takes it: 0 emergency, 2 critical
    std::string text = {};

    bool operator==(const SyslogLine &) const = default;
};

/** An event of the history. */
struct HistoryEvent {
    int type = 0;            ///< the library's is 0x730000
    int length = 0;          ///< length of the record in bytes, as it was handed in
    std::uint32_t level = 0; ///< the record's first word: 104 or 102
    std::string text = {};   ///< the record's text, without the zero byte

    bool operator==(const HistoryEvent &) const = default;
};

/** A text of the debug output. */
struct DebugText {
    int kind = 0;             ///< 1
    std::string modname = {}; ///< the name that it was written under
    std::string text = {};

    bool operator==(const DebugText &) const = default;
};

/** The log of one embedded switch. The public fields are knobs. */
class TraceLog
{
public:
    /** Messages kept; an older one is forgotten for each one more. */
    static constexpr std::size_t CAPACITY = 65536;

    bool history_wanted = false; ///< the history takes events
    bool debug_output = false;   ///< debug output is switched on
    bool pass_on = false;        ///< the system log's lines go to the real one too
    bool errors_only = false;    ///< of messages that are no errors only the last one is kept

    /** The trace points' messages, oldest first; one entry for each trace point. */
    const std::deque<Message> &messages() const { return messages_; }
    /** The texts of the messages of one level (102 or 104), oldest first. */
    std::vector<std::string> texts(int level) const;
    /** The lines of the system log. */
    const std::vector<SyslogLine> &syslog() const { return syslog_; }
    /** The events of the history. */
    const std::vector<HistoryEvent> &history() const { return history_; }
    /** The debug output. */
    const std::vector<DebugText> &debug_texts() const { return debug_texts_; }
    /** Forgets all of it; the knobs stay. */
    void clear();

    // For the sinks.
    /** Keeps a trace point as a message of level 104. */
    void add_trace(Message message);
    /** Makes the message just kept an error, or keeps this one when it belongs to another trace
     * point. */
    void add_error(Message message);
    void add_syslog(SyslogLine line) { syslog_.push_back(std::move(line)); }
    void add_history(HistoryEvent event) { history_.push_back(std::move(event)); }
    void add_debug(DebugText text) { debug_texts_.push_back(std::move(text)); }

private:
    std::deque<Message> messages_;
    std::vector<SyslogLine> syslog_;
    std::vector<HistoryEvent> history_;
    std::vector<DebugText> debug_texts_;
};

} // namespace simswitch::fwm
