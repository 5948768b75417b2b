/*
 * players.cpp: see players.h.
 */
#include "players.h"

#include "services/ifindex.h"
#include "support/load_time_state.h"

#include <fwm/state.h>
#include <fwmpd/pss.h>
#include <sdk/l3.h>

#include <algorithm>
#include <cstring>

namespace fuzz
{

namespace
{

namespace if_index = simswitch::if_index;
using rtifhal_test::Lif;

// Places in the list of interfaces.
constexpr std::size_t PORT = 0;
constexpr std::size_t CHANNEL = 1;
constexpr std::size_t MEMBER = 2;
constexpr std::size_t SVI = 4;
constexpr std::size_t PORT_SUB = 6;
constexpr std::size_t CHANNEL_SUB = 7;
constexpr std::size_t TUNNEL = 8;

constexpr std::uint32_t NUMBERS[] = {
    0,    1,    2,    3,   8191,   8192,       4093,       4094,       4095,       4096,      104,
    105,  255,  256,  32,  0xffff, 0x10000,    0x7fffffff, 0x80000000, 0xffffffff, 0x8000000, 100,
    1500, 9216, 1024, 128, 129,    0x10000000, 0x20000000, 0x30000000, 0x40000000, 0x50000000};

simswitch::Options fresh(simswitch::chip::Kind chip)
{
    rtifhal_test::reset_library();
    return {.chip = chip};
}

/** Overwrites a record of numbers by bytes of the input. */
template <class Record> void overwrite(Record &record, Input &input)
{
    static_assert(std::is_trivially_copyable_v<Record>);
    const std::size_t at = input.byte() % sizeof record;
    const auto bytes = input.bytes(std::min<std::size_t>(input.byte() % 16, sizeof record - at));
    // What is empty has no address.
    if (!bytes.empty()) {
        std::memcpy(reinterpret_cast<std::uint8_t *>(&record) + at, bytes.data(), bytes.size());
    }
}

} // namespace

Players::Players(simswitch::chip::Kind chip)
    : hardware_(fresh(chip)), output_(hardware_.command_outputs.open())
{
    add(if_index::port(0));
    Lif &channel = add(if_index::port_channel(7));
    join(channel, add(if_index::port(4)));
    join(channel, add(if_index::port(5)));
    for (const std::uint16_t vlan : {std::uint16_t{100}, std::uint16_t{101}}) {
        Lif &svi = add(if_index::svi(vlan));
        svi.lif.vlan = svi.lif.int_vlan = svi.lif.si_encap_vlan = vlan;
        hardware_.host.vlans.add(vlan);
    }
    file(*lifs_[PORT], add(if_index::port_sub(0, 10)), port_subs_, 10);
    file(channel, add(if_index::port_channel_sub(7, 20)), channel_subs_, 20);
    add(if_index::tunnel(0));
    add(if_index::management(0));
    add(if_index::loopback(1));
    add(if_index::port(255)).without_properties();
    add(0xffffffff);
    hardware_.host.set_trunk_id(channel.lif.ifindex, 8);
}

Players::~Players()
{
    for (const auto &lif : lifs_) {
        hardware_.directory.remove(lif->lif.ifindex);
    }
}

Lif &Players::add(std::uint32_t ifindex)
{
    lifs_.push_back(std::make_unique<Lif>(ifindex));
    Lif &added = *lifs_.back();
    added.properties.ipv4_en = 1;
    added.properties.vrf = 1;
    hardware_.directory.add(added.get());
    return added;
}

void Players::join(Lif &channel, Lif &member)
{
    channel.lif.pc_member_tree = members_.get();
    members_.insert(member.get());
    member.lif.main_l3lif = channel.get();
}

void Players::file(Lif &main, Lif &sub, simswitch::services::Tree &tree, std::uint16_t vlan)
{
    main.lif.subint_tree = tree.get();
    tree.insert(sub.get());
    sub.lif.main_l3lif = main.get();
    sub.lif.si_encap_vlan = vlan;
    sub.lif.tid = 8;
}

void Players::bring_up()
{
    rtifhal_trident_add_l3port(lifs_[PORT]->get(), 1);
    rtifhal_trident_add_l3pc(lifs_[MEMBER]->get(), 1);
    rtifhal_trident_add_l3pc(lifs_[MEMBER + 1]->get(), 0);
    rtifhal_trident_add_svi(lifs_[SVI]->get(), 0, 1);
    rtifhal_trident_add_subint(lifs_[PORT_SUB]->get(), 0, 1);
    rtifhal_trident_add_l3tun(lifs_[TUNNEL]->get(), 1);
    forget();
}

void Players::change(Input &input)
{
    Lif &lif = *lifs_[input.byte() % lifs_.size()];
    switch (input.byte() % 8) {
    case 0:
        overwrite(lif.properties, input);
        break;
    case 1:
        overwrite(lif.lif.mac, input);
        break;
    case 2:
        lif.lif.int_vlan = static_cast<std::uint16_t>(number(input));
        break;
    case 3:
        lif.lif.si_encap_vlan = static_cast<std::uint16_t>(number(input));
        break;
    case 4:
        lif.lif.tid = static_cast<std::uint32_t>(number(input));
        break;
    case 5:
        g_fwm_pss_restore_mode = input.byte() % 2;
        break;
    case 6:
        hardware_.system.fast_restart = input.byte() % 2 != 0;
        break;
    default:
        hardware_.journal.disarm();
        hardware_.journal.arm({.code = static_cast<std::int8_t>(input.byte()),
                               .nth = 1ULL + input.byte() % 64,
                               .forever = input.byte() % 4 == 0});
    }
}

void Players::forget()
{
    hardware_.end_request();
    hardware_.journal.clear();
    hardware_.trace.clear();
}

std::uint64_t Players::number(Input &input) const
{
    const std::uint8_t how = input.byte();
    switch (how % 6) {
    case 0:
        return input.byte();
    case 1:
        return NUMBERS[input.byte() % std::size(NUMBERS)];
    case 2:
        return input.number(2);
    case 3:
        return input.number(4);
    case 4:
        return input.number(8);
    default:
        return lifs_[input.byte() % lifs_.size()]->lif.ifindex;
    }
}

const std::uint8_t *Players::mac(Input &input)
{
    const std::uint8_t how = input.byte();
    if (how == 0) {
        return nullptr;
    }
    // A few that come again, and any.
    mac_ = {0x00, 0x00, 0x5e, 0x00, 0x01, how};
    if (how % 4 == 0) {
        const auto bytes = input.bytes(mac_.size());
        std::copy(bytes.begin(), bytes.end(), mac_.begin());
    }
    return mac_.data();
}

l3lif *Players::pointer(l3lif * /*type*/, Input &input)
{
    const std::size_t place = input.byte() % (lifs_.size() + 1);
    return place == lifs_.size() ? nullptr : lifs_[place]->get();
}

const l3lif *Players::pointer(const l3lif * /*type*/, Input &input)
{
    return pointer(static_cast<l3lif *>(nullptr), input);
}

bcm_l3_intf_t *Players::object(Input &input)
{
    bcm_l3_intf_t_init(&object_);
    overwrite(object_, input);
    return &object_;
}

bcm_l3_intf_t *Players::pointer(bcm_l3_intf_t * /*type*/, Input &input)
{
    return input.byte() % 2 == 0 ? nullptr : object(input);
}

int *Players::pointer(int * /*type*/, Input & /*input*/)
{
    return &int_;
}

std::uint32_t *Players::pointer(std::uint32_t * /*type*/, Input & /*input*/)
{
    return &uint32_;
}

def_egress_set_t *Players::pointer(def_egress_set_t * /*type*/, Input &input)
{
    if (input.byte() == 0) {
        return nullptr;
    }
    def_egress_set_t &set = sets_.at(next_set_++ % sets_.size());
    overwrite(set, input);
    return &set;
}

const def_egress_set_t *Players::pointer(const def_egress_set_t * /*type*/, Input &input)
{
    return pointer(static_cast<def_egress_set_t *>(nullptr), input);
}

const l3iif_bitmap_t *Players::pointer(const l3iif_bitmap_t * /*type*/, Input &input)
{
    const std::uint8_t which = input.byte() % 3;
    return which == 0 ? nullptr : which == 1 ? &l3lif_l3iif_table : &l3lif_l3iif_table_preserve;
}

const char *Players::pointer(const char * /*type*/, Input & /*input*/)
{
    return "fuzz %s";
}

void *Players::pointer(void * /*type*/, Input &input)
{
    return input.byte() % 2 == 0 ? nullptr : static_cast<void *>(&output_);
}

} // namespace fuzz
