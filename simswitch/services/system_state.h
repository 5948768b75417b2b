/*
 * system_state.h: the kind of restart and the platform's configuration keys.
 */
#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>

namespace simswitch::services
{

/** What the system says of itself; both are knobs. */
class SystemState
{
public:
    bool fast_restart = false; ///< sysmgr_is_fastboot_restart answers nonzero

    /** Sets a platform key, e.g. ("fwm", "skip_default_nh", "1"). */
    void set_key(const std::string &section, const std::string &key, std::string value)
    {
        keys_[{section, key}] = std::move(value);
    }
    /** Removes a platform key. */
    void remove_key(const std::string &section, const std::string &key)
    {
        keys_.erase({section, key});
    }
    /** The value of a platform key, if it exists. */
    std::optional<std::string> key(const std::string &section, const std::string &key) const
    {
        const auto found = keys_.find({section, key});
        return found == keys_.end() ? std::nullopt : std::optional(found->second);
    }

private:
    std::map<std::pair<std::string, std::string>, std::string> keys_;
};

} // namespace simswitch::services
