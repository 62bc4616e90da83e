#include "source_utilities/uEngineeringUnits.h"

namespace ZU_WEP {

uEngineeringUnits::uEngineeringUnits() = default;

uEngineeringUnits::~uEngineeringUnits() = default;

}  // namespace ZU_WEP
