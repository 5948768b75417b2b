/*
 * iif_table.h: single numbers in the tables of interface numbers, for the
 * creation and the restore of interfaces.
 */
#pragma once

#include <stdint.h>

/** Numbers below this one are never given back. */
inline constexpr int IIF_FIRST_RETURNABLE = 3;

/** Whether a number is held back; a number outside 0..8191 isn't. */
bool is_iif_preserved(int iif);

/** Takes a held-back number into use again, and stores the held-back numbers. */
void take_preserved_iif(int iif);

/** Takes the held-back numbers up from the global configuration: none of them is free. */
void restore_preserved_iifs();

/** Marks the number of a restored interface as in use; the stored numbers stay as they are. */
void restore_iif(int iif);
