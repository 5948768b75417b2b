/*
 * lif.cpp: see lif.h.
 */
#include "support/lif.h"

#include "services/system.h"

#include <fmt/format.h>

#include <cstdlib>
#include <cstring>

namespace rtifhal_test
{

namespace
{

constexpr std::uint8_t DEFAULT_MAC[6] = {0x00, 0x11, 0x22, 0x33, 0x44, 0x55};

/** Zeroed memory that the library may release; not an allocation of the library's. */
template <class Record> Record *zeroed()
{
    // Not realloc of null: the compiler makes malloc of it, which is watched.
    void *memory = std::aligned_alloc(alignof(Record), sizeof(Record));
    return static_cast<Record *>(std::memset(memory, 0, sizeof(Record)));
}

} // namespace

Lif::Lif(std::uint32_t ifindex)
{
    lif.ifindex = ifindex;
    std::memcpy(lif.mac, DEFAULT_MAC, sizeof lif.mac);
    lif.l3lif_pi_ctxt = &properties;
}

Lif::~Lif()
{
    drop_context();
}

void Lif::drop_context()
{
    if (lif.l3lif_pd_ctxt != nullptr) {
        // A free of null would show among the library's calls.
        if (lif.l3lif_pd_ctxt->l3_pd != nullptr) {
            std::free(lif.l3lif_pd_ctxt->l3_pd);
        }
        std::free(lif.l3lif_pd_ctxt);
    }
    lif.l3lif_pd_ctxt = nullptr;
}

Lif &Lif::with_bare_context()
{
    drop_context();
    lif.l3lif_pd_ctxt = zeroed<l3lif_pd_ctxt>();
    return *this;
}

Lif &Lif::with_record(std::uint16_t l3intf_id)
{
    with_bare_context();
    lif.l3lif_pd_ctxt->l3_pd = zeroed<l3_pd>();
    record()->l3intf_id = l3intf_id;
    return *this;
}

Lif &Lif::with_parked(std::uint16_t prev_l3_if_index)
{
    with_record(0);
    record()->brcm_prog_complete = 1;
    record()->prev_l3_if_index = prev_l3_if_index;
    return *this;
}

Lif &Lif::without_properties()
{
    lif.l3lif_pi_ctxt = nullptr;
    return *this;
}

std::string Lif::text() const
{
    return fmt::format("lif({})", index());
}

std::string Lif::index() const
{
    return fmt::format("{:#x}", lif.ifindex);
}

std::string Lif::hex() const
{
    return fmt::format("{:x}", lif.ifindex);
}

std::string Lif::decimal() const
{
    return fmt::format("{}", static_cast<int>(lif.ifindex));
}

std::unique_ptr<Lif> routed(std::uint32_t ifindex)
{
    auto made = std::make_unique<Lif>(ifindex);
    made->properties.ipv4_en = 1;
    made->properties.vrf = 1;
    made->properties.mtu = 1500;
    return made;
}

std::unique_ptr<Lif> port(unsigned sdk_port)
{
    return routed(simswitch::if_index::port(sdk_port - 1));
}

std::unique_ptr<Lif> tunnel(unsigned number)
{
    return routed(simswitch::if_index::tunnel(number));
}

} // namespace rtifhal_test
