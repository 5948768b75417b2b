/*
 * journal.h: what was called, in order, and the faults to inject.
 *
 * Every function of the platform opens its body with a Call, which writes its
 * name and arguments down, looks for an armed fault, runs the body where there
 * is none, and writes the result down. call.h has that helper and the way in
 * which each kind of argument is printed.
 */
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace simswitch
{

/** The part of the platform that a function belongs to. */
enum class Layer : std::uint8_t { sdk, wrapper, store, service };

/** The layer's name as a journal line prints it: "sdk", "wrapper", "store", "service". */
std::string_view layer_name(Layer layer);

/** One call of a platform function. */
struct CallRecord {
    std::uint64_t sequence = 0; ///< from 1, over the life of the switch
    Layer layer = Layer::service;
    bool trace_sink = false; ///< one of the diagnostic sinks, left out of Journal::calls
    std::string function = {};
    std::string arguments = {}; ///< "0, 5, 67, 3"
    std::string result = {};    ///< "0", "-6", "null", "record", or empty for a void function
    std::string outputs = {};   ///< what came back through pointers: "id=1"; empty if nothing
    std::string reason = {};   ///< why it was refused, or what a flush did; empty if nothing to say
    std::uint64_t request = 0; ///< the request that it served, 0 for none

    /** "name(arg, arg) = result [outputs]", the parts that are empty left out. */
    std::string text() const;
};

/** How much of what was called is kept. */
enum class Keep : std::uint8_t {
    all,    ///< every call
    request ///< the calls of the request under way; the trace sinks' only while a fault is armed
};

/** A fault to inject. A call matches when all that is given here fits. */
struct Fault {
    std::string function = {}; ///< empty: any function but the trace sinks
    int code = -1;             ///< what the call returns; a pointer is null
    std::uint64_t nth = 1;     ///< the first matching call to hit, from 1
    bool forever = false;      ///< hit each matching call from there on
    /** Looks at the printed arguments; empty: any. */
    std::function<bool(std::string_view arguments)> when = {};
};

/** The list of calls, the list of requests, and the armed faults. */
class Journal
{
public:
    /**
     * Opens a request of the layer above, e.g. "add Ethernet0"; later calls
     * serve it.
     *
     * @return its number, from 1
     */
    std::uint64_t begin_request(std::string name);
    /** The name of a request; empty for 0 and unknown numbers. */
    std::string_view request_name(std::uint64_t request) const;

    /** Arms a fault; faults are tried in the order of arming. */
    void arm(Fault fault);
    /** Disarms all faults. */
    void disarm();

    /**
     * From here on that much is kept: a long run whose calls nobody asks for
     * needn't remember them. Numbers go on as if all were kept.
     */
    void keep(Keep keep) { keep_ = keep; }
    bool keeps_all() const { return keep_ == Keep::all; }

    /** The records that are kept, the trace sinks included. */
    const std::vector<CallRecord> &records() const { return records_; }
    /** The text of each call but the trace sinks', from record number `from` (an index) on. */
    std::vector<std::string> calls(std::size_t from = 0) const;
    /** Number of calls but the trace sinks', kept or not. */
    std::uint64_t calls_made() const { return calls_made_; }
    /** Number of calls of a function among the records. */
    std::uint64_t count(std::string_view function) const;
    /** Forgets the records; numbers go on, faults stay. */
    void clear();

    /** One record as a whole greppable line: sequence, layer, text, reason, request. */
    std::string line(const CallRecord &record) const;

    // For the Call helper.
    /** Adds a record, its sequence and request filled in; returns its index. */
    std::size_t add(CallRecord record);
    /** Whether a call of a trace sink is to be recorded; if not, it is counted. */
    bool takes_sink()
    {
        if (keep_ == Keep::all || !faults_.empty()) {
            return true;
        }
        ++next_sequence_;
        return false;
    }
    /** The record of that index, if it is still there. */
    CallRecord *at(std::size_t index);
    /** Looks for a fault that hits this call, and counts the call against all that match. */
    std::optional<int> take_fault(const CallRecord &record);

private:
    struct Armed {
        Fault fault;
        std::uint64_t seen = 0;
        bool spent = false;
    };
    std::vector<CallRecord> records_;
    std::vector<std::string> requests_;
    std::vector<Armed> faults_;
    std::uint64_t next_sequence_ = 1;
    std::uint64_t calls_made_ = 0;
    Keep keep_ = Keep::all;
};

} // namespace simswitch
