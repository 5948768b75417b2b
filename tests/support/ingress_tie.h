/*
 * ingress_tie.h: what the tests of the ingress ties share: the calls and
 * messages around a tie, for an interface of number 7.
 */
#pragma once

#include "support/l3_objects.h"
#include "support/library_test.h"

namespace rtifhal_test
{

inline constexpr int TIED_IIF = 7;
/** The ingress object of a routed interface whose properties are the builder's. */
inline const std::string TIED_OBJECT = "{flags=0x6 vrf=1 urpf=0 class=64 ipmc=0 qos=0}";

/** Ingress ties on a Trident. */
class IngressTie : public LibraryTest
{
protected:
    using Calls = std::vector<std::string>;
    using Messages = std::vector<Message>;

    static int create(Lif &lif) { return rtifhal_l3_ing_create(lif.get(), 1); }
    /** The calls before the tie of an interface that works on its own record, then `tie`. */
    static Calls with_object(const Lif &lif, int type, const Calls &tie)
    {
        Calls calls = {called::ingress_init(), called::unit(), called::type(lif, type),
                       called::trident2(0), called::write_ingress(TIED_OBJECT, TIED_IIF)};
        calls.insert(calls.end(), tie.begin(), tie.end());
        return calls;
    }
    /** The messages of the tie: those behind the last one before the object is written. */
    Messages tie_messages() const
    {
        const auto seen = messages();
        for (std::size_t i = 0; i < seen.size(); ++i) {
            if (seen[i].text.starts_with("Before calling")) {
                return {seen.begin() + static_cast<std::ptrdiff_t>(i) + 1, seen.end()};
            }
        }
        return {};
    }
    /** The closing message; -1 where no port was looked up. */
    static Message success(const Lif &lif, int port)
    {
        return trace("rtifhal_l3_ing_create", "bcm_l3_ing_create(" + lif.hex() +
                                                  ") success: " + std::to_string(port) + ", 7\n");
    }
};

} // namespace rtifhal_test
