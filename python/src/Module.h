#pragma once

#include <pybind11/pybind11.h>

namespace stmdcm {

// The compiled part of the module: files are named by bytes, documents (docs/json.md) come as their text. What is for
// people is in python/stmdcm/.

void DeclareReading(pybind11::module_& module);
void DeclareChecks(pybind11::module_& module);
void DeclareChanges(pybind11::module_& module);
void DeclareFarm(pybind11::module_& module);

}  // namespace stmdcm
