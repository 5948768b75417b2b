/*
 * state_files.cpp: a state folder whose files were damaged: it is refused in words, or what it
 * restores is a switch that works.
 *
 * Most inputs are patches of good files: bytes that are made up end at the first look at a
 * database's head.
 */
#include "expect.h"
#include "input.h"
#include "session_on_switch.h"
#include "support/load_time_state.h"

#include "faults/processes.h"
#include "l3lif/layer.h"
#include "l3lif/restart.h"

#include "services/ifindex.h"
#include "state/folder.h"
#include "switch.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{

namespace fs = std::filesystem;

constexpr std::array<const char *, 3> FILES = {"chip.db", "store.sqlite", "commits"};
constexpr std::size_t PATCHES_MAX = 16;

using Contents = std::array<std::string, FILES.size()>;

std::string read(const fs::path &path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

/** The files that a good run leaves. */
Contents good_files()
{
    const lab::faults::Folder folder;
    {
        rtifhal_test::reset_library();
        simswitch::Switch hardware({.state_dir = folder.path()});
        lab::session::Session session(hardware, folder.path(), fuzz::switch_folder());
        session.execute("up switch.json");
    }
    Contents contents;
    for (std::size_t i = 0; i < FILES.size(); ++i) {
        contents.at(i) = read(folder.path() / FILES.at(i));
    }
    return contents;
}

/** Overwrites, cuts or replaces a file as the input says. */
void damage(fuzz::Input &input, std::string &file)
{
    switch (input.byte() % 4) {
    case 0:
        if (!file.empty()) {
            file.resize(input.number(3) % file.size());
        }
        break;
    case 1:
        file.assign(input.text());
        break;
    default: {
        const auto bytes = input.bytes(1 + input.byte() % 8);
        if (file.size() >= bytes.size() && !bytes.empty()) {
            const std::size_t at = input.number(3) % (file.size() - bytes.size() + 1);
            file.replace(at, bytes.size(), reinterpret_cast<const char *>(bytes.data()),
                         bytes.size());
        }
    }
    }
}

/** Opens the folder as a restart does, and takes up what it holds. */
void restore(const fs::path &folder)
{
    rtifhal_test::reset_library();
    simswitch::Switch hardware({.state_dir = folder});
    lab::l3lif::Layer layer(hardware);
    lab::l3lif::restart(hardware, layer, lab::l3lif::RestartMode::restore);
    layer.take_down();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const Contents good = good_files();
    static const lab::faults::Folder folder;
    fuzz::Input input(data, size);
    Contents files = good;
    for (std::size_t i = 0; i < PATCHES_MAX && !input.empty(); ++i) {
        damage(input, files.at(input.byte() % files.size()));
    }
    std::error_code error;
    for (const auto &entry : fs::directory_iterator(folder.path())) {
        fs::remove(entry.path(), error);
    }
    for (std::size_t i = 0; i < FILES.size(); ++i) {
        std::ofstream(folder.path() / FILES.at(i), std::ios::binary) << files.at(i);
    }
    try {
        restore(folder.path());
    } catch (const std::runtime_error &refused) {
        fuzz::expect_one_line(refused.what());
    }
    return 0;
}
