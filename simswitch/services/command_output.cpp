/*
 * command_output.cpp: see command_output.h.
 */
#include "services/command_output.h"

#include "chip/refusal.h"
#include "journal/call.h"
#include "switch.h"

#include <services/cmd.h>

#include <algorithm>
#include <fmt/format.h>

int printf_curr_idx = 0;

namespace simswitch::services
{

std::string CommandOutput::text() const
{
    return fmt::format("{}", fmt::join(lines_, ""));
}

CommandOutput &CommandOutputs::open()
{
    return *open_.emplace_back(std::make_unique<CommandOutput>());
}

void CommandOutputs::close(const void *handle)
{
    std::erase_if(open_, [&](const auto &output) { return output.get() == handle; });
}

Outcome CommandOutputs::print(const void *handle, const char *text)
{
    const auto found =
        std::ranges::find_if(open_, [&](const auto &output) { return output.get() == handle; });
    if (found == open_.end()) {
        return {ERROR_PARAM, "this is no command's output, or it is closed"};
    }
    (*found)->add(text);
    return {};
}

} // namespace simswitch::services

using namespace simswitch;

extern "C" int cmd_prt(void *handle, const char *text, int zero)
{
    Call call(Layer::service, __func__, Word{"command"}, text, zero);
    return call.run([&] { return Switch::current().command_outputs.print(handle, text); });
}
