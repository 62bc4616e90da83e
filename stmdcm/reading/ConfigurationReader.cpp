#include "stmdcm/reading/ConfigurationReader.h"

#include <string_view>

#include "trace/format/StmPropertyTable.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

Unit UnitOf(const StmProperty& property) {
    if (property.shape == ValueShape::Clock) {
        return Unit::Hertz;
    }
    return std::string_view(property.name).starts_with("HEAD_Pointer_") ? Unit::Address : Unit::None;
}

Property PropertyOf(const StmProperty& row, std::int32_t value) {
    return {row.name, row.flag != nullptr, UnitOf(row), value, NumberOf(StmProperties{}, row)};
}

std::vector<PmiUsecase> ItemsOf(const PMIUsecaseRecord& record) {
    std::vector<PmiUsecase> items;
    for (const PMIUsecaseInfo& usecase : record.Usecases()) {
        items.push_back(ItemOf<PmiUsecase>(usecase));
    }
    return items;
}

void Fill(Configuration& configuration, Settings& settings) {
    configuration.properties.clear();
    for (const StmProperty& row : kStmProperties) {
        configuration.properties.push_back(PropertyOf(row, NumberOf(settings.properties, row)));
    }
    configuration.sc = ItemsOf<ScUsecase>(settings.sc);
    configuration.cpt = ItemsOf<CptUsecase>(settings.cpt);
    configuration.pmi = ItemsOf(settings.pmi);
}

}  // namespace stmdcm
