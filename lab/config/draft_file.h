/*
 * draft_file.h: a file that is written under another name in the same folder and
 * then renamed, so that nobody finds half of it: default_route_file.h and
 * page/page_file.h write such ones.
 */
#pragma once

#include <csignal>
#include <filesystem>
#include <string>
#include <string_view>

namespace lab::config
{

/** A file beside the one whose place it will take; it goes with this, unless it was renamed. */
class DraftFile
{
public:
    /**
     * Makes the draft, which its owner alone may read.
     *
     * @param place  the file whose place it will take
     * @param shown  the same as the user named it, for messages
     * @throws UnusableFile, as the others, when the system refuses
     */
    DraftFile(std::filesystem::path place, std::string shown);
    ~DraftFile();
    DraftFile(const DraftFile &) = delete;
    DraftFile &operator=(const DraftFile &) = delete;

    /** Writes all of it, to the disk. A limit of a file's size is a failed write here. */
    void write_whole(std::string_view bytes);
    /** Opens it to others as any file that is made. */
    void open_to_others();
    /** Takes its place. @param replace  a file there goes; else it is in the way */
    void take_place(bool replace);

private:
    /** @throws UnusableFile with the reason in errno */
    [[noreturn]] void fail() const;

    std::filesystem::path place_;
    std::string shown_;
    std::string name_; ///< empty once it was renamed
    int file_;
    struct sigaction before_ = {};
};

} // namespace lab::config
