/*
 * pbmp.cpp: sets of ports (sdk/pbmp.h).
 */
#include "sdk/access.h"
#include "sdk/convert.h"

#include <sdk/pbmp.h>

#include <bit>

using namespace simswitch;

extern "C" {

int _shr_popcount(uint32_t word)
{
    Call call(Layer::sdk, __func__, word);
    return call.run([&] { return std::popcount(word); });
}

int _shr_pbmp_bmnull(const bcm_pbmp_t *pbmp)
{
    Call call(Layer::sdk, __func__, pbmp);
    return call.run([&] { return sdk::to_chip(*pbmp).empty() ? 1 : 0; });
}

} // extern "C"
