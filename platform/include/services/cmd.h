/*
 * services/cmd.h: the output of a diagnostic command.
 */
#ifndef SERVICES_CMD_H
#define SERVICES_CMD_H

#ifdef __cplusplus
extern "C" {
#endif

/** Where a dump of a bitmap stands between two of its lines: the last bit printed; 0 at the end. */
extern int printf_curr_idx;

/**
 * Writes a line to a command's output.
 *
 * @param handle  the command
 * @param text    the line, its line end included
 * @param zero    0
 * @return 0; negative when the output is gone
 */
int cmd_prt(void *handle, const char *text, int zero);

#ifdef __cplusplus
}
#endif

#endif
