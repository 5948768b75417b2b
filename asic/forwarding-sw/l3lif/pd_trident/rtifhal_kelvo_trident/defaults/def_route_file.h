/*
 * def_route_file.h: the file in which default routes wait over a fast restart.
 */
#pragma once

/**
 * Reads the file into def_routes and egresses and removes it; looked for once.
 * Without a file, or without memory for what it announces, there are no routes.
 */
void load_def_routes();
