/*
 * restart_state.h: the state folder between two runs: opened as it was left, a
 * copy of it to look at, and the configuration that lies beside the chip, as
 * the layer above keeps its own over a restart. restart.h plays the restart.
 */
#pragma once

#include "switch.h"

#include <filesystem>
#include <memory>

namespace lab::l3lif
{

/** Name of the configuration in the state folder. */
inline constexpr const char *KEPT_CONFIG = "config.json";

/**
 * Puts a copy of a configuration into the state folder, in place of an earlier one.
 *
 * @param state_dir  the folder; empty: nothing is done
 * @param config     the configuration's file
 * @throws std::runtime_error when it can't be written
 */
void keep_config(const std::filesystem::path &state_dir, const std::filesystem::path &config);

/** The configuration in a state folder; empty when there is none. */
std::filesystem::path kept_config(const std::filesystem::path &state_dir);

/**
 * Opens the switch of a folder, of whatever kind its chip is.
 *
 * @throws std::runtime_error when there is no folder or no state in it;
 *         simswitch::state::Error when it can't be used; one line each
 */
std::unique_ptr<simswitch::Switch> open_saved(const std::filesystem::path &state_dir);

/** A copy of a state folder in a folder that goes with it. The folder itself stays as it is. */
class SavedCopy
{
public:
    /**
     * @throws std::runtime_error when there is no folder or no state in it,
     *         another process holds it, or it can't be read or copied
     */
    explicit SavedCopy(const std::filesystem::path &state_dir);
    ~SavedCopy();
    SavedCopy(const SavedCopy &) = delete;
    SavedCopy &operator=(const SavedCopy &) = delete;

    /**
     * Opens the switch of the copy.
     *
     * @throws std::runtime_error as open_saved, with the folder's own name
     */
    std::unique_ptr<simswitch::Switch> open() const;

private:
    std::filesystem::path original_;
    std::filesystem::path copy_;
};

} // namespace lab::l3lif
