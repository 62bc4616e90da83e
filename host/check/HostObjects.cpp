#include "host/check/HostObjects.h"

namespace stmdcm_check {

using namespace Zu::Wep::Trace;

CDeviceConfigEvents* EventsProxy::For(CDeviceConfigEvents* handler) {
    m_handler = handler;
    return handler != nullptr ? this : nullptr;
}

void EventsProxy::OnUpdateObjectFile(const std::string& file, bool timeStampChanged, std::string& newFile) {
    if (!m_manager.ended.empty()) {
        return;
    }
    HostCall call("OnUpdateObjectFile", "the event handler of " + m_manager.name,
                  JsonObject().Add("file", file).Add("timeStampChanged", timeStampChanged), HostCall::Kind::Callback);
    call.Run(
        [&] {
            m_handler->OnUpdateObjectFile(file, timeStampChanged, newFile);
            call.Given().Add("newFile", newFile);
        },
        [&](const std::string& words) { call.Tell("the host throws " + words); });
}

template <class Work>
bool IdentifierProxy::Do(const char* operation, const std::string& fileName, eTraceDataFileType type, Work work) {
    if (!m_manager.ended.empty()) {
        return false;
    }
    HostCall call(operation, "the device identifier of " + m_manager.name,
                  JsonObject().Add("fileName", fileName).Add("type", static_cast<int>(type)), HostCall::Kind::Callback);
    return call.Run(work, [&](const std::string& words) { call.Tell("the host throws " + words); });
}

bool IdentifierProxy::SaveToFile(const std::string& fileName, eTraceDataFileType type) {
    return Do("SaveToFile", fileName, type, [&] { return m_identifier->SaveToFile(fileName, type); });
}

bool IdentifierProxy::LoadFromFile(const std::string& fileName, eTraceDataFileType type) {
    return Do("LoadFromFile", fileName, type, [&] { return m_identifier->LoadFromFile(fileName, type); });
}

}  // namespace stmdcm_check
