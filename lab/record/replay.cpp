/*
 * replay.cpp: see replay.h.
 */
#include "record/replay.h"

#include "config/reader.h"
#include "l3lif/bring_up.h"
#include "l3lif/layer.h"
#include "record/escape.h"
#include "record/recorder.h"

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

} // namespace

Recording replay(const Recording &recording, std::optional<simswitch::chip::Kind> chip)
{
    const Header &header = recording.header;
    const auto config = config_of(recording);
    simswitch::Switch hardware({.chip = chip.value_or(header.chip),
                                .limits = chip.value_or(header.chip) == header.chip
                                              ? header.limits
                                              : simswitch::chip::Limits{},
                                .state_dir = {}});
    l3lif::keep_errors_only(hardware);

    std::ostringstream out;
    {
        Header now;
        now.configuration = header.configuration;
        now.then_down = header.then_down;
        now.config = header.config;
        Recorder recorder(hardware, std::move(now), out);
        l3lif::Layer layer(hardware);
        l3lif::bring_all_up(config, layer);
        if (header.then_down) {
            layer.take_down();
        }
        recorder.finish();
    }
    return read_recording_text(std::move(out).str(), "now");
}

} // namespace lab::record
