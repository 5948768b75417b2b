/*
 * document.h: the page of a switch as one HTML document that needs nothing
 * beside it. Its frame, style and scripts are the files of assets/, which the
 * build puts into the command; page_json.h has the data.
 */
#pragma once

#include "page/records.h"

#include <string>

namespace lab::page
{

/** The whole document. */
std::string document_of(const Page &page);

} // namespace lab::page
