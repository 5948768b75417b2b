/*
 * growth_macs.cpp: virtual MACs, router MACs and private-VLAN pairs, as there are more of them.
 *
 * See growth_requests.h.
 */
#include "growth_parts.h"

#include <l3lif/l3lif_layer.h>

#include <memory>

namespace bench
{

namespace
{

/** SVIs that hold the virtual MACs, on VLANs from 2 on. */
constexpr std::size_t MAC_SVIS = 20;
constexpr std::uint16_t MAC_SVI_VLAN = 2;

constexpr std::uint16_t PRIMARY = 100;
constexpr std::uint16_t SECONDARY = 101;

/** Virtual MACs on a primary with pairs, each with a station for each pair. */
constexpr std::uint32_t PRIMARY_MACS = 4;

using Mac = std::array<std::uint8_t, 6>;

/** A virtual MAC by its number. */
Mac virtual_mac(std::uint32_t number)
{
    return {0x00,
            0x00,
            0x5e,
            0x00,
            static_cast<std::uint8_t>(number >> 8),
            static_cast<std::uint8_t>(number)};
}

/** A virtual MAC on an interface. */
struct Holding {
    std::uint32_t ifindex;
    Mac mac;
};

void install(const std::vector<Holding> &holdings)
{
    for (const Holding &one : holdings) {
        must_succeed(rtifhal_trident_fhrp_mac_add(one.mac.data(), one.ifindex), "add virtual MAC");
    }
}

void take_away(const std::vector<Holding> &holdings)
{
    for (const Holding &one : holdings) {
        must_succeed(rtifhal_trident_fhrp_mac_del(one.mac.data(), one.ifindex),
                     "delete virtual MAC");
    }
}

void update_pairs(std::uint16_t primary, std::uint16_t first, std::size_t count, std::uint32_t add)
{
    for (std::size_t i = 0; i < count; ++i) {
        rtifhal_kelvo_pvlan_svi_mapping_update(primary, static_cast<std::uint32_t>(first + i), add);
    }
}

void make_private(std::uint16_t primary, std::uint16_t first, std::size_t count)
{
    null_platform::set_private_vlan(primary, null_platform::PrivateVlan::primary);
    for (std::size_t i = 0; i < count; ++i) {
        null_platform::set_private_vlan(static_cast<std::uint16_t>(first + i),
                                        null_platform::PrivateVlan::secondary);
    }
}

/** Installs or takes away, `units` of what counts being in the batch. */
void come_and_go(Requests &requests, const std::string &name, const std::string &end,
                 std::size_t units, const std::vector<Holding> &batch)
{
    const auto add = [batch] { install(batch); };
    const auto remove = [batch] { take_away(batch); };
    requests.push_back({name + ": add" + end, units, [] {}, add, remove});
    requests.push_back({name + ": delete" + end, units, add, remove});
}

/** The listing, so many entries at a time, each call resumed behind the last entry. */
Request listing(std::size_t count, int room)
{
    const auto records =
        std::make_shared<std::vector<rtifhal_fhrp_mac_record_t>>(static_cast<std::size_t>(room));
    const auto places = std::make_shared<std::vector<rtifhal_fhrp_mac_record_t *>>();
    for (rtifhal_fhrp_mac_record_t &record : *records) {
        places->push_back(&record);
    }
    const auto list = [count, room, records, places] {
        rtifhal_fhrp_mac_record_t last = {};
        std::size_t listed = 0;
        int got = room;
        while (got == room) {
            must_succeed(rtifhal_trident_fhrp_mac_getnext(last.ifindex,
                                                          static_cast<std::uint16_t>(last.vlan),
                                                          last.mac, 0, 0, &got, places->data()),
                         "list virtual MACs");
            listed += static_cast<std::size_t>(got);
            if (got > 0) {
                last = (*records)[static_cast<std::size_t>(got) - 1];
            }
        }
        must_succeed(listed == count ? 0 : -1, "list virtual MACs");
    };
    const std::string name = room == 1 ? "virtual MACs: list one at a time, an entry"
                                       : "virtual MACs: list all at once, an entry";
    return {name, count, [] {}, list};
}

/** Looks some of the virtual MACs up, from all over the tree. */
Request look_up(const std::vector<Holding> &holdings)
{
    std::vector<Holding> batch;
    for (std::size_t i = 0; i < BATCH; ++i) {
        batch.push_back(holdings[i * (holdings.size() - 1) / (BATCH - 1)]);
    }
    return {"virtual MAC: look up", batch.size(), [] {},
            [batch] {
                for (const Holding &one : batch) {
                    const std::uint16_t vlan = l3lif_find_lif_from_ifindex(one.ifindex)->vlan;
                    const int there = rtifhal_fhrp_mac_present(one.ifindex, one.mac.data(), vlan);
                    must_succeed(there == 1 ? 0 : -1, "look a virtual MAC up");
                }
            }};
}

} // namespace

void add_virtual_macs(Requests &requests, const std::string &name, const Interface &interface,
                      std::uint32_t first)
{
    std::vector<Holding> batch;
    for (std::uint32_t i = 0; i < BATCH; ++i) {
        batch.push_back({interface.record.ifindex, virtual_mac(first + i)});
    }
    come_and_go(requests, name, "", batch.size(), batch);
}

void add_router_macs(Requests &requests)
{
    const auto ids = std::make_shared<std::array<int, BATCH>>();
    const auto add = [ids] {
        for (std::uint32_t i = 0; i < BATCH; ++i) {
            (*ids)[i] = rtifhal_trident_rmac_add(virtual_mac(i).data());
        }
    };
    const auto remove = [ids] {
        for (const int id : *ids) {
            must_succeed(rtifhal_trident_rmac_del(id), "delete router MAC");
        }
    };
    requests.push_back({"router MAC: add", BATCH, [] {}, add, remove});
    requests.push_back({"router MAC: delete", BATCH, add, remove});
}

void make_primary(std::uint16_t primary, std::uint16_t secondary)
{
    make_private(primary, secondary, 1);
    update_pairs(primary, secondary, 1, 1);
}

void add_pairs(Requests &requests, std::uint16_t primary, std::uint16_t first)
{
    make_private(primary, first, BATCH);
    const auto add = [primary, first] { update_pairs(primary, first, BATCH, 1); };
    const auto remove = [primary, first] { update_pairs(primary, first, BATCH, 0); };
    requests.push_back({"private-VLAN pair: add", BATCH, [] {}, add, remove});
    requests.push_back({"private-VLAN pair: delete", BATCH, add, remove});
}

Requests of_virtual_macs(Network &network, std::size_t count)
{
    Interfaces svis;
    for (std::uint16_t i = 0; i < MAC_SVIS; ++i) {
        svis.push_back(&network.svi(static_cast<std::uint16_t>(MAC_SVI_VLAN + i)));
        network.bring_up(*svis.back());
    }
    std::vector<Holding> standing;
    std::vector<Holding> batch;
    for (std::uint32_t i = 0; i < count; ++i) {
        (i < count - BATCH ? standing : batch)
            .push_back({svis[i % MAC_SVIS]->record.ifindex, virtual_mac(i / MAC_SVIS)});
    }
    install(standing);

    Requests requests;
    come_and_go(requests, "virtual MAC of an SVI", "", batch.size(), batch);
    requests.push_back(look_up(standing));
    requests.push_back(listing(standing.size(), 1));
    requests.push_back(listing(standing.size(), static_cast<int>(standing.size()) + 1));
    add_pairs(requests, PRIMARY, SECONDARY);
    return requests;
}

Requests of_pairs(Network &network, std::size_t count)
{
    make_private(PRIMARY, SECONDARY, count);
    Interface &svi = network.svi(PRIMARY);
    null_platform::set_private_vlan(PRIMARY, null_platform::PrivateVlan::primary);
    update_pairs(PRIMARY, SECONDARY, count - BATCH, 1);
    network.bring_up(svi);
    network.keep_numbers();

    Requests requests;
    add_pairs(requests, PRIMARY, static_cast<std::uint16_t>(SECONDARY + count - BATCH));
    std::vector<Holding> batch;
    for (std::uint32_t i = 0; i < PRIMARY_MACS; ++i) {
        batch.push_back({svi.record.ifindex, virtual_mac(i)});
    }
    come_and_go(requests, "virtual MAC of a primary VLAN's SVI", ", a pair",
                PRIMARY_MACS * (count - BATCH), batch);
    const auto remove = [&network, &svi] { network.remove(svi); };
    const auto add = [&network, &svi] { network.add(svi); };
    // The number that it had is free again, and not held back.
    const auto settle = [&network, number = svi.record.l3lif_pd_ctxt->l3_pd->l3intf_id] {
        network.restore_numbers();
        must_succeed(rtifhal_free_l3iif(number, 0), "give a number back");
    };
    requests.push_back({"SVI of a primary VLAN: add, a pair", count - BATCH,
                        [remove, settle] {
                            remove();
                            settle();
                        },
                        add});
    requests.push_back({"SVI of a primary VLAN: delete, a pair", count - BATCH, [] {}, remove,
                        [settle, add] {
                            settle();
                            add();
                        }});
    return requests;
}

} // namespace bench
