/*
 * recordings.cpp: see recordings.h.
 */
#include "commands/recordings.h"

#include "config/json_tree.h"
#include "config/names.h"
#include "config/shown.h"
#include "record/replay.h"

#include <fmt/ostream.h>

#include <algorithm>
#include <ostream>

namespace lab::commands
{

namespace
{

int tell_unusable(const std::exception &error, const Terminal &terminal)
{
    fmt::print(terminal.err, "{}\n", config::harmless_lines(error.what()));
    return EXIT_USAGE;
}

bool has_request(const record::Recording &recording, const std::string &name)
{
    return std::ranges::find(recording.requests, name, &record::RecordedRequest::name) !=
           recording.requests.end();
}

} // namespace

int replay(const ReplayOptions &options, const Terminal &terminal)
{
    try {
        const record::Recording recorded = record::read_recording(options.recording);
        const record::Recording now = record::replay(recorded, options.chip);
        const record::Comparison comparison = record::compare(recorded, now);
        record::print_replay(recorded, now, comparison, options.view, terminal.out);
        return record::is_as_recorded(recorded, comparison) ? EXIT_DONE : EXIT_REFUSED;
    } catch (const record::UnusableRecording &error) {
        return tell_unusable(error, terminal);
    } catch (const config::UnusableFile &error) {
        return tell_unusable(error, terminal);
    }
}

int diff(const DiffOptions &options, const Terminal &terminal)
{
    try {
        const record::Recording before = record::read_recording(options.before);
        const record::Recording after = record::read_recording(options.after);
        const std::string &name = options.view.request;
        if (!name.empty() && !has_request(before, name) && !has_request(after, name)) {
            fmt::print(terminal.err,
                       "neither recording has a request {}; `grep ^request` lists "
                       "them\n",
                       config::in_quotes(name));
            return EXIT_USAGE;
        }
        const record::Comparison comparison = record::compare(before, after, options.compare);
        record::print_diff(before, after, comparison, options.view, terminal.out);
        return comparison.all_equal() ? EXIT_DONE : EXIT_REFUSED;
    } catch (const record::UnusableRecording &error) {
        return tell_unusable(error, terminal);
    }
}

} // namespace lab::commands
