#pragma once

#include "python/src/Selected.h"

#include <pybind11/pybind11.h>

// Routes in Python: a sequence of them, which keeps its rows as they are, and small objects that are made as they are
// asked for. All routes of one FEC share one tuple of vias.
namespace kivPython {

void defineRoutes(pybind11::module_& module);

// With `addresses`, prefixes and next hops are values of Python's module ipaddress, else strings.
pybind11::object routesOf(Selected selected, bool addresses);

}  // namespace kivPython
