/*
 * explanation.cpp: see explanation.h.
 */
#include "packet/explanation.h"

#include <fmt/format.h>

namespace lab::packet
{

using simswitch::chip::pipeline::Verdict;

std::string Explanation::fate() const
{
    switch (verdict) {
    case Verdict::sent:
        return "sent";
    case Verdict::to_cpu:
        return "cpu";
    case Verdict::dropped:
        break;
    }
    return "dropped";
}

std::string Explanation::sent_text() const
{
    std::string text;
    for (const SentPort &port : sent) {
        text += fmt::format("{}{} {}", text.empty() ? "" : ", ", port.name,
                            port.tagged ? fmt::format("tagged {}", vlan) : "untagged");
    }
    return text;
}

std::string Explanation::why() const
{
    return detail.empty() ? reason_text : fmt::format("{}; {}", reason_text, detail);
}

std::string Explanation::summary() const
{
    switch (verdict) {
    case Verdict::sent:
        return fmt::format("sent {}{}", sent_text(), copied_to_cpu ? ", a copy to the CPU" : "");
    case Verdict::to_cpu:
        return fmt::format("to the CPU: {}", why());
    case Verdict::dropped:
        break;
    }
    return fmt::format("dropped: {}", why());
}

} // namespace lab::packet
