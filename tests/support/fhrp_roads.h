/*
 * fhrp_roads.h: what the tests of virtual MACs share: interfaces that the layer
 * above knows, VLANs with their private-VLAN role, what is kept, and the
 * stretches of calls and messages that an add and a delete consist of.
 *
 * The switch is a unit 0. Unless a test says otherwise the MAC is VMAC.
 */
#pragma once

#include "support/l3_objects.h"
#include "support/lif.h"
#include "support/vlan_roads.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace rtifhal_test::fhrp_road
{

/** Six bytes that know how they are printed. */
struct Address {
    std::uint8_t bytes[6];

    /** "02:11:5e:33:01:08" */
    std::string text() const;
};

/** No byte twice: one in another's place shows. */
inline constexpr Address VMAC = {{0x02, 0x11, 0x5e, 0x33, 0x01, 0x08}};
inline constexpr Address OTHER = {{0x02, 0x11, 0x5e, 0x33, 0x01, 0x09}};
inline constexpr Address MULTICAST = {{0x33, 0x33, 0x12, 0x34, 0x56, 0x08}};

inline constexpr std::uint16_t ROUTED = 4094;
inline constexpr int PORT = 5;
inline constexpr std::uint16_t PRIMARY = 100;

inline const std::string ADD = "rtifhal_trident_fhrp_mac_add";
inline const std::string DEL = "rtifhal_trident_fhrp_mac_del";
inline const std::string LIST = "rtifhal_trident_fhrp_mac_getnext";
inline const std::string SECONDARY_ADD = "rtifhal_fhrp_mac_prog_sec_vlan";
inline const std::string SECONDARY_DEL = "rtifhal_fhrp_mac_unprog_sec_vlan";

/** What a VLAN is for the forwarding manager. */
enum class Role : std::uint8_t { unknown, plain, secondary, primary };

/** A private-VLAN pair; words of 32 bits. */
struct Pair {
    std::uint32_t primary;
    std::uint32_t secondary;

    bool operator==(const Pair &) const = default;
};

/** A test of virtual MACs. The arrangements of interfaces, pairs and entries end with start(). */
class FhrpTest : public LibraryTest
{
protected:
    explicit FhrpTest(const simswitch::Options &options = {});

    /** The layer above knows the interface. */
    Lif &known(std::unique_ptr<Lif> lif);
    Lif &known_port(unsigned sdk_port = PORT) { return known(port(sdk_port)); }
    Lif &known_svi(std::uint16_t vlan = PRIMARY) { return known(svi(vlan)); }

    /** Gives a VLAN its role; unknown: the forwarding manager has no record of it. */
    void vlan_is(std::uint16_t vlan, Role role);
    /** The layer above has announced these pairs, while there was no virtual MAC on them. */
    void announced(const std::vector<Pair> &pairs);
    /** The SVI of a primary whose secondaries those are. */
    Lif &primary_svi(const std::vector<std::uint32_t> &secondaries, std::uint16_t vlan = PRIMARY);
    /** An entry for that station, without a word to the chip. */
    void saved(const Lif &lif, const Address &mac, std::uint16_t vlan, int station);
    /** A virtual MAC that is installed. */
    void added(const Lif &lif, const Address &mac = VMAC);
    /** The chip loses a station. */
    void lost(int station);

    static int add(const Lif &lif, const Address &mac = VMAC);
    static int del(const Lif &lif, const Address &mac = VMAC);

    /** The stations in the chip, by id: "1 {flags=0x3c …}". */
    std::vector<std::string> stations() const;

private:
    std::vector<std::unique_ptr<Lif>> lifs_;
};

/** The entries in the order of the tree: "0x10400000 4094 02:11:5e:33:01:08 @1". */
std::vector<std::string> kept();
/** Such a line. */
std::string entry(const Lif &lif, unsigned vlan, int station, const Address &mac = VMAC);
/** The pairs in the order in which a walk meets them. */
std::vector<Pair> pairs_in_order();
/** Those of them that belong to a primary. */
std::vector<std::uint32_t> secondaries_in_order(std::uint32_t primary = PRIMARY);

/** A station in the chip as stations() tells it. */
std::string in_chip(int id, const std::string &record);
/** A station's record as the journal prints it: vlan "100/4095", port "5/127". */
std::string station(const std::string &flags, const Address &mac, const std::string &vlan,
                    const std::string &port = "0/0");

/** How an add begins, up to the look-up of the key. */
Calls add_begins(const Lif &lif, int type);
/** How a delete begins, up to the look-up of the key. */
Calls delete_begins(const Lif &lif, int type);
/** The tree is asked for a key. */
std::string looked_up(bool found);
/** Whether it is a subinterface. */
std::string sub_asked(const Lif &lif);
/** Which port it is. */
Calls port_asked(const Lif &lif, int sdk_port = PORT);
/** What a VLAN is for the forwarding manager, as far as it is asked. */
Calls role_asked(unsigned vlan, Role role);
/** A station goes into the chip, or the chip refuses it. */
Calls station_added(const std::string &record, int id);
Calls station_refused(const std::string &record, int code);
/** A station leaves the chip. */
Calls station_deleted(int id, int code = 0);
/** An entry is kept; the first makes the tree. */
Calls entry_saved(bool first);
/** An entry is forgotten. */
Calls entry_removed();
/** The walk over the pairs begins. */
inline const std::string WALK = "g_hash_table_foreach(record)";

/** "fhrp mac (…) @ idx:1" */
Message now_at(const std::string &function, int id, const Address &mac = VMAC);
/** "fhrp mac (…) failed: …" */
Message failed(const std::string &function, int code, const Address &mac = VMAC);

} // namespace rtifhal_test::fhrp_road
