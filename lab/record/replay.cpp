/*
 * replay.cpp: see replay.h.
 */
#include "record/replay.h"

#include "config/reader.h"
#include "l3lif/bring_up.h"
#include "l3lif/layer.h"
#include "record/escape.h"
#include "record/recorder.h"
#include "session/errors.h"
#include "session/session.h"

#include <fmt/format.h>

#include <algorithm>
#include <sstream>
#include <utility>

namespace lab::record
{

namespace
{

config::Description config_of(const Recording &recording)
{
    const Header &header = recording.header;
    try {
        return config::read_config_text(
            header.config,
            fmt::format("{}: configuration {}", recording.file, escaped(header.configuration)));
    } catch (const config::UnusableFile &) {
        // The end of a line says nothing: only the configuration tells that there was more of it.
        const auto lines = std::ranges::count(*recording.text, '\n');
        if (!recording.is_complete && recording.requests.empty()) {
            throw UnusableRecording(fmt::format(
                "{}:{}: the recording is cut off here, before its configuration ends; it can't be "
                "used: record the run again",
                recording.file, lines + 1));
        }
        throw;
    }
}

/** Brings the configuration up, and down where it went down. */
void run_configuration(const Recording &recording, simswitch::Switch &hardware, Recorder &recorder)
{
    const auto config = config_of(recording);
    l3lif::Layer layer(hardware);
    l3lif::bring_all_up(config, layer);
    if (recording.header.then_down) {
        layer.take_down();
    }
    recorder.finish();
}

/** Does a command; one that can't be done any more asks for nothing, and that shows. */
void run_command(session::Session &session, const std::string &command)
{
    try {
        session.execute(command);
    } catch (const session::UsageError &) {
    } catch (const session::Impossible &) {
    }
}

void run_session(const Recording &recording, simswitch::Switch &hardware, Recorder &recorder)
{
    session::Session session(hardware);
    const Header &header = recording.header;
    if (!header.configuration.empty()) {
        session.give_config({header.configuration, header.config});
        recorder.configuration(header.configuration, header.config);
    }
    for (const std::string &command : recording.commands) {
        recorder.command(command);
        run_command(session, command);
    }
    recorder.finish();
}

} // namespace

Recording replay(const Recording &recording, std::optional<simswitch::chip::Kind> chip)
{
    const Header &header = recording.header;
    simswitch::Switch hardware({.chip = chip.value_or(header.chip),
                                .limits = chip.value_or(header.chip) == header.chip
                                              ? header.limits
                                              : simswitch::chip::Limits{},
                                .state_dir = {}});
    l3lif::keep_errors_only(hardware);

    std::ostringstream out;
    {
        Recorder recorder(hardware, header, out);
        if (header.script.empty()) {
            run_configuration(recording, hardware, recorder);
        } else {
            run_session(recording, hardware, recorder);
        }
    }
    return read_recording_text(std::move(out).str(), "now");
}

} // namespace lab::record
