/*
 * property_requests.cpp: see property_requests.h.
 */
#include "l3lif/property_requests.h"

#include "rtifhal_trident.h"

#include <string_view>

namespace lab::l3lif
{

namespace
{

// A label for an interface without a hardware record waits; the library says so as an error.
constexpr std::string_view NO_RECORD = "failed to get l3_pd from if_index ";

int run_setter(Lif &lif, std::uint32_t svi_id, std::uint32_t value)
{
    switch (lif.plan().kind) {
    case config::Kind::port:
        return rtifhal_set_kelvo_l3_property_l3int(lif.record());
    case config::Kind::port_channel:
        return rtifhal_set_kelvo_l3_property_l3pc(lif.record());
    case config::Kind::subinterface:
        return rtifhal_set_kelvo_l3_property_subint(lif.record());
    case config::Kind::tunnel:
        return rtifhal_set_kelvo_l3_property_l3tun(lif.record());
    case config::Kind::svi:
        break;
    }
    return svi_id == 0 ? rtifhal_trident_add_svi(lif.record(), 0, 0)
                       : rtifhal_set_kelvo_l3_property_svi(lif.record(), svi_id, value);
}

} // namespace

Request set_property(simswitch::Switch &hardware, Lif &lif, const std::string &name,
                     std::uint32_t svi_id, std::uint32_t value)
{
    return make_request(hardware, name,
                        [&lif, svi_id, value] { return run_setter(lif, svi_id, value); });
}

Request set_label(simswitch::Switch &hardware, Lif &lif, const std::string &name,
                  std::uint16_t label)
{
    const bool is_up = lif.record()->l3lif_pd_ctxt != nullptr;
    Request request = make_request(
        hardware, name, [&lif, label] { return rtifhal_upd_classid(label, lif.plan().ifindex); });
    if (!is_up) {
        request.expected = NO_RECORD;
    }
    return request;
}

Request get_property(simswitch::Switch &hardware, Lif &lif, const std::string &name,
                     std::uint32_t id, std::uint32_t &value)
{
    return make_request(hardware, name, [&lif, id, &value] {
        return rtifhal_get_kelvo_l3_property(lif.record(), id, &value);
    });
}

Request disable(simswitch::Switch &hardware, Lif &lif, const std::string &name)
{
    return make_request(hardware, name,
                        [&lif] { return rtifhal_trident_l3_disable(lif.plan().ifindex); });
}

} // namespace lab::l3lif
