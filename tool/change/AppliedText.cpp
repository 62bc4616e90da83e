#include "tool/change/AppliedText.h"

#include <utility>

#include "tool/capture/CaptureFile.h"
#include "tool/change/UnreadText.h"
#include "tool/model/ConfigurationSource.h"
#include "tool/plugin/Manager.h"
#include "tool/plugin/PluginSession.h"

namespace stmdcm {

AppliedText::AppliedText(PluginSession& session, const std::string& path) : m_bytes(session) {
    Manager manager(session.plugin, "stmdcm");
    LoadedConfiguration loaded = ConfigurationSource(session).Load(path, manager);
    loaded.RequireSettings();
    m_doubts = std::move(loaded.doubts);
    m_text = m_bytes.SettingsText(manager);
    if (loaded.kind == ConfigurationKind::Settings) {
        // The text itself, which need not set every property.
        const CaptureFile file(path, CaptureFile::Identifier::Optional);
        std::string own = file.Read(0, file.Size());
        for (std::string& unread : UnreadBlocks(own, m_text)) {
            m_doubts.push_back(std::move(unread));
        }
        m_text = std::move(own);
    }
}

}  // namespace stmdcm
