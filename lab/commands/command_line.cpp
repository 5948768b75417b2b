/*
 * command_line.cpp: see command_line.h. The options of each command stand with
 * those of its kind; command.h has the list.
 */
#include "commands/command_line.h"

#include "commands/command.h"
#include "commands/usage.h"
#include "config/shown.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <exception>
#include <map>
#include <ostream>
#include <string>

namespace lab::commands
{

namespace
{

/** Runs a command; a failure is one line. */
int run_command(const Command &command, const Terminal &terminal)
{
    try {
        const int code = command.run(terminal);
        if (!terminal.out.flush()) {
            terminal.err << "rtif: the output cannot be written\n";
            return EXIT_REFUSED;
        }
        return code;
    } catch (const std::exception &error) {
        terminal.err << config::harmless_lines(error.what()) << '\n';
        return EXIT_REFUSED;
    }
}

} // namespace

const std::map<std::string, simswitch::chip::Kind> &chip_kinds()
{
    using simswitch::chip::Kind;
    static const std::map<std::string, Kind> KINDS = {{"trident", Kind::trident},
                                                      {"trident2", Kind::trident2}};
    return KINDS;
}

CLI::Option *add_chip_option(CLI::App &command, std::string &chip)
{
    return command.add_option("--chip", chip, "The kind of chip: trident or trident2")
        ->check(CLI::IsMember(chip_kinds()))
        ->type_name("KIND")
        ->capture_default_str();
}

CLI::Option *add_state_option(CLI::App &command, std::string &state_dir)
{
    return command
        .add_option("--state", state_dir, "Keeps chip and persistent store in this folder")
        ->type_name("DIR");
}

int run(int argc, const char *const *argv, const Terminal &terminal)
{
    CLI::App app("rtif: routed interfaces on an embedded switch", "rtif");
    app.set_version_flag("--version", "rtif " RTIF_VERSION);
    app.require_subcommand(1);
    const std::array commands = {
        add_up(app),     add_run(app),    add_shell(app), add_default_routes(app), add_restart(app),
        add_check(app),  add_dump(app),   add_wire(app),  add_packet(app),         add_report(app),
        add_faults(app), add_replay(app), add_diff(app),  add_explain(app),
    };
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        if (error.get_exit_code() == 0) {
            app.exit(error, terminal.out, terminal.err); // it was asked for: help, the version
            return EXIT_DONE;
        }
        terminal.err << config::harmless_lines(usage_problem(app, error));
        return EXIT_USAGE;
    }
    const auto *const asked =
        std::find_if(commands.begin(), commands.end(),
                     [](const Command &command) { return command.app->parsed(); });
    return run_command(*asked, terminal);
}

} // namespace lab::commands
