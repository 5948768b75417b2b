/*
 * system_state.cpp: the platform's questions about the system. The tracked
 * heap's mtrack_free is in heap.cpp.
 */
#include "services/system_state.h"

#include "journal/call.h"
#include "switch.h"

#include <services/system.h>

#include <algorithm>

using simswitch::Call;
using simswitch::Layer;
using simswitch::Switch;

extern "C" {

int sysmgr_is_fastboot_restart(void)
{
    Call call(Layer::service, __func__);
    return call.run([] { return Switch::current().system.fast_restart ? 1 : 0; });
}

int get_string_from_platform_inf(const char *section, const char *key, char *buffer, int size)
{
    Call call(Layer::service, __func__, section, key, size);
    return call.run([&] {
        const auto value = Switch::current().system.key(section, key);
        if (!value) {
            return 0;
        }
        if (size > 0) {
            const auto room = static_cast<std::size_t>(size) - 1;
            buffer[value->copy(buffer, std::min(value->size(), room))] = '\0';
            call.out("value", static_cast<const char *>(buffer));
        }
        return 1;
    });
}

} // extern "C"
