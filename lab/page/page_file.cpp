/*
 * page_file.cpp: see page_file.h.
 */
#include "page/page_file.h"

#include "config/draft_file.h"
#include "config/json_tree.h"

#include <fmt/format.h>

#include <system_error>

namespace lab::page
{

namespace fs = std::filesystem;

namespace
{

constexpr int LINKS_FOLLOWED = 40;

} // namespace

fs::path page_place(const fs::path &out)
{
    fs::path place = out;
    for (int i = 0; i < LINKS_FOLLOWED; ++i) {
        std::error_code error;
        if (!fs::is_symlink(fs::symlink_status(place, error))) {
            return place;
        }
        // An absolute target takes the place of the folder.
        place = place.parent_path() / fs::read_symlink(place, error);
    }
    return out;
}

void write_page(const fs::path &out, std::string_view document)
{
    const fs::path place = page_place(out);
    std::error_code error;
    const auto status = fs::symlink_status(place, error);
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        throw config::UnusableFile(fmt::format(
            "{}: is {}; name a file", out.string(),
            fs::is_directory(status) ? "a folder" : "no regular file, and is left alone"));
    }
    config::DraftFile draft(place, out.string());
    draft.write_whole(document);
    draft.open_to_others();
    draft.take_place(true);
}

} // namespace lab::page
