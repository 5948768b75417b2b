/*
 * faults_world.h: a small configuration that is up, in a process of its own,
 * for the tests of the sweep's engine: the library must be as it is after
 * loading, and stays so in the process of the test.
 */
#pragma once

#include "faults/processes.h"
#include "faults/road.h"

#include "config/reader.h"
#include "l3lif/bring_up.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>

namespace faults_test
{

using lab::faults::Lines;
using lab::faults::World;

/** The configuration of docs/failures.md. */
inline lab::config::Description example()
{
    return lab::config::read_config(std::filesystem::path(RTIFHAL_SOURCE_DIR) / "examples" /
                                    "faults.json");
}

/** What docs/failures.md says. */
inline std::string failures_page()
{
    std::ifstream in(std::filesystem::path(RTIFHAL_SOURCE_DIR) / "docs" / "failures.md");
    return {std::istreambuf_iterator<char>(in), {}};
}

/** What a body gives in a process of its own, in which all interfaces are up. */
inline Lines when_up(const std::function<Lines(World &)> &body)
{
    const auto config = example();
    const lab::faults::Ended ended = lab::faults::in_process([&] {
        World world(config, {});
        lab::l3lif::bring_all_up(config, world.layer);
        return body(world);
    });
    EXPECT_TRUE(ended.well) << ended.how;
    return ended.lines;
}

} // namespace faults_test
