/*
 * field.cpp: the null platform's field entries, of which it keeps the ports.
 */
#include "calls.h"
#include "tables.h"

#include <fwmpd/platform.h>

using namespace null_platform;
using recording::out;
using recording::value;

namespace
{

/** Entries in the default region of the rule memory. */
constexpr int DEFAULT_REGION = 128;

FieldEntry &entry_of(int entry)
{
    return tables.fields[static_cast<std::size_t>(entry) % FIELD_ENTRIES];
}

} // namespace

extern "C" {

int fwmpd_trident_get_sup_tcam_default_size(int *size)
{
    CALLED(fwmpd_trident_get_sup_tcam_default_size, out(size));
    *size = DEFAULT_REGION;
    return 0;
}

int bcm_field_group_create_id(int unit, bcm_field_qset_t qset, int priority, int group)
{
    CALLED(bcm_field_group_create_id, unit, value(qset), priority, group);
    return 0;
}

int bcm_field_entry_create(int unit, int group, bcm_field_entry_t *entry)
{
    CALLED(bcm_field_entry_create, unit, group, out(entry));
    *entry = static_cast<bcm_field_entry_t>(DEFAULT_REGION + ++tables.field_entries);
    return 0;
}

int bcm_field_qualify_L3Routable(int unit, int entry, uint8_t data, uint8_t mask)
{
    CALLED(bcm_field_qualify_L3Routable, unit, entry, data, mask);
    return 0;
}

int bcm_field_action_add(int unit, int entry, int action, uint32_t first, uint32_t second)
{
    CALLED(bcm_field_action_add, unit, entry, action, first, second);
    return 0;
}

int bcm_field_entry_install(int unit, int entry)
{
    CALLED(bcm_field_entry_install, unit, entry);
    return 0;
}

int bcm_field_entry_reinstall(int unit, int entry)
{
    CALLED(bcm_field_entry_reinstall, unit, entry);
    return 0;
}

int bcm_field_action_ports_get(int unit, int entry, int action, bcm_pbmp_t *pbmp)
{
    CALLED(bcm_field_action_ports_get, unit, entry, action, out(pbmp));
    *pbmp = entry_of(entry).redirect;
    return 0;
}

int bcm_field_action_remove(int unit, int entry, int action)
{
    CALLED(bcm_field_action_remove, unit, entry, action);
    return 0;
}

int bcm_field_action_ports_add(int unit, int entry, int action, bcm_pbmp_t pbmp)
{
    CALLED(bcm_field_action_ports_add, unit, entry, action, value(pbmp));
    entry_of(entry).redirect = pbmp;
    return 0;
}

int bcm_field_qualify_InPorts_get(int unit, int entry, bcm_pbmp_t *data, bcm_pbmp_t *mask)
{
    CALLED(bcm_field_qualify_InPorts_get, unit, entry, out(data), out(mask));
    *data = entry_of(entry).in_ports;
    *mask = entry_of(entry).in_ports_mask;
    return 0;
}

int bcm_field_qualifier_delete(int unit, int entry, int qualifier)
{
    CALLED(bcm_field_qualifier_delete, unit, entry, qualifier);
    return 0;
}

int bcm_field_qualify_InPorts(int unit, int entry, bcm_pbmp_t data, bcm_pbmp_t mask)
{
    CALLED(bcm_field_qualify_InPorts, unit, entry, value(data), value(mask));
    entry_of(entry).in_ports = data;
    entry_of(entry).in_ports_mask = mask;
    return 0;
}

int bcm_field_group_enable_get(int unit, int group, int *enable)
{
    CALLED(bcm_field_group_enable_get, unit, group, out(enable));
    *enable = tables.nd_group_enabled;
    return 0;
}

int bcm_field_group_enable_set(int unit, int group, int enable)
{
    CALLED(bcm_field_group_enable_set, unit, group, enable);
    tables.nd_group_enabled = enable;
    return 0;
}
}
