/*
 * handed_over.h: the L3 interface record that a kind of interface hands to
 * rtifhal_l3_intf_create, before that sets it by rules of its own.
 */
#pragma once

#include <sdk/l3.h>

#include <optional>

namespace rtifhal_test
{

/** While this lives, the record of the last hand-over is kept. */
class HandedOver
{
public:
    HandedOver();
    ~HandedOver();
    HandedOver(const HandedOver &) = delete;
    HandedOver &operator=(const HandedOver &) = delete;

    /** The record; nothing when none was handed over. */
    static const std::optional<bcm_l3_intf_t> &record();
};

} // namespace rtifhal_test
