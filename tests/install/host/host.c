/*
 * host.c: the smallest host of the installed library: it takes, holds back and
 * frees interface numbers, which asks little of a platform, and reads the tables.
 *
 * It has what those calls need of the platform contract; standins.sh makes the rest
 * of it. What it is built by stands beside it: CMakeLists.txt, and the test by
 * pkg-config.
 */
#include <rtifhal_trident.h>

#include <fwm/state.h>
#include <fwm/trace.h>
#include <fwmpd/platform.h>
#include <services/debug.h>
#include <stdio.h>
#include <stdlib.h>

unsigned char fwmpd_global_config[2048];
unsigned char l3lif_global_data[1056];
int g_fwm_pss_restore_mode;
void *g_fwm_pss_context;
int fwmpd_asic_cpu_port;
int fwmpd_trident_unit;
FILE *dbg_out_file;
const char *sdwrap_dbg_modname = "host";

static int stored_times;

int bcm_pd_is_device_trident2(void)
{
    return 0;
}

int fwmpd_inband_init(void)
{
    return 0;
}

int fwmpd_pss_globalc_store(void *pss_context, const unsigned char *config, int whole)
{
    stored_times += pss_context == NULL && config == fwmpd_global_config && whole == 1;
    return 0;
}

void fwm_ds_trace_add(const char *file, const char *function, int line, int zero,
                      const char *format, ...)
{
    (void)file, (void)function, (void)line, (void)zero, (void)format;
}

void fwm_ds_add(const char *file, const char *function, int line, const char *format, ...)
{
    (void)file, (void)line, (void)format;
    printf("error reported by %s\n", function);
}

int sdwrap_hist_event_subtype_check(int type, int subtype)
{
    (void)type, (void)subtype;
    return 1; /* not wanted */
}

int sdwrap_chk_int(int level, int a, int b, int c)
{
    (void)level, (void)a, (void)b, (void)c;
    return 0;
}

static uint32_t take_number(void)
{
    uint32_t number = 0;
    if (rtifhal_alloc_l3iif(&number) != 0) {
        abort();
    }
    return number;
}

static int is_held_back(uint32_t number)
{
    return (l3lif_l3iif_table_preserve.bits[number / 8] & (0x80 >> (number % 8))) != 0;
}

int main(void)
{
    const uint32_t first = take_number();
    const uint32_t second = take_number();
    printf("numbers %u and %u\n", first, second);
    const int freed = rtifhal_free_l3iif((int)first, 1);
    printf("freed %d, held back %d, stored %d\n", freed, is_held_back(first), stored_times);
    printf("in the configuration: 0x%02x\n", fwmpd_global_config[44]);
    const int unknown = rtifhal_free_l3iif(100, 0);
    printf("never taken: %d\n", unknown);
    printf("next %u\n", take_number());
    return 0;
}
