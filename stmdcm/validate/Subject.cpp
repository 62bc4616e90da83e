#include "stmdcm/validate/Subject.h"

#include <fmt/format.h>

#include <filesystem>
#include <utility>

#include "stmdcm/validate/Bytes.h"
#include "stmdcm/validate/Expect.h"

namespace stmdcm::validate {

using namespace Zu::Wep::Trace;

namespace {

constexpr char kTextName[] = "validate-text";

void Do(std::function<void()>& once) {
    if (const std::function<void()> work = std::exchange(once, nullptr)) {
        work();
    }
}

}  // namespace

bool Identifier::SaveToFile(const std::string& fileName, eTraceDataFileType type) {
    calls.push_back(fmt::format("save {} {}", fileName, static_cast<int>(type)));
    Do(inside);
    return result;
}

bool Identifier::LoadFromFile(const std::string& fileName, eTraceDataFileType type) {
    calls.push_back(fmt::format("load {} {}", fileName, static_cast<int>(type)));
    Do(inside);
    return result;
}

void Handler::OnUpdateObjectFile(const std::string& file, bool timeStampChanged, std::string& newFile) {
    asked.push_back((timeStampChanged ? "changed " : "missing ") + file);
    cameIn += newFile;
    newFile = answer == "=" ? file : answer;
    Do(inside);
}

Subject::Subject(Host& host, const std::string& cpu, Identifier* identifier)
    : m_host(&host), m_borrowed(std::make_unique<Borrowed>()) {
    m_borrowed->name = cpu;
    m_borrowed->cpu = {m_borrowed->name.c_str(), 11, 12, 13};
    auto* const manager = static_cast<CDeviceConfigManager*>(host.Create(&m_borrowed->cpu, identifier));
    if (manager == nullptr) {
        Fail(fmt::format("CreateDeviceConfigManager for the CPU {}", InWords(cpu)), "a manager", "null");
    }
    m_manager = static_cast<ManagerInterface*>(manager);
}

void Subject::End() {
    if (m_borrowed != nullptr && m_manager != nullptr) {
        m_host->Destroy(static_cast<CDeviceConfigManager*>(std::exchange(m_manager, nullptr)));
    }
}

std::int32_t Subject::Number(const std::string& property) const {
    ConfigPropertyValue value;
    Expect("GetProperty of " + property, m_manager->GetProperty(property, value), true);
    return value.type == ConfigPropertyValue::Boolean ? value.value.boolean : value.value.integer;
}

bool Subject::Set(const std::string& property, std::int32_t number) const {
    ConfigPropertyValue value;
    value.value.integer = number;
    return m_manager->SetSTMProperty(property, value);
}

bool Subject::Load(const std::string& path) const { return m_manager->LoadConfiguration(path, TRACE_DATA_FILE_TDF); }

bool Subject::LoadText(const std::string& text) const {
    return m_manager->LoadConfiguration(m_host->Write("local.txt", text), TRACE_DATA_FILE_LOCAL);
}

std::string Subject::SavedInto(const std::string& bytes) const {
    const std::string path = m_host->Write("saved.tdf", bytes);
    Expect("SaveConfiguration into a capture", m_manager->SaveConfiguration(path, TRACE_DATA_FILE_TDF), true);
    return Host::Read(path);
}

std::string Subject::Text() const {
    Expect("SaveConfiguration into a settings file", m_manager->SaveConfiguration(kTextName, TRACE_DATA_FILE_LIVE),
           true);
    return Host::Read(Host::Settings(std::string(kTextName) + ".dcm"));
}

std::string Subject::Image(const std::string& name) const {
    std::string path;
    return m_manager->GetObjectFile(name, path) ? path : "(none)";
}

std::vector<std::string> Subject::Images() const {
    std::vector<std::string> images;
    const std::string payload = PayloadOf(SavedInto(BareCapture()), kCommonSectionName);
    ReadObjectFileEntries(payload, [&](auto name, auto file, std::int64_t timeStamp) {
        images.push_back(fmt::format("{} {} {}", name, std::filesystem::path(file).filename().string(), timeStamp));
    });
    return images;
}

}  // namespace stmdcm::validate
