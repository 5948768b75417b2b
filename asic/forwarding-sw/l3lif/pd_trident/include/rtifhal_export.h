/*
 * rtifhal_export.h: the mark of what the shared library shows.
 */
#ifndef RTIFHAL_EXPORT_H
#define RTIFHAL_EXPORT_H

/** Marks what the shared library exports. */
#define RTIFHAL_EXPORT __attribute__((visibility("default")))

#endif
