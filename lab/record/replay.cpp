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

#include <sstream>
#include <utility>

namespace lab::record
{

Recording replay(const Recording &recording, std::optional<simswitch::chip::Kind> chip)
{
    const Header &header = recording.header;
    const auto config =
        config::read_config_text(header.config, fmt::format("{}: configuration {}", recording.file,
                                                            escaped(header.configuration)));
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
