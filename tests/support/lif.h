/*
 * lif.h: builders of routed interfaces, in the role of the layer above.
 */
#pragma once

#include "rtifhal_types.h"
#include "services/ifindex.h"

#include <cstdint>
#include <memory>
#include <string>

namespace rtifhal_test
{

/**
 * A routed interface with its properties, as the layer above hands it in. The
 * context is the library's; what is left of it goes with this object.
 */
struct Lif {
    /** An interface of that ifindex: MAC 00:11:22:33:44:55, all else 0, properties all 0. */
    explicit Lif(std::uint32_t ifindex);
    ~Lif();
    Lif(const Lif &) = delete;
    Lif &operator=(const Lif &) = delete;

    /** Gives it a context and record with that live id, on the heap, as an add would have left
     * them. */
    Lif &with_record(std::uint16_t l3intf_id);
    /** Gives it a context and record as a delete without destroy would have left them. */
    Lif &with_parked(std::uint16_t prev_l3_if_index);
    /** Gives it a context without a record. */
    Lif &with_bare_context();
    /** Takes its properties away. */
    Lif &without_properties();

    /** The record to hand in. */
    l3lif *get() { return &lif; }
    /** Its hardware state, null where it has none. */
    struct l3_pd *record()
    {
        return lif.l3lif_pd_ctxt != nullptr ? lif.l3lif_pd_ctxt->l3_pd : nullptr;
    }
    /** "lif(0x…)", as the journal prints it. */
    std::string text() const;
    /** "0x…", as the journal prints its ifindex. */
    std::string index() const;
    /** The ifindex without "0x", as "%x" prints it. */
    std::string hex() const;
    /** The ifindex as "%d" prints it. */
    std::string decimal() const;

    l3lif lif = {};
    l3lif_pi_ctxt properties = {};

private:
    void drop_context();
};

/** An interface of any kind that routes: IPv4 on, VRF 1, MTU 1500. */
std::unique_ptr<Lif> routed(std::uint32_t ifindex);
/** The routed port of an SDK port number, from 1. */
std::unique_ptr<Lif> port(unsigned sdk_port);
/** A tunnel interface. */
std::unique_ptr<Lif> tunnel(unsigned number);

} // namespace rtifhal_test
