/*
 * restart_run.h: what the tests of restarts share: processes that come and go
 * on one state folder, and the command as a process.
 */
#pragma once

#include "config/reader.h"
#include "default_routes_run.h"
#include "l3lif/bring_up.h"
#include "l3lif/layer.h"
#include "l3lif/restart.h"
#include "l3lif/restart_state.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <sys/wait.h>

namespace lab_test
{

using simswitch::chip::Kind;

/** An example, read. */
inline lab::config::Description example(const std::string &name)
{
    return lab::config::read_config(source_path("examples/" + name + ".json"));
}

/** A forwarding process: a library as it is after loading, a switch on a state folder. */
struct Process {
    Process(Kind chip, const std::filesystem::path &state)
        : loaded((rtifhal_test::reset_library(), true)),
          hardware({.chip = chip, .state_dir = state}), layer(hardware)
    {
    }

    bool loaded;
    simswitch::Switch hardware;
    lab::l3lif::Layer layer;
};

/** What a process came to: its exit code, and both streams. */
struct CommandRun {
    int code = -1;
    std::string out;
};

/** Runs rtif in a shell, both streams together; `before` stands in front of it. */
inline CommandRun rtif(const std::string &arguments, const std::string &before = "")
{
    CommandRun run;
    const std::string command = before + std::string(RTIFHAL_RTIF) + " " + arguments + " 2>&1";
    std::FILE *pipe = popen(command.c_str(), "r"); // NOLINT(cert-env33-c)
    std::array<char, 4096> block = {};
    while (const std::size_t got = std::fread(block.data(), 1, block.size(), pipe)) {
        run.out.append(block.data(), got);
    }
    const int status = pclose(pipe);
    run.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
}

/** Takes a folder's name out of a text. */
inline std::string without(std::string text, const std::string &path)
{
    for (std::size_t at = text.find(path); at != std::string::npos; at = text.find(path)) {
        text.erase(at, path.size());
    }
    return text;
}

} // namespace lab_test
