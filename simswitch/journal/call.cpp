/*
 * call.cpp: what the Call helper does outside its templates.
 */
#include "journal/call.h"

#include "switch.h"

namespace simswitch
{

Journal &current_journal()
{
    return Switch::current().journal;
}

Call::~Call()
{
    if (Switch *present = Switch::find_current()) {
        present->save();
    }
}

void Call::reason(std::string text)
{
    if (CallRecord *record = journal_.at(index_)) {
        record->reason = std::move(text);
    }
}

void Call::open(Layer layer, bool trace_sink, const char *function, std::string arguments)
{
    CallRecord record;
    record.layer = layer;
    record.trace_sink = trace_sink;
    record.function = function;
    record.arguments = std::move(arguments);
    fault_ = journal_.take_fault(record);
    index_ = journal_.add(std::move(record));
}

} // namespace simswitch
