#include "stmdcm/change/AppliedSource.h"

#include <filesystem>
#include <system_error>

#include "stmdcm/Failure.h"

namespace stmdcm {

namespace {

bool IsSameFile(const std::string& a, const std::string& b) {
    std::error_code ignored;
    return std::filesystem::equivalent(a, b, ignored);
}

}  // namespace

AppliedSource::AppliedSource(const std::string& path, const Wanted& wanted)
    : m_source(Read(path)), m_doubts(m_source.Doubts()), m_change(ChangeFor(wanted)) {}

ConfigurationChange AppliedSource::ChangeFor(const Wanted& wanted) const {
    m_source.RequireSettings();
    RequireWhole(m_source, wanted.force);
    AppliedParts parts = AppliedParts::NamedBy(m_source);
    if (wanted.replace) {
        parts.usecases = true;
        parts.objects = false;
    }
    parts.Narrow(PartNames(wanted.only), PartNames(wanted.except));
    if (parts.IsEmpty()) {
        throw Failure(m_source.path, "there is nothing in it of what is asked for, so nothing to apply");
    }
    return parts.ChangeTo(m_source);
}

ChangeResult AppliedSource::ApplyTo(const std::string& capture, ChangeMode mode) const {
    if (IsSameFile(m_source.path, capture)) {
        throw Failure(capture, "this is the file that the settings come from");
    }
    return m_change.InCapture(capture, ConfigurationChange::Missing::IsMade, mode);
}

}  // namespace stmdcm
