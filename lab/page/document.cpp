/*
 * document.cpp: see document.h.
 */
#include "page/document.h"

#include "page/page_json.h"

#include <stdexcept>
#include <string_view>

namespace lab::page
{

namespace
{

// PAGE_FRAME, PAGE_STYLE and PAGE_SCRIPT: the files of assets/.
#include "page_assets.inc"

/** Appends the frame up to a mark and what stands in its place; the frame goes on behind it. */
void fill(std::string &document, std::string_view &frame, std::string_view mark,
          std::string_view with)
{
    const std::size_t at = frame.find(mark);
    if (at == std::string_view::npos) {
        throw std::logic_error("page.html lacks " + std::string(mark));
    }
    document += frame.substr(0, at);
    document += with;
    frame.remove_prefix(at + mark.size());
}

} // namespace

std::string document_of(const Page &page)
{
    std::string document;
    std::string_view frame = PAGE_FRAME;
    fill(document, frame, "/*STYLE*/", PAGE_STYLE);
    fill(document, frame, "/*DATA*/", json_of(page));
    fill(document, frame, "/*SCRIPT*/", PAGE_SCRIPT);
    document += frame;
    return document;
}

} // namespace lab::page
