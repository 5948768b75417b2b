/*
 * line_editor.h: lines typed at a terminal, with a prompt, history and
 * completion. shell.h uses it.
 */
#pragma once

#include "session/complete.h"

#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace lab::commands
{

/** An editor of lines on the standard input and output. */
class LineEditor
{
public:
    /** Completes what stands before the cursor. */
    using Completer = std::function<session::Completion(std::string_view line)>;

    /**
     * @param history_file  lines of earlier sessions, to which those of this one are added at its
     *                      end; empty, or one that can't be used: none
     * @throws std::runtime_error when the terminal can't be used
     */
    LineEditor(std::string prompt, Completer completer, std::filesystem::path history_file = {});
    ~LineEditor();
    LineEditor(const LineEditor &) = delete;
    LineEditor &operator=(const LineEditor &) = delete;

    /**
     * Reads a line. An interrupt (Ctrl-C) drops what was typed.
     *
     * @return the line without its end; nothing at the end of the input (Ctrl-D)
     */
    std::optional<std::string> next();

    /** The terminal's columns; 0 when the output is none. */
    static std::size_t columns();

private:
    struct Parts;
    std::unique_ptr<Parts> parts_;
};

} // namespace lab::commands
