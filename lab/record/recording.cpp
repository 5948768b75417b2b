/*
 * recording.cpp: reads a recording, strictly: what is missing or added shows by
 * the numbers of the lines. recorder.cpp writes the same.
 */
#include "record/recording.h"

#include "config/names.h"
#include "record/escape.h"

#include "journal/journal.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <fstream>
#include <optional>
#include <system_error>
#include <utility>

namespace lab::record
{

namespace
{

constexpr std::string_view FIRST_WORD = "rtif-recording";
constexpr std::size_t BLOCK_BYTES = 65536;
/** No table of a chip is larger by far. */
constexpr std::size_t LIMIT_MAX = 1'000'000;

std::optional<std::size_t> number_of(std::string_view digits)
{
    std::size_t number = 0;
    const char *const end = digits.data() + digits.size();
    const auto read = std::from_chars(digits.data(), end, number);
    return read.ec == std::errc() && read.ptr == end ? std::optional(number) : std::nullopt;
}

/** "sdk bcm_vlan_create(0, 4094) = -8  (…)" */
bool is_call(std::string_view text)
{
    using simswitch::Layer;
    const std::size_t blank = std::min(text.find(' '), text.size());
    const std::string_view behind = text.substr(std::min(blank + 1, text.size()));
    const std::size_t open = behind.find('(');
    return std::ranges::any_of(std::array{Layer::sdk, Layer::wrapper, Layer::store, Layer::service},
                               [&](Layer layer) {
                                   return simswitch::layer_name(layer) == text.substr(0, blank);
                               }) &&
           open != 0 && open != std::string_view::npos && behind.find(' ') > open &&
           behind.find(')', open) != std::string_view::npos;
}

/** "trace rtifhal_vlan_create: Created 4094 vlan" */
bool is_message(std::string_view text)
{
    constexpr std::string_view OTHER = "level-";
    const std::string_view level = text.substr(0, text.find(' '));
    std::string_view number = level;
    number.remove_prefix(level.starts_with(OTHER) ? OTHER.size() : level.size());
    number.remove_prefix(number.starts_with('-') ? 1 : 0);
    return (level == "trace" || level == "error" || (!number.empty() && number_of(number))) &&
           text.substr(std::min(level.size() + 1, text.size())).find(':') != std::string_view::npos;
}

/** The lines of a recording, one after another. */
class RecordingReader
{
public:
    RecordingReader(std::string text, std::string file)
    {
        recording_.file = std::move(file);
        recording_.text = std::make_unique<const std::string>(std::move(text));
        rest_ = *recording_.text;
    }

    Recording read()
    {
        next();
        read_version();
        read_header();
        while (line_ && (is("request") || is_of_session())) {
            if (is("request")) {
                read_request();
            } else {
                read_command();
            }
        }
        read_end();
        return std::move(recording_);
    }

private:
    [[noreturn]] void fail(const std::string &why) const
    {
        throw UnusableRecording(fmt::format("{}:{}: {}", recording_.file, number_, why));
    }

    /** Goes to the next line; nothing at the end, and for a last one that isn't ended. */
    void next()
    {
        line_.reset();
        const std::size_t end = rest_.find('\n');
        ++number_;
        if (std::min(end, rest_.size()) > RECORDING_LINE_MAX) {
            fail(fmt::format("the line is longer than {} KiB; no recording has such",
                             RECORDING_LINE_MAX / 1024));
        }
        if (number_ > RECORDING_MAX_LINES) {
            fail(fmt::format("more than {} lines; no more are read", RECORDING_MAX_LINES));
        }
        if (end == std::string_view::npos) {
            // A process that was killed may have left a part of a line.
            return;
        }
        line_ = rest_.substr(0, end);
        rest_.remove_prefix(end + 1);
        if (line_->ends_with('\r')) {
            fail("the line ends with CR LF, as some transfers and editors make it; a recording "
                 "has LF alone: `sed -i 's/\\r$//' FILE` mends it");
        }
        if (one_line(*line_) != *line_) {
            fail("bytes that a recording never has: control characters, or no UTF-8");
        }
    }

    std::string_view first_word() const { return line_->substr(0, line_->find(' ')); }
    /** What stands behind the first word. */
    std::string_view behind_word() const
    {
        const std::size_t blank = line_->find(' ');
        return blank == std::string_view::npos ? std::string_view() : line_->substr(blank + 1);
    }
    /** Whether the line has that word first. */
    bool is(std::string_view word) const { return line_ && first_word() == word; }

    std::string plain(std::string_view part) const
    {
        std::optional<std::string> text = unescaped(part);
        if (!text) {
            fail("an escape that a recording doesn't have: \\n, \\r, \\\\ and \\x1b are those");
        }
        return std::move(*text);
    }

    void read_version()
    {
        if (!is(FIRST_WORD)) {
            fail("no recording: its first line isn't \"rtif-recording 1\"; "
                 "`rtif up CONFIG.json --record FILE` makes one");
        }
        const std::string_view version = behind_word();
        if (number_of(version) != static_cast<std::size_t>(FORMAT_VERSION)) {
            fail(fmt::format("a recording of version {}; this rtif reads version {}: record the "
                             "run again",
                             config::number_or_quotes(version), FORMAT_VERSION));
        }
        next();
    }

    /** A line of the header, which must be there. */
    std::string header_line(std::string_view word)
    {
        if (!is(word)) {
            fail_if_cut_off();
            fail(fmt::format("\"{} …\" has to stand here", word));
        }
        std::string value = plain(behind_word());
        next();
        return value;
    }

    void read_header()
    {
        Header &header = recording_.header;
        header.rtif = header_line("rtif");
        read_chip();
        if (is("limits")) {
            read_limits();
        }
        if (is("script")) {
            read_script();
            return;
        }
        header.configuration = header_line("configuration");
        if (is("then")) {
            if (behind_word() != "down") {
                fail("\"then\" goes with \"down\" only");
            }
            header.then_down = true;
            next();
        }
        if (!is("config")) {
            fail_if_cut_off();
            fail("\"config …\" has to stand here: the configuration, line by line");
        }
        read_config();
        // A run that was killed may have left a part of its first request, never of this.
        constexpr std::string_view WORD = "config";
        if (!rest_.empty() && (rest_.starts_with(WORD) || WORD.starts_with(rest_))) {
            fail_if_cut_off();
        }
    }

    void read_script()
    {
        const std::size_t line = number_;
        recording_.header.script = header_line("script");
        if (recording_.header.script.empty()) {
            number_ = line;
            fail("\"script\" has the name of one");
        }
    }

    /** The lines of a configuration, of which the first is there. */
    void read_config()
    {
        std::string &config = recording_.header.config;
        config = plain(behind_word());
        next();
        while (is("config") || is("config+")) {
            config += is("config") ? "\n" : "";
            config += plain(behind_word());
            next();
        }
    }

    /** Whether the line is one of those between a session's requests. */
    bool is_of_session() const
    {
        return !recording_.header.script.empty() && (is("do") || is("configuration"));
    }

    /** A command of a session, or the configuration that the next one brings up. */
    void read_command()
    {
        if (is("do")) {
            recording_.commands.push_back(plain(behind_word()));
            next();
            return;
        }
        recording_.header.configuration = header_line("configuration");
        if (is("config")) {
            read_config();
        } else if (line_) {
            fail("\"config …\" has to stand here: the configuration, line by line");
        }
    }

    /** Fails where the file ends in its header: the configuration isn't whole. */
    void fail_if_cut_off() const
    {
        if (!line_) {
            fail("the recording is cut off here, before its configuration ends; it can't be used: "
                 "record the run again");
        }
    }

    void read_chip()
    {
        using simswitch::chip::Kind;
        const std::size_t line = number_;
        const std::string word = header_line("chip");
        if (word != chip_word(Kind::trident) && word != chip_word(Kind::trident2)) {
            number_ = line;
            fail(fmt::format("{} is no chip: trident and trident2 are", config::in_quotes(word)));
        }
        recording_.header.chip = word == chip_word(Kind::trident) ? Kind::trident : Kind::trident2;
    }

    void read_limits()
    {
        std::string_view rest = behind_word();
        while (!rest.empty()) {
            const std::size_t end = std::min(rest.find(' '), rest.size());
            const std::string_view pair = rest.substr(0, end);
            rest.remove_prefix(std::min(end + 1, rest.size()));
            const std::size_t equals = std::min(pair.find('='), pair.size());
            const auto fields = simswitch::chip::limit_fields();
            const auto field = std::ranges::find(fields, pair.substr(0, equals),
                                                 &simswitch::chip::LimitField::name);
            const auto size = number_of(pair.substr(std::min(equals + 1, pair.size())));
            if (field == fields.end() || !size || *size == 0 || *size > LIMIT_MAX) {
                fail(fmt::format("{} is no size of a table; those are 1 to {}",
                                 config::in_quotes(pair), LIMIT_MAX));
            }
            recording_.header.limits.*(field->field) = *size;
        }
        next();
    }

    /** "request 3 add Ethernet0 = 0 (91 calls, 53 messages)" and its lines. */
    void read_request()
    {
        const std::string_view text = behind_word();
        const std::size_t blank = std::min(text.find(' '), text.size());
        const std::size_t counts = text.rfind(" (");
        const std::size_t equals =
            counts == std::string_view::npos ? counts : text.rfind(" = ", counts);
        if (equals == std::string_view::npos || equals <= blank) {
            fail("a request is \"request 3 NAME = CODE (91 calls, 53 messages)\"");
        }
        const std::size_t number = recording_.requests.size() + 1;
        if (number_of(text.substr(0, blank)) != number) {
            fail(fmt::format("request {} has to stand here: lines are missing or were added",
                             number));
        }
        RecordedRequest request;
        request.name = text.substr(blank + 1, equals - blank - 1);
        request.result = text.substr(equals + 3, counts - equals - 3);
        request.number = number;
        request.line = number_;
        const auto [calls, messages] = read_counts(text.substr(counts + 2));
        next();
        request.calls = calls;
        if (read_lines("call", calls, request) && read_lines("message", messages, request)) {
            read_refused(request);
            recording_.requests.push_back(std::move(request));
        }
    }

    /** "91 calls, 53 messages)" */
    std::pair<std::size_t, std::size_t> read_counts(std::string_view text) const
    {
        constexpr std::string_view CALLS = " calls, ";
        constexpr std::string_view MESSAGES = " messages)";
        const std::size_t middle = std::min(text.find(CALLS), text.size());
        const auto calls = number_of(text.substr(0, middle));
        const std::string_view rest = text.substr(std::min(middle + CALLS.size(), text.size()));
        const auto messages = rest.ends_with(MESSAGES)
                                  ? number_of(rest.substr(0, rest.size() - MESSAGES.size()))
                                  : std::nullopt;
        if (!calls || !messages) {
            fail("a request ends with how much it has: (91 calls, 53 messages)");
        }
        return {*calls, *messages};
    }

    /** Reads the calls or the messages of a request; false where the file ends before. */
    bool read_lines(std::string_view word, std::size_t count, RecordedRequest &request)
    {
        const std::size_t number = recording_.requests.size() + 1;
        for (std::size_t i = 1; i <= count; ++i) {
            if (!line_) {
                return false;
            }
            const std::string start = fmt::format("{} {}.{} ", word, number, i);
            if (!line_->starts_with(start)) {
                fail(fmt::format("\"{}…\" has to stand here: lines are missing or were added",
                                 start));
            }
            const std::string_view said = line_->substr(start.size());
            if (word == "call" ? !is_call(said) : !is_message(said)) {
                fail(word == "call" ? "a call is \"call 3.1 LAYER FUNCTION(…)\", its layer sdk, "
                                      "wrapper, store or service"
                                    : "a message is \"message 3.1 LEVEL FUNCTION: TEXT\", its "
                                      "level trace, error or level-N");
            }
            request.lines.push_back(said);
            next();
        }
        return true;
    }

    void read_refused(RecordedRequest &request)
    {
        const std::string start = fmt::format("refused {} ", recording_.requests.size() + 1);
        if (line_ && line_->starts_with(start)) {
            request.lines.push_back(line_->substr(start.size()));
            next();
        }
    }

    void read_end()
    {
        if (!line_) {
            return;
        }
        const std::string end = fmt::format("end {} requests, {} calls", recording_.requests.size(),
                                            recording_.calls());
        if (*line_ != end) {
            fail(fmt::format("\"{}\" or the next request has to stand here", end));
        }
        next();
        if (line_ || !rest_.empty()) {
            fail("something stands behind the end");
        }
        recording_.is_complete = true;
    }

    Recording recording_;
    std::string_view rest_;
    std::optional<std::string_view> line_;
    std::size_t number_ = 0;
};

} // namespace

std::size_t Recording::calls() const
{
    std::size_t count = 0;
    for (const RecordedRequest &request : requests) {
        count += request.calls;
    }
    return count;
}

Recording read_recording_text(std::string text, std::string file)
{
    return RecordingReader(std::move(text), std::move(file)).read();
}

Recording read_recording(const std::filesystem::path &path)
{
    const auto unusable = [&path](std::string_view why) {
        return UnusableRecording(fmt::format("{}: cannot be read: {}", path.string(), why));
    };
    std::error_code error;
    if (std::filesystem::is_directory(path, error)) {
        throw unusable("it is a folder");
    }
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        throw unusable(std::generic_category().message(errno));
    }
    std::string text;
    std::vector<char> block(BLOCK_BYTES);
    while (in.read(block.data(), static_cast<std::streamsize>(block.size())) || in.gcount() > 0) {
        text.append(block.data(), static_cast<std::size_t>(in.gcount()));
        if (text.size() > RECORDING_MAX_BYTES) {
            throw unusable("it is larger than 256 MiB");
        }
    }
    if (in.bad()) {
        throw unusable("the device gives an error");
    }
    return read_recording_text(std::move(text), path.string());
}

std::string_view chip_word(simswitch::chip::Kind kind)
{
    return kind == simswitch::chip::Kind::trident2 ? "trident2" : "trident";
}

} // namespace lab::record
