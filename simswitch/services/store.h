/*
 * store.h: the persistent store: the global configuration and one record for
 * each routed interface.
 *
 * With a state folder it is the file store.sqlite in it, and what a call has
 * stored is there for the next process, however this one ends; without one it
 * lives in memory, made at its first use, as long as the switch. The
 * platform's store functions (fwmpd/pss.h, fwmpd_pss_globalc_store) write it;
 * a restart reads it here.
 */
#pragma once

#include "chip/outcome.h"
#include "rtifhal_types.h"
#include "state/folder.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace simswitch::services
{

/** Size of fwmpd_global_config in bytes. */
inline constexpr std::size_t GLOBAL_CONFIG_BYTES = 1068;
/** Where in it the held-back interface numbers begin, and how many bytes they are. */
inline constexpr std::size_t GLOBAL_CONFIG_PRESERVE = 44;
inline constexpr std::size_t GLOBAL_CONFIG_PRESERVE_BYTES = 1024;

using GlobalConfig = std::array<unsigned char, GLOBAL_CONFIG_BYTES>;

/** The record of an interface, as it was when it was stored last. */
struct StoredInterface {
    std::uint32_t ifindex = 0;
    std::array<std::uint8_t, 6> mac{};
    std::uint16_t int_vlan = 0;
    std::uint16_t vlan = 0;
    std::uint16_t si_encap_vlan = 0;
    std::uint32_t tid = 0;
    std::optional<l3lif_pi_ctxt> properties = {}; ///< none without an l3lif_pi_ctxt
    std::optional<l3_pd> hardware = {};           ///< none without a context or record
    /** The members' ifindexes in the tree's order; none without a pc_member_tree. */
    std::optional<std::vector<std::uint32_t>> members = {};
};

/** The store. */
class Store
{
public:
    /**
     * @param folder  where store.sqlite is, made and checked at once; null: in memory
     * @throws state::Error when it is damaged, sqlite::Error when it can't be read or written
     */
    explicit Store(state::Folder *folder = nullptr);
    ~Store();
    Store(const Store &) = delete;
    Store &operator=(const Store &) = delete;

    /** What g_fwm_pss_context is while this store is in use. */
    void *context() { return this; }

    // Writers. A refusal is -1 with the reason, e.g. a folder that can't be
    // written, and -4 for an argument that makes no sense.
    Outcome store_interface(const l3lif &lif);
    /** Removes an interface's record; removing what isn't there is no failure. */
    Outcome delete_interface(std::uint32_t ifindex);
    Outcome store_global_config(const unsigned char *config);
    /** Takes all away. */
    Outcome clear();

    // Readers. They throw a std::runtime_error when the file can't be read or is damaged.
    /** All stored interfaces, in the order of their ifindex. */
    std::vector<StoredInterface> stored_interfaces();
    /** The stored interface of an ifindex, if there is one. */
    std::optional<StoredInterface> stored_interface(std::uint32_t ifindex);
    /** The global configuration, if it was ever stored. */
    std::optional<GlobalConfig> global_config();

private:
    struct Open;
    Open &open();

    state::Folder *folder_;
    std::unique_ptr<Open> open_;
};

} // namespace simswitch::services
