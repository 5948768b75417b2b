/*
 * pss_folder.h: the platform's folder /mnt/pss for one process on a machine
 * that isn't a switch.
 *
 * The library has the path of the default routes' file in it built in. The
 * process gets a mount namespace of its own, where a file system in memory lies
 * there, which nobody else sees; everything else below /mnt stays in sight.
 */
#pragma once

#include <string>

namespace simswitch::services
{

/** The folder. */
inline constexpr const char *PSS_FOLDER = "/mnt/pss";

/**
 * Gives this process a folder /mnt/pss of its own, empty, for the rest of its
 * life. Tried once, for it can't be undone. The process must have one thread.
 *
 * @return why the machine doesn't allow it; empty when the folder is there
 */
const std::string &make_pss_folder_private();

} // namespace simswitch::services
