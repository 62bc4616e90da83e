#include "trace/dcm/LiveAttributeTable.h"

#include <algorithm>

#include "source_utilities/Log.h"

namespace Zu::Wep::Trace {

namespace {

void Apply(const LiveAttribute& attribute, const ChannelAttribute& answer, StmProperties& properties) {
    const auto* accepted = std::find_if(attribute.accepted.begin(), attribute.accepted.end(),
                                        [&](const AcceptedType& type) { return type.type == answer.type; });
    if (accepted != attribute.accepted.end()) {
        const char* text = answer.text != nullptr ? answer.text : "";
        SetNumber(properties, *attribute.property, NumberFromText(accepted->shape, text));
    } else if (attribute.onWrongType == OnWrongType::SetFalse) {
        SetNumber(properties, *attribute.property, 0);
    } else if (attribute.onWrongType == OnWrongType::KeepAndLog) {
        ZU_WEP::Log(ZU_WEP::LogUnexpected, kWrongTypeText, answer.type);
    }
    if (attribute.valueText != nullptr) {
        ZU_WEP::Log(ZU_WEP::LogInformation, attribute.valueText, NumberOf(properties, *attribute.property));
    }
}

void Fail(const LiveAttribute& attribute, StmProperties& properties) {
    if (attribute.onFailure != OnFailure::Keep) {
        SetNumber(properties, *attribute.property, attribute.onFailure == OnFailure::SetOne ? 1 : 0);
    }
    ZU_WEP::Log(ZU_WEP::LogError, kFailureText, attribute.loggedName);
}

}  // namespace

void LoadLiveAttributes(CChannelDriver& driver, StmProperties& properties) {
    ChannelAttribute answer{ChannelAttribute::Unset, ""};
    for (const LiveAttribute& attribute : kLiveAttributes) {
        try {
            driver.GetAttribute(attribute.name, answer);
            Apply(attribute, answer, properties);
        } catch (...) {
            Fail(attribute, properties);
        }
    }
}

}  // namespace Zu::Wep::Trace
