/*
 * woven.h: the messages of operations among the platform calls, in the one
 * order in which they came. library_test.h has each as a list of its own.
 */
#pragma once

#include "switch.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

namespace rtifhal_test
{

/** The messages of operations, "104 text", among the calls of those functions, by name. */
inline std::vector<std::string> woven(const simswitch::Switch &sw,
                                      const std::vector<std::string> &operations,
                                      const std::vector<std::string> &functions)
{
    const auto is_one_of = [](const std::vector<std::string> &names, const auto &name) {
        return std::ranges::find(names, name) != names.end();
    };
    std::vector<std::string> order;
    std::size_t next = 0;
    for (const auto &record : sw.journal.records()) {
        if (record.function == "fwm_ds_trace_add") {
            const auto &message = sw.trace.messages().at(next++);
            if (is_one_of(operations, message.function)) {
                order.push_back(fmt::format("{} {}", message.level, message.text));
            }
        } else if (is_one_of(functions, record.function)) {
            order.emplace_back(record.function);
        }
    }
    return order;
}

/** The same for the messages of one operation. */
inline std::vector<std::string> woven(const simswitch::Switch &sw, const std::string &operation,
                                      const std::vector<std::string> &functions)
{
    return woven(sw, std::vector<std::string>{operation}, functions);
}

} // namespace rtifhal_test
