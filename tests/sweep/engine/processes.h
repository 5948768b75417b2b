/*
 * processes.h: bodies that run in a process of their own: faults/processes.h.
 */
#pragma once

#include "faults/processes.h"

namespace sweep
{

using lab::faults::die;
using lab::faults::Ended;
using lab::faults::Folder;
using lab::faults::in_process;
using lab::faults::Lines;

} // namespace sweep
