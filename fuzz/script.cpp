/*
 * script.cpp: a session of any lines, on each chip, with a configuration up or without. The session
 * sees one file: its own configuration.
 */
#include "expect.h"
#include "input.h"
#include "session_on_switch.h"

#include "session/complete.h"
#include "session/errors.h"
#include "session/words.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace
{

constexpr std::size_t LINES_MAX = 40;
constexpr std::uint8_t IS_TRIDENT2 = 1;
constexpr std::uint8_t IS_DOWN = 2;

/** Whether a line names a file other than the session's. */
bool names_a_file(std::string_view line)
{
    const auto unfinished = lab::session::split_unfinished(line);
    const auto &words = unfinished.before;
    if ((words.empty() ? unfinished.last : words.front()) != "up") {
        return false;
    }
    return (words.size() > 1 ? words[1] : unfinished.last) != "switch.json";
}

void execute(fuzz::SessionOnSwitch &on, std::string_view line)
{
    try {
        const auto outcome = on.session.execute(line);
        fuzz::expect_one_line(outcome.summary);
        fuzz::expect_harmless(outcome.shown);
    } catch (const lab::session::Unmet &unmet) {
        fuzz::expect_harmless(unmet.what());
        fuzz::expect_harmless(unmet.seen());
    } catch (const lab::session::Impossible &impossible) {
        fuzz::expect_harmless(impossible.what());
    } catch (const lab::session::UsageError &error) {
        fuzz::expect_harmless(error.what());
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    fuzz::Input input(data, size);
    const std::uint8_t kind = input.byte();
    fuzz::SessionOnSwitch on(fuzz::switch_folder(), (kind & IS_TRIDENT2) != 0
                                                        ? simswitch::chip::Kind::trident2
                                                        : simswitch::chip::Kind::trident);
    if ((kind & IS_DOWN) == 0) {
        on.up();
    }
    std::string_view script = input.text();
    for (std::size_t lines = 0; !script.empty() && lines < LINES_MAX; ++lines) {
        const std::size_t end = script.find('\n');
        const std::string_view line = script.substr(0, end);
        script.remove_prefix(end == std::string_view::npos ? script.size() : end + 1);
        if (!names_a_file(line)) {
            for (const auto &word : complete(on.session.state(), line).words) {
                fuzz::expect_one_line(word);
            }
            execute(on, line);
        }
    }
    return 0;
}
