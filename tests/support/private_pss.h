/*
 * private_pss.h: a folder /mnt/pss for one test, empty at first, that nobody
 * else on the machine sees.
 *
 * The library has the path of the default routes' file built in. A test that
 * goes the file's whole road therefore needs that very folder. The process
 * gets a mount namespace of its own, where a file system in memory lies there;
 * everything else below /mnt stays in sight. Where the machine allows no
 * namespace, the real folder serves, if it can be made and is empty.
 */
#pragma once

#include <filesystem>
#include <string>

namespace rtifhal_test
{

/** The folder while this object lives; what lies in it goes with the object. */
class PrivatePss
{
public:
    PrivatePss();
    ~PrivatePss();
    PrivatePss(const PrivatePss &) = delete;
    PrivatePss &operator=(const PrivatePss &) = delete;

    /** Empty when the folder is ready; else why the machine doesn't allow it. */
    const std::string &obstacle() const { return obstacle_; }
    /** The folder, /mnt/pss. */
    static std::filesystem::path folder();

private:
    void borrow_the_real_folder();
    void empty() const;

    std::string obstacle_;
    int lock_ = -1;     ///< the real folder, locked against other test processes
    bool made_ = false; ///< this object made the real folder
};

} // namespace rtifhal_test
