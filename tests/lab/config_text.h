/*
 * config_text.h: short ways to read a configuration in a test, and to see what
 * came of it.
 */
#pragma once

#include "config/reader.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace lab_test
{

/** Reads a configuration under the name leaf.json. */
inline lab::config::Description read(std::string_view text)
{
    return lab::config::read_config_text(text, "leaf.json");
}

/** The messages of the rows that weren't taken. */
inline std::vector<std::string> messages(const lab::config::Description &description)
{
    std::vector<std::string> lines;
    for (const auto &row : description.skipped) {
        lines.push_back(description.message(row));
    }
    return lines;
}

/** The names of the interfaces, in order. */
inline std::vector<std::string> names(const lab::config::Description &description)
{
    std::vector<std::string> list;
    for (const auto &interface : description.interfaces) {
        list.push_back(interface.name);
    }
    return list;
}

/** Why a configuration can't be used at all; empty when it can. */
inline std::string unusable(std::string_view text)
{
    try {
        read(text);
    } catch (const lab::config::UnusableFile &error) {
        return error.what();
    }
    return "";
}

/** A list of lines, so that a test's expectation fits on a line. */
using Lines = std::vector<std::string>;

} // namespace lab_test
