/*
 * up_run.h: runs of `rtif up` in a test, each on a switch that the test has
 * made, with a file of its own.
 */
#pragma once

#include "commands/up.h"
#include "support/library_test.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace lab_test
{

/** A folder for one test, which goes with it. */
class Folder
{
public:
    Folder()
    {
        std::string name = (std::filesystem::temp_directory_path() / "rtif-XXXXXX").string();
        path = mkdtemp(name.data());
    }
    ~Folder() { std::filesystem::remove_all(path); }
    Folder(const Folder &) = delete;
    Folder &operator=(const Folder &) = delete;

    std::filesystem::path path;
};

/** A run on a switch of its own, with a library as it is after loading. */
class UpTest : public ::testing::Test
{
protected:
    UpTest() { rtifhal_test::reset_library(); }

    /** Runs the command; returns its exit code. */
    int run(simswitch::Switch &hardware, const std::string &config,
            lab::commands::UpOptions options = {})
    {
        options.config = folder.path / "leaf.json";
        std::ofstream(options.config) << config;
        std::ostringstream out;
        const int code = lab::commands::up_on(hardware, options, out);
        text = out.str();
        // Paths differ from run to run.
        const std::string path = folder.path.string() + "/";
        for (std::size_t at = text.find(path); at != std::string::npos; at = text.find(path)) {
            text.erase(at, path.size());
        }
        return code;
    }

    /** The same with --json; the object is in `object`. */
    int run_json(simswitch::Switch &hardware, const std::string &config,
                 lab::commands::UpOptions options = {})
    {
        options.json = true;
        const int code = run(hardware, config, options);
        object = nlohmann::json::parse(text);
        return code;
    }

    Folder folder;
    std::string text;
    nlohmann::json object;
};

} // namespace lab_test
