/*
 * exported.cpp: any of the library's exported functions, in any order, with any numbers; a pointer
 * is null or leads to a whole record. What they answer is theirs; that they write nowhere but into
 * what they were given, the sanitizers see.
 *
 * The functions are those of the headers, by scripts/calls.py; players.h makes the arguments.
 */
#include "input.h"
#include "players.h"

#include "services/pss_folder.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <tuple>

namespace
{

using fuzz::Input;
using fuzz::Players;

constexpr std::size_t CALLS_MAX = 48;
constexpr std::uint8_t IS_TRIDENT2 = 1;
constexpr std::uint8_t IS_DOWN = 2;

/** Calls a function with arguments by their types. */
template <class Result, class... Arguments>
void call_with(Result (*function)(Arguments...), Players &players, Input &input)
{
    // Braces: one after the other.
    std::tuple<Arguments...> arguments{players.argument<Arguments>(input)...};
    static_cast<void>(std::apply(function, arguments));
}

template <auto Function> struct Caller {
    static void call(Players &players, Input &input) { call_with(Function, players, input); }
};

/** Its memory is as large as it is told. */
template <> struct Caller<&sal_memset> {
    static void call(Players &players, Input &input)
    {
        std::array<std::uint8_t, 256> memory{};
        sal_memset(memory.data(), static_cast<int>(players.number(input)), input.byte());
    }
};

/** Room for as many records as it is told. */
template <> struct Caller<&rtifhal_trident_fhrp_mac_getnext> {
    static void call(Players &players, Input &input)
    {
        std::array<rtifhal_fhrp_mac_record_t, 4> records{};
        std::array<rtifhal_fhrp_mac_record_t *, 4> places{};
        const std::uint8_t filled = input.byte();
        for (std::size_t i = 0; i < places.size(); ++i) {
            places.at(i) = (filled >> i & 1U) != 0 ? &records.at(i) : nullptr;
        }
        // None, or less than none, are wanted too.
        int count = static_cast<int>(input.byte() % 7) - 2;
        const auto ifindex = static_cast<std::uint32_t>(players.number(input));
        const auto vlan = static_cast<std::uint16_t>(players.number(input));
        rtifhal_trident_fhrp_mac_getnext(ifindex, vlan, players.mac(input), input.byte() % 2,
                                         input.byte() % 2, &count, places.data());
    }
};

/** Two entries, each of them perhaps null. */
template <> struct Caller<&rtifhal_fhrp_mac_avl_compare_func> {
    static void call(Players &players, Input &input)
    {
        std::array<fhrp_mac_entry_t, 2> entries{};
        for (fhrp_mac_entry_t &entry : entries) {
            entry.ifindex = static_cast<std::uint32_t>(players.number(input));
            entry.vlan = static_cast<std::uint16_t>(input.number(2));
        }
        const std::uint8_t which = input.byte();
        rtifhal_fhrp_mac_avl_compare_func(which % 4 == 0 ? nullptr : entries.data(),
                                          which % 3 == 0 ? nullptr : &entries[1]);
    }
};

/** Records of the platform, as large as they are there. */
template <> struct Caller<&rtifhal_trident_vxlan_port_create> {
    static void call(Players &players, Input &input)
    {
        alignas(8) std::array<std::array<std::uint8_t, 512>, 3> records{};
        for (auto &record : records) {
            const auto bytes = input.bytes(input.byte() % 64);
            std::copy(bytes.begin(), bytes.end(), record.begin());
        }
        const std::uint8_t null = input.byte();
        const auto unit = static_cast<int>(players.number(input));
        const auto ifindex = static_cast<std::uint32_t>(players.number(input));
        rtifhal_trident_vxlan_port_create(unit, ifindex, null == 1 ? nullptr : records[0].data(),
                                          null == 2 ? nullptr : records[1].data(),
                                          null == 3 ? nullptr : records[2].data(), 0);
    }
};

using Call = void (*)(Players &, Input &);

constexpr Call CALLS[] = {
#define EXPORTED(name) &Caller<&(name)>::call,
#include "exported_functions.inc"
#undef EXPORTED
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    Input input(data, size);
    const std::uint8_t kind = input.byte();
    Players players((kind & IS_TRIDENT2) != 0 ? simswitch::chip::Kind::trident2
                                              : simswitch::chip::Kind::trident);
    if ((kind & IS_DOWN) == 0) {
        players.bring_up();
    }
    for (std::size_t i = 0; i < CALLS_MAX && !input.empty(); ++i) {
        const std::uint8_t which = input.byte();
        if (which >= std::size(CALLS)) {
            players.change(input);
        } else {
            CALLS[which](players, input);
        }
        players.forget();
    }
    return 0;
}
