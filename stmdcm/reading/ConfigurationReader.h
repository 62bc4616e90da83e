#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "stmdcm/reading/Configuration.h"
#include "stmdcm/reading/Settings.h"

namespace Zu::Wep::Trace {
struct StmProperty;
}

namespace stmdcm {

/// What the property's number means.
Unit UnitOf(const Zu::Wep::Trace::StmProperty& property);

/// The property in that row of the table, with that value.
Property PropertyOf(const Zu::Wep::Trace::StmProperty& row, std::int32_t value);

/// The use case with the values that `usecase` has, which is of the kind's class or interface.
template <class Item, class Usecase>
Item ItemOf(Usecase& usecase) {
    Item item;
    Item::Walk(item, [&](const Field&, auto& value, const auto& getter) { value = std::invoke(getter, usecase); });
    return item;
}

template <class Item, class Record>
std::vector<Item> ItemsOf(Record& record) {
    std::vector<Item> items;
    for (unsigned i = 0; i < record.GetNumUsecases(); ++i) {
        items.push_back(ItemOf<Item>(*record.GetUsecase(i)));
    }
    return items;
}

/// All of a kind of which a record gives only the first of each source.
std::vector<PmiUsecase> ItemsOf(const Zu::Wep::Trace::PMIUsecaseRecord& record);

/// The properties and use cases as plain values; the object files stay as they are.
void Fill(Configuration& configuration, Settings& settings);

}  // namespace stmdcm
