#include "python/src/Module.h"

namespace stmdcm {

void DeclareChanges(pybind11::module_& /*module*/) {}

}  // namespace stmdcm
