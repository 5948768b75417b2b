/*
 * handed_over.cpp: see handed_over.h. The linker leads every call of
 * rtifhal_l3_intf_create from another file here (--wrap in tests/CMakeLists.txt).
 */
#include "support/handed_over.h"

#include "rtifhal_types.h"

namespace
{

bool watching = false;
std::optional<bcm_l3_intf_t> last;

} // namespace

extern "C" {

int __real_rtifhal_l3_intf_create(int unit, struct l3lif *inl3lif, bcm_l3_intf_t *object,
                                  int create);

int __wrap_rtifhal_l3_intf_create(int unit, struct l3lif *inl3lif, bcm_l3_intf_t *object,
                                  int create)
{
    if (watching && object != nullptr) {
        last = *object;
    }
    return __real_rtifhal_l3_intf_create(unit, inl3lif, object, create);
}

} // extern "C"

namespace rtifhal_test
{

HandedOver::HandedOver()
{
    watching = true;
    last.reset();
}

HandedOver::~HandedOver()
{
    watching = false;
}

const std::optional<bcm_l3_intf_t> &HandedOver::record()
{
    return last;
}

} // namespace rtifhal_test
