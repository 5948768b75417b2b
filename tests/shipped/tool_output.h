/*
 * tool_output.h: what nm and readelf print of the files that the build made.
 */
#pragma once

#include <array>
#include <cstdio>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace rtifhal_test
{

/** The lines that a command prints; throws when it fails. */
inline std::vector<std::string> lines_of(const std::string &command)
{
    FILE *pipe = ::popen(command.c_str(), "r"); // NOLINT(cert-env33-c): paths of the build only
    if (pipe == nullptr) {
        throw std::runtime_error("can't start: " + command);
    }
    std::string text;
    std::array<char, 4096> block{};
    for (std::size_t got = 0; (got = std::fread(block.data(), 1, block.size(), pipe)) > 0;) {
        text.append(block.data(), got);
    }
    if (const int status = ::pclose(pipe); status != 0) {
        throw std::runtime_error("failed with " + std::to_string(status) + ": " + command);
    }
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

} // namespace rtifhal_test
