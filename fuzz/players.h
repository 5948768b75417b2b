/*
 * players.h: the routed interfaces, buffers and numbers with which the exported functions are
 * called, on a switch of their own.
 *
 * exported.cpp calls; an argument is made here by its type.
 */
#pragma once

#include "input.h"

#include "services/tree.h"
#include "support/lif.h"
#include "switch.h"

#include "rtifhal_trident.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <type_traits>
#include <vector>

namespace fuzz
{

/** Interfaces of each kind, well formed and registered; none of them is up. */
class Players
{
public:
    explicit Players(simswitch::chip::Kind chip);
    ~Players();
    Players(const Players &) = delete;
    Players &operator=(const Players &) = delete;

    /** Brings the usual ones up, so that calls find something. */
    void bring_up();
    /** Changes a property, a field or a knob of the platform, or arms a fault. */
    void change(Input &input);
    /** Forgets what the journal has, which else grows with each call. */
    void forget();

    /** The next argument of a type. A pointer is null or leads to a whole record. */
    template <class Argument> Argument argument(Input &input)
    {
        using Value = std::remove_const_t<Argument>;
        if constexpr (std::is_integral_v<Value>) {
            return static_cast<Value>(number(input));
        } else if constexpr (std::is_same_v<Value, const std::uint8_t *>) {
            return mac(input);
        } else if constexpr (std::is_same_v<Value, bcm_l3_intf_t>) {
            return *object(input);
        } else {
            return pointer(static_cast<Value>(nullptr), input);
        }
    }
    /** A number, more often one that means something. */
    std::uint64_t number(Input &input) const;
    /** Six bytes or null. */
    const std::uint8_t *mac(Input &input);

private:
    l3lif *pointer(l3lif * /*type*/, Input &input);
    const l3lif *pointer(const l3lif * /*type*/, Input &input);
    bcm_l3_intf_t *pointer(bcm_l3_intf_t * /*type*/, Input &input);
    int *pointer(int * /*type*/, Input &input);
    std::uint32_t *pointer(std::uint32_t * /*type*/, Input &input);
    def_egress_set_t *pointer(def_egress_set_t * /*type*/, Input &input);
    const def_egress_set_t *pointer(const def_egress_set_t * /*type*/, Input &input);
    static const l3iif_bitmap_t *pointer(const l3iif_bitmap_t * /*type*/, Input &input);
    static const char *pointer(const char * /*type*/, Input &input);
    void *pointer(void * /*type*/, Input &input);

    rtifhal_test::Lif &add(std::uint32_t ifindex);
    void join(rtifhal_test::Lif &channel, rtifhal_test::Lif &member);
    void file(rtifhal_test::Lif &main, rtifhal_test::Lif &sub, simswitch::services::Tree &tree,
              std::uint16_t vlan);
    bcm_l3_intf_t *object(Input &input);

    simswitch::Switch hardware_;
    simswitch::services::Tree members_;
    simswitch::services::Tree port_subs_;
    simswitch::services::Tree channel_subs_;
    std::vector<std::unique_ptr<rtifhal_test::Lif>> lifs_;
    simswitch::services::CommandOutput &output_;
    std::array<std::uint8_t, 6> mac_{};
    bcm_l3_intf_t object_{};
    int int_ = 0;
    std::uint32_t uint32_ = 0;
    std::array<def_egress_set_t, 2> sets_{};
    std::size_t next_set_ = 0;
};

} // namespace fuzz
