/*
 * subint_roads.cpp: see subint_roads.h.
 */
#include "support/subint_roads.h"

#include "rtifhal_kelvo_trident/vlan/vlan.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <cstring>

namespace rtifhal_test::subint_road
{

namespace
{

constexpr std::uint16_t ROUTED = 4094;
constexpr unsigned NUMBER = 10;
constexpr int TYPE_PORT = 26;
constexpr int TYPE_PORT_CHANNEL = 22;
constexpr int MODULE_PORT = 0x8000000;

bool on_port_channel(const Lif &sub)
{
    return sub.lif.ifindex >> 28 == 2;
}

/** A dispatcher finds out what the subinterface is. */
Calls kind_asked(const Lif &sub)
{
    if (on_port_channel(sub)) {
        return {called::type(sub, TYPE_PORT_CHANNEL), called::is_port_channel(sub, 1)};
    }
    return {called::type(sub, TYPE_PORT), called::is_port_channel(sub, 0), called::is_sub(sub, 1)};
}

std::string port_set(const std::vector<int> &ports)
{
    return fmt::format("{{0{}{}}}", ports.empty() ? "" : ",", fmt::join(ports, ","));
}

Calls masks_written(const std::vector<int> &ports)
{
    return join({Calls{called::unit(), called::flush(), "fwmpd_trident_get_bvbt(100) = record",
                       "fwmpd_bcm_vlan_block_set(0, 100, " + masks(port_set(ports)) + ") = 0"},
                 popcounts(ports)});
}

/** In the last line of a create and what stands before it. */
Messages controls_messages()
{
    const std::string function = "rtifhal_vlan_create";
    return {trace(function, " Set vlan control for vid: 100, flags: 0x278\n"),
            trace(function, "Created 100 vlan \n")};
}

} // namespace

SubintOnPort::SubintOnPort(Kind chip) : LibraryTest({.chip = chip})
{
    l3iif_table_init();
    EXPECT_EQ(rtifhal_vlan_create(0, ROUTED, PORT), 0);
    main->lif.subint_tree = subs.get();
    sw.directory.add(main->get());
    sub = another(NUMBER, VLAN);
    sw.end_request();
    start();
}

std::unique_ptr<Lif> SubintOnPort::another(unsigned number, std::uint16_t vlan)
{
    auto made = subinterface(*main, number);
    made->lif.si_encap_vlan = vlan;
    EXPECT_TRUE(subs.insert(made->get()));
    return made;
}

void SubintOnPort::brought_up(Lif &subinterface)
{
    ASSERT_EQ(rtifhal_trident_add_subint(subinterface.get(), 0, 1), 0);
    sw.end_request();
    start();
}

ChannelSub::ChannelSub(Lif &main, unsigned number, std::uint16_t vlan)
    : Lif(main.lif.ifindex | number)
{
    properties = main.properties;
    lif.si_encap_vlan = vlan;
    lif.main_l3lif = &view;
    view.ifindex = main.lif.ifindex;
    std::memcpy(view.mac, lif.mac, sizeof view.mac);
    view.int_vlan = vlan;
    view.si_encap_vlan = vlan;
    view.l3lif_pi_ctxt = &properties;
}

void ChannelSub::with_shared_record(std::uint16_t l3intf_id)
{
    with_record(l3intf_id);
    view.l3lif_pd_ctxt = lif.l3lif_pd_ctxt;
}

std::string ChannelSub::view_text() const
{
    return fmt::format("lif({:#x})", view.ifindex);
}

SubintOnPortChannel::SubintOnPortChannel(const std::vector<int> &members, Kind chip)
    : LibraryTest({.chip = chip})
{
    l3iif_table_init();
    std::vector<int> gports;
    for (const int member : members) {
        EXPECT_EQ(rtifhal_vlan_create(0, ROUTED, member), 0);
        gports.push_back(MODULE_PORT | member);
    }
    EXPECT_TRUE(sw.chip.trunks.create(TRUNK, {}).ok());
    set_members(gports);
    main->lif.subint_tree = subs.get();
    sw.directory.add(main->get());
    sub = std::make_unique<ChannelSub>(*main, NUMBER, VLAN);
    EXPECT_TRUE(subs.insert(sub->get()));
    sw.host.set_trunk_id(main->lif.ifindex, TRUNK);
    sw.host.set_trunk_id(sub->lif.ifindex, TRUNK);
    sw.end_request();
    start();
}

void SubintOnPortChannel::set_members(const std::vector<int> &gports)
{
    simswitch::chip::Trunk trunk;
    for (const int gport : gports) {
        trunk.members.push_back({.gport = gport});
    }
    EXPECT_TRUE(sw.chip.trunks.set(TRUNK, trunk).ok());
}

int SubintOnPortChannel::add(ChannelSub &subinterface, int create, int aux)
{
    const int code = rtifhal_trident_add_subint(subinterface.get(), aux, create);
    subinterface.lif.l3lif_pd_ctxt = subinterface.view.l3lif_pd_ctxt;
    return code;
}

int SubintOnPortChannel::add_step(ChannelSub &subinterface, int create)
{
    const int code = rtifhal_trident_subint_add(subinterface.get(), create);
    subinterface.lif.l3lif_pd_ctxt = subinterface.view.l3lif_pd_ctxt;
    return code;
}

int SubintOnPortChannel::del(ChannelSub &subinterface, int destroy, int aux)
{
    const int code = rtifhal_trident_del_subint(subinterface.get(), aux, destroy);
    subinterface.view.l3lif_pd_ctxt = subinterface.lif.l3lif_pd_ctxt;
    return code;
}

int SubintOnPortChannel::del_step(ChannelSub &subinterface, int destroy)
{
    const int code = rtifhal_trident_subint_del(subinterface.get(), destroy);
    subinterface.view.l3lif_pd_ctxt = subinterface.lif.l3lif_pd_ctxt;
    return code;
}

void SubintOnPortChannel::brought_up()
{
    ASSERT_EQ(add(*sub, 1), 0);
    sw.end_request();
    start();
}

Calls port_asked(const Lif &sub)
{
    return {called::is_port_channel(sub, 0), called::type(sub, TYPE_PORT),
            called::port_of(sub, PORT)};
}

Calls members_read(const Lif &sub, const std::vector<int> &ports)
{
    std::vector<std::string> members;
    members.reserve(ports.size());
    for (const int port : ports) {
        members.push_back(fmt::format("{{flags=0x0 gport={:#x}}}", MODULE_PORT | port));
    }
    return {
        called::is_port_channel(sub, 1),
        called::is_port_channel(sub, 1),
        fmt::format("fwm_ifindex_2_tid({}) = 0 [tid={}]", sub.index(), TRUNK),
        "bcm_trunk_info_t_init()",
        called::flush(),
        fmt::format("bcm_trunk_get(0, {}, 32) = 0 [info={{flags=0x0 psc=0 ipmc_psc=0 dlf=-1 mc=-1 "
                    "ipmc=-1 size=0}} count={} members=[{}]]",
                    TRUNK, ports.size(), fmt::join(members, ",")),
    };
}

Calls port_opened(int port)
{
    return {
        called::unit(),
        fmt::format("{}(0, {}, 8, 1) = 0", PORT_CONTROL, port),
        fmt::format("{}(0, {}, 10, 1) = 0", PORT_CONTROL, port),
        fmt::format("{}(0, {}, 9, 1) = 0", PORT_CONTROL, port),
        fmt::format("{}(0, {}, 11, 0) = 0", PORT_CONTROL, port),
        fmt::format("fwmpd_bcm_port_untagged_vlan_set(0, {}, 4094) = 0", port),
    };
}

std::string object(const std::string &flags, int iif, int vlan)
{
    return fmt::format(
        "{{flags={} id={} mac=00:11:22:33:44:55 vid={} vrf=1 mtu=1500 ttl=0 tunnel=0}}", flags, iif,
        vlan);
}

Calls object_created(const std::string &stored, int iif, int vlan)
{
    return {
        called::inband_init(),
        fmt::format("malloc({}) = record", sizeof(l3lif_pd_ctxt)),
        fmt::format("malloc({}) = record", sizeof(l3_pd)),
        "rtifhal_bcm_l3_intf_create(0, " + object("0x40", iif, vlan) + ") = 0",
        "rtifhal_pss_l3port_store(store, 1, " + stored + ") = 0",
    };
}

Calls object_written_again(const std::string &stored)
{
    return {"rtifhal_bcm_l3_intf_create(0, " + object("0x140") + ") = 0",
            "rtifhal_pss_l3port_store(store, 1, " + stored + ") = 0"};
}

Calls vlan_made(int port, const std::string &flags)
{
    return join({vlan_road::creates(VLAN), vlan_road::becomes_routed(VLAN, flags),
                 vlan_road::adds_port(VLAN, port, "{}"), first_use_calls(VLAN, port),
                 refreshed_controls_calls(VLAN, flags)});
}

Messages vlan_made_messages(int port)
{
    const std::string function = "rtifhal_vlan_create";
    return join({Messages{trace(function, fmt::format("vlan 100 port {}\n", port)),
                          trace(function, "set the flags 0x278\n")},
                 first_use_messages(VLAN, port), controls_messages()});
}

Calls vlan_joined(int port, const std::vector<int> &ports)
{
    return join({vlan_road::creates(VLAN, -8), vlan_road::adds_port(VLAN, port, "{}"),
                 Calls{"fwmpd_get_vlan_stg(100) = 2",
                       fmt::format("fwmpd_bcm_stg_stp_set(0, 2, {}, 4) = 0", port)},
                 masks_written(ports), refreshed_controls_calls(VLAN, "0x278")});
}

Messages vlan_joined_messages(int port, const std::vector<int> &ports)
{
    const std::string block = "rtifhal_subintf_block_set";
    return join(
        {Messages{
             trace("rtifhal_vlan_create", fmt::format("vlan 100 port {}\n", port)),
             trace(block, fmt::format("\n\n UMCB Vlan = 100 type = 1 port = {} set = 1\n", port)),
             trace(block, fmt::format("UMCB Remove CPU from UMC and add {} to Blk lists\n", port)),
             trace(block, "UMCB Calling bcm_vlan_block_set for 100\n"),
             trace(block, fmt::format("{} SET lvtc->subint_count:{} pbmp_count:{} \n", block,
                                      ports.size(), ports.size())),
         },
         controls_messages()});
}

Calls keyed(int port)
{
    return {fmt::format("fwmpd_bcm_vlan_control_port_set(0, {}, 14, 8) = 0", port)};
}

Calls translated(const std::string &gport, int iif, int code)
{
    return {"bcm_vlan_action_set_t_init()",
            fmt::format("{}(0, {}, 8, 100, 65535, {{vlan=4094 iif={} ot_outer=2 dt_outer=0}}) = {}",
                        TRANSLATE, gport, iif, code)};
}

Calls untranslated(const std::string &gport, int code)
{
    return {fmt::format("{}(0, {}, 8, 100, 0) = {}", UNTRANSLATE, gport, code)};
}

Calls ingress_and_egress(const Lif &sub, const Lif &main, Kind chip, bool create)
{
    const int is_channel = on_port_channel(sub) ? 1 : 0;
    const int type = on_port_channel(sub) ? TYPE_PORT_CHANNEL : TYPE_PORT;
    // A Trident2 routes IPv4 alone here: the object says that IPv6 is off.
    const std::string flags = chip == Kind::trident2 ? "0x486" : "0x6";
    return join(
        {kind_asked(sub),
         Calls{called::ingress_init(), called::unit(), called::type(sub, type),
               called::is_port_channel(main, is_channel)},
         create ? Calls{} : Calls{called::from_cache(IIF)},
         Calls{
             called::trident2(chip == Kind::trident2 ? 1 : 0),
             called::write_ingress("{flags=" + flags + " vrf=1 urpf=0 class=64 ipmc=0 qos=0}", IIF),
             called::is_tunnel(sub, 0), called::is_sub(sub, 1)},
         kind_asked(sub),
         Calls{"bcm_l3_egress_t_init()", called::unit(), called::is_port_channel(main, is_channel),
               "fwmpd_bcm_switch_control_set(0, 230, 1) = 0"}});
}

Calls untied(const Lif &sub, const Lif &main, bool destroy)
{
    const int is_channel = on_port_channel(sub) ? 1 : 0;
    const int type = on_port_channel(sub) ? TYPE_PORT_CHANNEL : TYPE_PORT;
    return join(
        {kind_asked(sub), kind_asked(sub),
         Calls{called::unit(), called::type(sub, type), called::is_port_channel(main, is_channel)},
         destroy ? Calls{called::destroy_ingress(IIF)} : Calls{},
         Calls{called::is_tunnel(sub, 0), called::is_sub(sub, 1)}});
}

Calls object_read(int code)
{
    const std::string answer = code == 0 ? " [intf=" + object("0x0") + "]" : "";
    return {called::unit(), called::intf_init(), called::intf_init(), called::flush(),
            fmt::format("bcm_l3_intf_get(0, {}) = {}{}", IIF, code, answer)};
}

Calls main_asked(const Lif &sub, const Lif &main)
{
    return {fmt::format("if_index_get_mainintf_from_subintf({}) = {}", sub.index(), main.index()),
            "l3lif_find_lif_from_ifindex(" + main.index() + ") = record"};
}

Calls object_deleted(const Lif &sub, bool destroy)
{
    return join({Calls{called::unit(), "rtifhal_bcm_l3_intf_delete(0, " + object("0x0") + ") = 0"},
                 destroy ? Calls{called::inband_init(), called::store_globals(),
                                 "mtrack_free(record)", "mtrack_free(record)"}
                         : Calls{},
                 Calls{called::unstore(sub)}});
}

Calls vlan_left(int port, const std::vector<int> &staying)
{
    return join({Calls{fmt::format("fwmpd_bcm_vlan_port_remove(0, 100, {{{}}}) = 0", port)},
                 staying.empty() ? last_use_calls(VLAN, port) : masks_written(staying)});
}

} // namespace rtifhal_test::subint_road
