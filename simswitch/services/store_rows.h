/*
 * store_rows.h: how an interface's record stands in the store's tables. Beside
 * it: store.h.
 */
#pragma once

#include "services/sqlite.h"
#include "services/store.h"

#include <string>
#include <vector>

namespace simswitch::services
{

/** The statements that make the tables. */
std::vector<std::string> store_tables();
/** The statement that writes a row of l3port. */
std::string l3port_replace();
/** The statement that reads the rows of l3port, in the order of their ifindex. */
std::string l3port_select();

/** Binds an interface to the parameters of l3port_replace. */
void bind_l3port(sqlite::Statement &statement, const l3lif &lif);
/** Reads the present row of l3port_select. @throws state::BadValue for one that can't be right */
StoredInterface read_l3port(const sqlite::Statement &statement);

} // namespace simswitch::services
