/*
 * restore_roads.h: what the tests of a restore share: a library that has just
 * started in restore mode, what it calls and says for an interface, and the
 * end of one process with the start of the next on the same chip and store.
 */
#pragma once

#include "support/l3_objects.h"
#include "support/lif.h"
#include "support/vlan_roads.h"

#include "chip/snapshot.h"
#include "services/tree.h"

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

namespace rtifhal_test::restore_road
{

inline constexpr std::uint16_t ROUTED = 4094;
inline const std::string RESTORE = "rtifhal_trident_l3port_restore";
inline const std::string RESTORE_GLOBALS = "rtifhal_trident_pss_restore_global_context";

/** A start in restore mode; at the end of each test the chip has to be as it was. */
class RestoreTest : public LibraryTest
{
protected:
    explicit RestoreTest(const simswitch::Options &options = {});
    void TearDown() override;

    /** Restores the global context of a configuration that holds those numbers back. */
    void globals_restored(std::initializer_list<unsigned> held_back = {});
    static int restore(Lif &lif) { return rtifhal_trident_l3port_restore(lif.get()); }
    /** The held-back numbers in the store; "nothing stored" if it was never written. */
    std::string stored_held_back();

private:
    std::uint64_t writes_before_;
    simswitch::chip::Snapshot chip_before_;
};

/** Writes a number into the global configuration as held back. */
void config_holds_back(unsigned iif);
/** The numbers of a table as ranges: "0-2 3584-8191". */
std::string ranges(const l3iif_bitmap_t &table);
/** The numbers that are not free, and those that are held back. */
std::string all_in_use();
std::string all_held_back();
/** The VLANs of a port in ascending order. */
std::vector<unsigned> vlans_of(int port);
/** The VLANs of all 105 ports, counted. */
int count_of_port_vlans();
/** The next number; -1 when there is none. */
int next_number();
/** Takes every number that is free. */
void take_all_free();

/** The first message of a restore; si_encap_vlan and int_vlan as they were. */
Message entered(const Lif &lif, int si_encap_vlan, int int_vlan);
/** A port's last message. */
Message port_found(int vlan, int port, int iif);
/** A port joins the cached ports of a VLAN. */
std::string cached_port(int vlan, int port, int code = 0);
/** The whole restore of a port or its subinterface. */
Calls port_restored(const Lif &lif, int vlan, int port);
/** The first message of the set-up of the numbers; inited: 0 or 1. */
Message tables_entered(int inited);

/** An interface as the store gives it back, its members with it. */
struct StoredLif {
    explicit StoredLif(const simswitch::services::StoredInterface &stored);

    std::unique_ptr<Lif> lif;
    std::vector<std::unique_ptr<Lif>> members;
    simswitch::services::Tree tree;
};

/** The interface of that ifindex from the store; an exception when it isn't there. */
std::unique_ptr<StoredLif> from_store(simswitch::Switch &sw, std::uint32_t ifindex);

/**
 * The process ends, what waits in its queue lost with it; the next one starts
 * in restore mode, the caches filled from the chip and the global configuration
 * from the store.
 */
void restart(simswitch::Switch &sw);

} // namespace rtifhal_test::restore_road
