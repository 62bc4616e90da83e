#include "python/src/Module.h"

PYBIND11_MODULE(_stmdcm, module) {
    stmdcm::DeclareReading(module);
    stmdcm::DeclareChecks(module);
    stmdcm::DeclareChanges(module);
    stmdcm::DeclareFarm(module);
}
