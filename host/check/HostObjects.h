#pragma once

#include <string>

#include "host/CDeviceIdentifier.h"
#include "host/check/Lives.h"
#include "trace/dcm/CDeviceConfigEvents.h"

namespace stmdcm_check {

// The host's own objects as the library gets them: pass every call on, and tell what the host throws there. Behind the
// end of their manager they answer for the host, whose objects may be gone.

class EventsProxy final : public Zu::Wep::Trace::CDeviceConfigEvents {
  public:
    explicit EventsProxy(const ManagerLife& manager) : m_manager(manager) {}

    /// What the library is to register for that handler of the host's: this, or null for null.
    CDeviceConfigEvents* For(CDeviceConfigEvents* handler);
    void OnUpdateObjectFile(const std::string& file, bool timeStampChanged, std::string& newFile) override;

  private:
    const ManagerLife& m_manager;
    CDeviceConfigEvents* m_handler = nullptr;
};

class IdentifierProxy final : public Zu::Wep::Trace::CDeviceIdentifier {
  public:
    IdentifierProxy(const ManagerLife& manager, CDeviceIdentifier* identifier)
        : m_manager(manager), m_identifier(identifier) {}
    virtual ~IdentifierProxy() = default;

    /// Null where the host has none.
    CDeviceIdentifier* ForLibrary() { return m_identifier != nullptr ? this : nullptr; }
    bool SaveToFile(const std::string& fileName, Zu::Wep::Trace::eTraceDataFileType type) override;
    bool LoadFromFile(const std::string& fileName, Zu::Wep::Trace::eTraceDataFileType type) override;

  private:
    template <class Work>
    bool Do(const char* operation, const std::string& fileName, Zu::Wep::Trace::eTraceDataFileType type, Work work);

    const ManagerLife& m_manager;
    CDeviceIdentifier* m_identifier;
};

}  // namespace stmdcm_check
