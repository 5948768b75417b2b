/*
 * misread.cpp: see misread.h. The linker leads every bcm_l3_intf_get here
 * (--wrap in tests/CMakeLists.txt); the journal still has what the chip said.
 */
#include "support/misread.h"

#include <sdk/l3.h>

#include <optional>

namespace
{

std::optional<bcm_l3_intf_t> answered;
int answered_code = 0;

} // namespace

extern "C" {

int __real_bcm_l3_intf_get(int unit, bcm_l3_intf_t *intf);

int __wrap_bcm_l3_intf_get(int unit, bcm_l3_intf_t *intf)
{
    const int code = __real_bcm_l3_intf_get(unit, intf);
    if (!answered) {
        return code;
    }
    *intf = *answered;
    return answered_code;
}

} // extern "C"

namespace rtifhal_test
{

MisreadInterface::MisreadInterface(int id, int tunnel, int code)
{
    answered_code = code;
    answered = bcm_l3_intf_t{};
    answered->l3a_intf_id = id;
    answered->l3a_tunnel_idx = tunnel;
}

MisreadInterface::~MisreadInterface()
{
    answered.reset();
}

} // namespace rtifhal_test
