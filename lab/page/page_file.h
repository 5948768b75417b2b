/*
 * page_file.h: puts the page of a switch in its place: whole or not at all, for
 * others to read. document.h has what is written.
 */
#pragma once

#include <filesystem>
#include <string_view>

namespace lab::page
{

/**
 * Where a page of that name lies: what a symbolic link, or a chain of them, leads to.
 *
 * @return the name itself where it is no link, or where the links don't end
 */
std::filesystem::path page_place(const std::filesystem::path &out);

/**
 * Writes a page beside its place and renames it. A failure leaves nothing behind, not even
 * one by the limit for the size of files, whose signal is ignored meanwhile.
 *
 * @param out       the file, or a symbolic link to it; one that is there is replaced
 * @param document  the whole page
 * @throws config::UnusableFile when no regular file is there, or it can't be written
 */
void write_page(const std::filesystem::path &out, std::string_view document);

} // namespace lab::page
