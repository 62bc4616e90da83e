#include "trace/dcm/LiveAttributeTable.h"

#include <algorithm>
#include <cstdlib>

#include "source_utilities/Log.h"
#include "trace/format/StmPropertyTable.h"

namespace Zu::Wep::Trace {

namespace {

void Convert(const LiveAttribute& attribute, LiveConversion conversion, const char* text, StmProperties& properties) {
    switch (conversion) {
        case LiveConversion::Integer:
            properties.*attribute.integer = IntegerFromText(text);
            break;
        case LiveConversion::Double:
            properties.*attribute.integer = ClockFromText(text);
            break;
        case LiveConversion::Flag:
            properties.*attribute.flag = std::strtol(text, nullptr, 10) != 0;
            break;
    }
}

void Apply(const LiveAttribute& attribute, const ChannelAttribute& answer, StmProperties& properties) {
    const auto* accepted = std::find_if(attribute.accepted.begin(), attribute.accepted.end(),
                                        [&](const AcceptedType& type) { return type.type == answer.type; });
    if (accepted != attribute.accepted.end()) {
        Convert(attribute, accepted->conversion, answer.text != nullptr ? answer.text : "", properties);
    } else if (attribute.onWrongType == OnWrongType::SetFalse) {
        properties.*attribute.flag = false;
    } else if (attribute.onWrongType == OnWrongType::KeepAndLog) {
        ZU_WEP::Log(ZU_WEP::LogUnexpected, kWrongTypeText, answer.type);
    }
    if (attribute.valueText != nullptr) {
        ZU_WEP::Log(ZU_WEP::LogInformation, attribute.valueText, properties.*attribute.integer);
    }
}

void Fail(const LiveAttribute& attribute, StmProperties& properties) {
    if (attribute.onFailure == OnFailure::SetOne) {
        properties.*attribute.integer = 1;
    } else if (attribute.onFailure == OnFailure::SetFalse) {
        properties.*attribute.flag = false;
    }
    ZU_WEP::Log(ZU_WEP::LogError, "%s", attribute.failureText);
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
