/*
 * call_writer.h: recorded calls as a C++ source of straight calls; floor_calls.h tells how it
 * is linked.
 */
#pragma once

#include "recording.h"

#include <map>
#include <string>
#include <vector>

namespace floor_bench
{

/** The calls of one request. */
struct RecordedRequest {
    std::string name{};
    recording::Calls calls{};
};

class CallWriter
{
public:
    /**
     * Adds the requests of a cycle, in their order: what one allocates a later one may release.
     * Throws std::runtime_error for a pointer of which nothing is known.
     */
    void add(const std::vector<RecordedRequest> &cycle);

    /** @param chip  what the list is called by: floor_of_<chip>  @return the source */
    std::string source(const std::string &chip) const;

private:
    /** The call that gave a pointer, by its request and its place there. */
    struct Origin {
        std::size_t request;
        std::size_t call;
        bool operator<(const Origin &other) const
        {
            return request != other.request ? request < other.request : call < other.call;
        }
    };

    void resolve(const std::vector<RecordedRequest> &cycle);
    void resolve_argument(const recording::NotedArgument &argument, const std::string &where);
    std::string call_text(const recording::NotedCall &call, Origin here);
    std::string argument_text(const recording::NotedArgument &argument,
                              const recording::NotedCall &call, std::string &ahead);
    std::string handle_text(const recording::NotedArgument &argument);
    std::string input_text(const recording::NotedArgument &argument, std::string &ahead);
    std::string constant(const std::string &bytes);
    std::string keyed_record(const std::string &function, const recording::NotedArgument &argument);
    void take_result(const recording::NotedCall &call, Origin here);

    std::map<std::string, std::string> constants_{}; /**< name by content */
    std::map<std::string, std::string> keyed_{};     /**< name by function and key */
    std::string data_{};                             /**< definitions of both */
    std::string functions_{};
    std::string list_{};
    std::size_t requests_ = 0;
    std::size_t held_ = 0;
    std::map<const void *, Origin> given_{}; /**< who gave a pointer that still stands */
    std::map<Origin, std::size_t> kept_{};   /**< results that a later call needs, by place */
};

} // namespace floor_bench
