/*
 * whole_operations.cpp: see whole_operations.h. The library's tables are its
 * process's: each count and what has to be there before it is a process.
 */
#include "whole_operations.h"

#include "config/reader.h"
#include "l3lif/bring_up.h"
#include "l3lif/restart.h"
#include "mixed_configuration.h"
#include "switch.h"

#include <cstdlib>
#include <functional>
#include <stdexcept>
#include <string>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace bench
{

namespace
{

namespace l3lif = lab::l3lif;
using simswitch::chip::Kind;

/** Memory that a child shares with its parent. */
class Shared
{
public:
    Shared()
        : memory_(mmap(nullptr, sizeof(Operations), PROT_READ | PROT_WRITE,
                       MAP_SHARED | MAP_ANONYMOUS, -1, 0))
    {
        if (memory_ == MAP_FAILED) {
            throw std::runtime_error("memory is out");
        }
    }
    ~Shared() { munmap(memory_, sizeof(Operations)); }
    Shared(const Shared &) = delete;
    Shared &operator=(const Shared &) = delete;

    Operations &operations() { return *static_cast<Operations *>(memory_); }

private:
    void *memory_;
};

/** Runs in a process of its own. */
Operations in_child(const std::function<Operations()> &body)
{
    Shared shared;
    const pid_t child = fork();
    if (child == 0) {
        try {
            shared.operations() = body();
        } catch (const std::exception &) {
            _exit(1);
        }
        _exit(0);
    }
    int status = -1;
    if (child < 0 || waitpid(child, &status, 0) != child || status != 0) {
        throw std::runtime_error("a process that counts has failed");
    }
    return shared.operations();
}

Operations of(simswitch::Switch &hardware)
{
    const std::uint64_t requests = hardware.journal.begin_request("count") - 1;
    return {requests, hardware.journal.calls_made()};
}

Operations bring_up(const lab::config::Description &config, Kind chip,
                    const std::filesystem::path &state)
{
    simswitch::Switch hardware({.chip = chip, .state_dir = state});
    l3lif::keep_errors_only(hardware);
    l3lif::Layer layer(hardware);
    l3lif::bring_all_up(config, layer);
    return of(hardware);
}

Operations restore(const lab::config::Description &config, Kind chip,
                   const std::filesystem::path &state, bool then_up)
{
    simswitch::Switch hardware({.chip = chip, .state_dir = state});
    l3lif::keep_errors_only(hardware);
    l3lif::Layer layer(hardware);
    l3lif::restart(hardware, layer, l3lif::RestartMode::restore, &config);
    if (then_up) {
        l3lif::complete(hardware, layer, config);
    }
    return of(hardware);
}

} // namespace

TemporaryFolder::TemporaryFolder()
{
    std::string name = (std::filesystem::temp_directory_path() / "rtif-whole-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error(name + ": can't be made");
    }
    path = name;
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

Operations count_operations(Work work, std::size_t interfaces, Kind chip)
{
    const auto config = lab::config::read_config_text(
        lab_test::mixed_configuration(interfaces, chip), "mixed.json");
    if (work == Work::up || work == Work::up_with_state) {
        return in_child([&] { return bring_up(config, chip, {}); });
    }
    const TemporaryFolder folder;
    in_child([&] { return bring_up(config, chip, folder.path); });
    return in_child(
        [&] { return restore(config, chip, folder.path, work == Work::restore_and_rest); });
}

} // namespace bench
