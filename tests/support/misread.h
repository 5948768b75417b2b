/*
 * misread.h: an L3 interface table that answers with another object than the
 * one asked for, which the embedded switch never does by itself.
 */
#pragma once

namespace rtifhal_test
{

/**
 * While this lives, every bcm_l3_intf_get gives this code, 0 for a success, and
 * an object of this id and tunnel index, all else 0.
 */
class MisreadInterface
{
public:
    explicit MisreadInterface(int id, int tunnel = 0, int code = 0);
    ~MisreadInterface();
    MisreadInterface(const MisreadInterface &) = delete;
    MisreadInterface &operator=(const MisreadInterface &) = delete;
};

} // namespace rtifhal_test
