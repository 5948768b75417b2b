/*
 * default_routes_run.h: runs of `rtif default-routes` in a test, with the files
 * of a folder that goes with the test.
 */
#pragma once

#include "commands/default_routes.h"
#include "config/json_tree.h"
#include "up_run.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

namespace lab_test
{

/** The bytes of a file. */
inline std::string bytes_of(const std::filesystem::path &path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/** A file of the repository. */
inline std::filesystem::path source_path(const std::string &name)
{
    return std::filesystem::path(RTIFHAL_SOURCE_DIR) / name;
}

/** What the command does, in a folder that goes with the test. */
struct RoutesRun {
    std::filesystem::path file(const std::string &name) const { return folder.path / name; }

    void put(const std::string &name, const std::string &bytes) const
    {
        std::ofstream(file(name), std::ios::binary) << bytes;
    }

    /** Runs the command; returns what it shows, or the refusal, without the folder's name. */
    std::string run(const lab::commands::DefaultRoutesOptions &options) const
    {
        std::string text;
        try {
            std::ostringstream out;
            EXPECT_EQ(lab::commands::default_routes(options, out), 0);
            text = out.str();
        } catch (const lab::config::UnusableFile &refusal) {
            text = refusal.what();
        }
        const std::string path = folder.path.string() + "/";
        for (std::size_t at = text.find(path); at != std::string::npos; at = text.find(path)) {
            text.erase(at, path.size());
        }
        return text;
    }

    /** Writes routes of a JSON text to the file `out`. */
    std::string write(const std::string &json, const std::string &config = "") const
    {
        put("routes.json", json);
        return run({.routes = file("routes.json"), .out = file("out"), .config = config});
    }

    /** Shows the file `out`. */
    std::string show(bool json = false, const std::string &config = "") const
    {
        return run({.read = file("out"), .config = config, .json = json});
    }

    Folder folder;
};

} // namespace lab_test
