/*
 * calls.h: the calls of a run, request by request, from the switch's journal,
 * with the library's messages at their places. records.h has what comes out,
 * gather.h says which request is whose.
 */
#pragma once

#include "l3lif/request.h"
#include "page/records.h"

#include "switch.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <vector>

namespace lab::page
{

/** A request of the journal; its records stand in a row. */
struct JournalRequest {
    std::string name;
    std::size_t first = 0; ///< index of its first record
    std::size_t end = 0;   ///< behind its last
    std::size_t calls = 0; ///< without the trace sinks
};

/** The requests of a journal in their order, those without a call too. */
std::vector<JournalRequest> journal_requests(const simswitch::Journal &journal);

/** Whether a call of a wrapper left a write in its queue. */
bool leaves_a_write(const simswitch::CallRecord &call);

/** Fills a page's calls and messages, each different one once. */
class CallBook
{
public:
    /**
     * @param journal  that keeps all
     * @param page     receives functions, call lines and messages; both must outlive this
     */
    CallBook(const simswitch::Journal &journal, Page &page) : journal_(journal), page_(page) {}

    /**
     * The lines of requests that were made for one purpose, in their order.
     *
     * @param requests  as the journal has them
     * @param request   what they came to together, with its messages
     * @param with_calls  false: only names and numbers
     */
    std::vector<RequestLines> lines(const std::vector<JournalRequest> &requests,
                                    const l3lif::Request &request, bool with_calls);

private:
    int call_item(const simswitch::CallRecord &call);
    int message_item(const simswitch::fwm::Message &message);
    std::size_t function(const std::string &name);

    const simswitch::Journal &journal_;
    Page &page_;
    std::set<std::string> errors_; ///< of the request under way: not all at the error level are
    std::map<std::string, std::size_t> functions_;
    std::map<std::string, int> calls_;
    std::map<std::tuple<bool, std::string, std::string>, int> messages_;
};

} // namespace lab::page
