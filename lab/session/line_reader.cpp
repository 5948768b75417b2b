/*
 * line_reader.cpp: see line_reader.h.
 */
#include "session/line_reader.h"

#include <streambuf>

namespace lab::session
{

std::optional<Line> LineReader::next()
{
    using Traits = std::istream::traits_type;
    std::streambuf *buffer = in_.rdbuf();
    Line line{++number_, {}, false};
    int byte = buffer->sbumpc();
    if (byte == Traits::eof()) {
        return std::nullopt;
    }
    for (; byte != Traits::eof() && byte != '\n'; byte = buffer->sbumpc()) {
        if (left_ == 0) {
            line.is_beyond = true;
            return line;
        }
        --left_;
        if (line.text.size() <= limit_) {
            line.text += Traits::to_char_type(byte);
        }
    }
    left_ -= left_ > 0 ? 1 : 0; // the line end
    return line;
}

} // namespace lab::session
