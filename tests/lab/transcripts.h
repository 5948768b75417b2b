/*
 * transcripts.h: the commands of a document's ```console blocks, run in a
 * folder of the test, beside a folder examples/. What the block has below a
 * command must be shown by it, line by line; "…" stands for any lines.
 */
#pragma once

#include "restart_run.h"
#include "up_run.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace lab_test
{

/** Runs the blocks of a document. @return the number of commands */
inline int expect_transcripts(const std::filesystem::path &document, const Folder &folder)
{
    const std::string page = bytes_of(document);
    const std::string fence = "```console\n";
    const std::string before =
        fmt::format("ln -sfn {} {}/examples; cd {}; ", source_path("examples").string(),
                    folder.path.string(), folder.path.string());
    int commands = 0;
    for (std::size_t at = page.find(fence); at != std::string::npos; at = page.find(fence, at)) {
        at += fence.size();
        std::istringstream block(page.substr(at, page.find("```", at) - at));
        std::string command;
        std::string shown;
        for (std::string line; std::getline(block, line);) {
            if (line.starts_with("$ rtif ")) {
                command = line;
                shown = "\n" + rtif(line.substr(7), before).out;
                ++commands;
            } else if (line != "…") {
                EXPECT_NE(shown.find("\n" + line + "\n"), std::string::npos)
                    << command << "\n"
                    << line << "\nis not in" << shown;
            }
        }
    }
    return commands;
}

} // namespace lab_test
