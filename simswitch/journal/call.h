// clang-format off
/*
 * call.h: the helper with which every platform function opens its body, and
 * how arguments are printed.
 *
 *     int bcm_stg_vlan_add(int unit, int stg, bcm_vlan_t vlan)
 *     {
 *         Call call(Layer::sdk, __func__, unit, stg, vlan);
 *         return call.run([&] { return chip().stgs.add_vlan(stg, vlan); });
 *     }
 *
 * Arguments are printed by type:
 *   int, int16_t, uint16_t, uint8_t, bool   decimal: 4094
 *   uint32_t                                hex: 0x1a000001; a trunk id decimal
 *   bcm_gport_t, cast to uint32_t           hex: 0x8000005
 *   const char *                            quoted: "fwm", or null
 *   bcm_pbmp_t                              {0,5,9-12}
 *   bcm_mac_t                               00:11:22:33:44:55
 *   bcm_l2_station_t                        {flags=0x1c mac=M/M vlan=0/0 port=0/0}
 *   bcm_l3_intf_t                           {flags=0x40 id=3 mac=M vid=4094 vrf=1 mtu=1500 ttl=0 tunnel=0}
 *   bcm_l3_ingress_t                        {flags=0x6 vrf=1 urpf=0 class=64 ipmc=0 qos=0}
 *   bcm_l3_egress_t                         {flags=0x100 intf=3 mac=M vlan=0 module=0 port=5 trunk=0 encap=0}
 *   bcm_l3_egress_ecmp_t                    {flags=0x0 id=200000}
 *   bcm_l3_route_t                          {flags=0x4100 vrf=1 net=0.0.0.0/0 intf=100000}, "::/0" for IPv6
 *   bcm_vlan_control_vlan_t                 {vrf=1 iif=3 flags=0x278 class=4 urpf=0}
 *   bcm_vlan_block_t                        {kmc={} umc={0,5} uuc={0,5} bc={0,5}}
 *   bcm_vlan_action_set_t                   {vlan=4094 iif=5 ot_outer=2 dt_outer=0}
 *   bcm_trunk_info_t                        {flags=0x0 psc=9 ipmc_psc=0 dlf=-1 mc=-1 ipmc=-1 size=0}
 *   bcm_trunk_member_t                      {flags=0x0 gport=0x8000005}; a list of them [{…},{…}]
 *   fwm_pc_sdb_value_t                      {ifindex=0x20029000 tid=42}
 *   l3lif *                                 lif(0x1a000001), or null
 *   avl_tree_t *, avl_node_t *              tree, node, or null
 *   other pointers                          record, or null; a list of ids [1,2,3]
 * A pointer that only takes a result is no argument: what came back through it
 * is an output, "id=1", added with Call::out. A pointer handed in and read is
 * printed as the record behind it.
 */
// clang-format on
#pragma once

#include "chip/outcome.h"
#include "journal/format.h"
#include "journal/journal.h"

#include <string>
#include <type_traits>
#include <utility>

namespace simswitch
{

/** The journal of the switch that now stands in for the hardware. */
Journal &current_journal();

/** In the place of the layer: a diagnostic sink, a service that Journal::calls leaves out. */
struct TraceSink {
};

/** One call under way. */
class Call
{
public:
    template <class... Args>
    Call(Layer layer, const char *function, const Args &...args) : journal_(current_journal())
    {
        open(layer, false, function, format_arguments(args...));
    }
    template <class... Args>
    Call(TraceSink, const char *function, const Args &...args) : journal_(current_journal())
    {
        if (journal_.takes_sink()) {
            open(Layer::service, true, function, format_arguments(args...));
        }
    }

    Call(const Call &) = delete;
    Call &operator=(const Call &) = delete;
    /** What the call has changed outlives the process from here on. */
    ~Call();

    /** Adds "name=value" to what came back through pointers. */
    template <class T> void out(std::string_view name, const T &value)
    {
        if (CallRecord *record = journal_.at(index_)) {
            append_output(record->outputs, name, format_value(value));
        }
    }

    /** Tells why the call was refused, or what it did. */
    void reason(std::string text);

    /** Runs the body unless a fault hits; the body gives an int or an Outcome. */
    template <class Body> int run(Body &&body)
    {
        if (fault_) {
            reason("injected");
            return finish(*fault_);
        }
        if constexpr (std::is_same_v<std::invoke_result_t<Body>, Outcome>) {
            Outcome outcome = body();
            if (!outcome.reason.empty()) {
                reason(std::move(outcome.reason));
            }
            return finish(outcome.code);
        } else {
            return finish(body());
        }
    }

    /** The same for a function that gives a pointer; a fault makes it null. */
    template <class Body> auto run_pointer(Body &&body) -> decltype(body())
    {
        decltype(body()) pointer = nullptr;
        if (fault_) {
            reason("injected");
        } else {
            pointer = body();
        }
        show_result(Word{pointer != nullptr ? "record" : "null"});
        return pointer;
    }

    /** The same for a function that gives a word of bits, printed in hex; a fault's code is it. */
    template <class Body> std::uint32_t run_word(Body &&body)
    {
        std::uint32_t word = 0;
        if (fault_) {
            reason("injected");
            word = static_cast<std::uint32_t>(*fault_);
        } else {
            word = body();
        }
        show_result(word);
        return word;
    }

    /**
     * The same for a function that gives a text and never null; a fault makes
     * it empty. The result is printed as a quoted text.
     */
    template <class Body> auto run_text(Body &&body) -> decltype(body())
    {
        static char empty[1] = "";
        decltype(body()) text = empty;
        if (fault_) {
            reason("injected");
        } else {
            text = body();
        }
        show_result(static_cast<const char *>(text));
        return text;
    }

    /** The same for a function without a result; a fault makes it do nothing. */
    template <class Body> void run_void(Body &&body)
    {
        if (fault_) {
            reason("injected");
            return;
        }
        body();
    }

private:
    static constexpr std::size_t NOT_RECORDED = SIZE_MAX;

    void open(Layer layer, bool trace_sink, const char *function, std::string arguments);
    int finish(int code)
    {
        show_result(code);
        return code;
    }
    template <class T> void show_result(const T &value)
    {
        if (CallRecord *record = journal_.at(index_)) {
            append_value(record->result, value);
        }
    }

    Journal &journal_;
    std::size_t index_ = NOT_RECORDED;
    std::optional<int> fault_;
};

} // namespace simswitch
