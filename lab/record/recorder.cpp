/*
 * recorder.cpp: see recorder.h. recording.cpp reads what is written here.
 */
#include "record/recorder.h"

#include "record/escape.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>
#include <cerrno>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace lab::record
{

namespace fs = std::filesystem;

namespace
{

// A line of a configuration may be all of it; escaped it still is a line of a recording.
constexpr std::size_t CONFIG_PART_BYTES = 8192;

void write_config_line(std::string_view line, std::ostream &out)
{
    std::string_view word = "config";
    do {
        const std::string part = escaped(line.substr(0, CONFIG_PART_BYTES));
        line.remove_prefix(std::min(CONFIG_PART_BYTES, line.size()));
        out << word << (part.empty() ? "" : " ") << part << '\n';
        word = "config+";
    } while (!line.empty());
}

void write_config(std::string_view config, std::ostream &out)
{
    while (true) {
        const std::size_t end = config.find('\n');
        write_config_line(config.substr(0, end), out);
        if (end == std::string_view::npos) {
            return;
        }
        config.remove_prefix(end + 1);
    }
}

/** The sizes that aren't the kind's own, with a 0 for each other one. */
simswitch::chip::Limits own_limits(const simswitch::chip::Chip &chip)
{
    simswitch::chip::Limits limits = chip.limits();
    const auto usual = simswitch::chip::sizes_of(chip.kind());
    for (const auto &[name, field] : simswitch::chip::limit_fields()) {
        if (limits.*field == usual.*field) {
            limits.*field = 0;
        }
    }
    return limits;
}

void write_header(const Header &header, std::ostream &out)
{
    fmt::print(out, "rtif-recording {}\nrtif {}\nchip {}\n", FORMAT_VERSION, header.rtif,
               chip_word(header.chip));
    if (header.limits != simswitch::chip::Limits{}) {
        out << "limits";
        for (const auto &[name, field] : simswitch::chip::limit_fields()) {
            if (header.limits.*field != 0) {
                fmt::print(out, " {}={}", name, header.limits.*field);
            }
        }
        out << '\n';
    }
    if (!header.script.empty()) {
        fmt::print(out, "script {}\n", escaped(header.script));
        return;
    }
    fmt::print(out, "configuration {}\n", escaped(header.configuration));
    if (header.then_down) {
        out << "then down\n";
    }
    write_config(header.config, out);
}

std::string level_word(int level)
{
    return level == simswitch::fwm::LEVEL_ERROR   ? "error"
           : level == simswitch::fwm::LEVEL_TRACE ? "trace"
                                                  : fmt::format("level-{}", level);
}

/** Messages begin and end with line ends, for the log that they were made for. */
std::string_view without_line_ends(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(" \n");
    return first == std::string_view::npos
               ? std::string_view()
               : text.substr(first, text.find_last_not_of(" \n") - first + 1);
}

std::string_view type_text(fs::file_type type)
{
    switch (type) {
    case fs::file_type::fifo:
        return "a pipe";
    case fs::file_type::directory:
        return "a folder";
    case fs::file_type::socket:
        return "a socket";
    default:
        return "a block device";
    }
}

/** Whether a path lies in a folder, be that there yet or not. */
bool is_in_folder(const fs::path &path, const fs::path &folder)
{
    std::error_code error;
    const fs::path whole = fs::weakly_canonical(fs::absolute(folder, error), error);
    fs::path file = fs::weakly_canonical(fs::absolute(path, error), error);
    const auto is_same = [&](const fs::path &other) {
        return other == whole / "" || other == whole || fs::equivalent(other, whole, error);
    };
    while (file.has_parent_path() && file.parent_path() != file) {
        file = file.parent_path();
        if (is_same(file)) {
            return true;
        }
    }
    return false;
}

} // namespace

Recorder::Recorder(const simswitch::Switch &hardware, Header header, std::ostream &out)
    : out_(out), watch_(hardware, [this](const l3lif::SeenRequest &request) { take(request); })
{
    header.rtif = RTIF_VERSION;
    header.chip = hardware.chip.kind();
    header.limits = own_limits(hardware.chip);
    write_header(header, out_);
    out_.flush();
}

void Recorder::take(const l3lif::SeenRequest &request)
{
    ++requests_;
    const auto is_call = [](const simswitch::CallRecord &record) { return !record.trace_sink; };
    const auto calls = static_cast<std::size_t>(std::ranges::count_if(request.records, is_call));
    calls_ += calls;
    fmt::print(out_, "request {} {} = {} ({} calls, {} messages)\n", requests_,
               escaped(request.name), request.code, calls, request.messages.size());
    std::size_t number = 0;
    for (const simswitch::CallRecord &record : request.records) {
        if (is_call(record)) {
            const std::string reason =
                record.reason.empty() ? "" : fmt::format("  ({})", escaped(record.reason));
            fmt::print(out_, "call {}.{} {} {}{}\n", requests_, ++number,
                       simswitch::layer_name(record.layer), one_line(record.text()), reason);
        }
    }
    number = 0;
    for (const simswitch::fwm::Message &message : request.messages) {
        fmt::print(out_, "message {}.{} {} {}: {}\n", requests_, ++number,
                   level_word(message.level), escaped(message.function),
                   escaped(without_line_ends(message.text)));
    }
    if (!request.refused_writes.empty()) {
        fmt::print(out_, "refused {} queue {}\n", requests_, escaped(request.refused_writes));
    }
    out_.flush();
}

void Recorder::configuration(const std::string &name, std::string_view text)
{
    fmt::print(out_, "configuration {}\n", escaped(name));
    write_config(text, out_);
}

void Recorder::command(std::string_view line)
{
    fmt::print(out_, "do {}\n", escaped(line));
    out_.flush();
}

void Recorder::finish()
{
    fmt::print(out_, "end {} requests, {} calls\n", requests_, calls_);
    out_.flush();
}

RecordingFile::RecordingFile(const fs::path &path, const fs::path &config,
                             const fs::path &state_dir)
    : path_(path)
{
    std::error_code error;
    if (fs::equivalent(path, config, error)) {
        throw std::runtime_error(fmt::format(
            "{}: is the configuration itself; name another file for the recording", path.string()));
    }
    if (!state_dir.empty() && is_in_folder(path, state_dir)) {
        throw std::runtime_error(fmt::format("{}: is in the state folder, which has its own files; "
                                             "name a file elsewhere",
                                             path.string()));
    }
    // To open a pipe would wait for its reader, who may never come. What /dev has is open already.
    const fs::file_type type = fs::status(path, error).type();
    const bool is_named_pipe = type == fs::file_type::fifo && !path.string().starts_with("/dev/");
    if (is_named_pipe || type == fs::file_type::socket || type == fs::file_type::block ||
        type == fs::file_type::directory) {
        throw std::runtime_error(
            fmt::format("{}: is {}; a recording goes into a file", path.string(), type_text(type)));
    }
    out_.open(path, std::ios::binary | std::ios::trunc);
    if (!out_) {
        throw std::runtime_error(fmt::format("{}: the recording cannot be written: {}",
                                             path.string(),
                                             std::generic_category().message(errno)));
    }
}

void RecordingFile::close()
{
    out_.close();
    if (!out_) {
        throw std::runtime_error(
            fmt::format("{}: the recording could not be written to its end; is the disk full?",
                        path_.string()));
    }
}

} // namespace lab::record
