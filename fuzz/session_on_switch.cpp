/*
 * session_on_switch.cpp: see session_on_switch.h.
 */
#include "session_on_switch.h"

#include "session/verbs.h"
#include "support/load_time_state.h"

namespace fuzz
{

namespace
{

simswitch::Options fresh(simswitch::chip::Kind chip)
{
    rtifhal_test::reset_library();
    return {.chip = chip};
}

} // namespace

std::filesystem::path switch_folder()
{
    return std::filesystem::path(RTIFHAL_SOURCE_DIR) / "fuzz/switch";
}

SessionOnSwitch::SessionOnSwitch(const std::filesystem::path &folder, simswitch::chip::Kind chip)
    : hardware(fresh(chip)), session(hardware, {}, folder)
{
}

void SessionOnSwitch::up(const std::string &file)
{
    session.execute("up " + file + " open");
    hardware.journal.clear();
    hardware.trace.clear();
}

StateOnSwitch::StateOnSwitch()
    : hardware(fresh(simswitch::chip::Kind::trident)), state{hardware, {}, switch_folder()}
{
    lab::session::run_up(state, {"switch.json", "open"});
}

} // namespace fuzz
