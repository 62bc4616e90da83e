#include "trace/dcm/TraceEnvironment.h"

#include <atomic>
#include <new>

#include "source_utilities/uEnvironment.h"
#include "source_utilities/uLogSystem.h"
#include "source_utilities/uProcess.h"
#include "source_utilities/uString.h"
#include "source_utilities/uTime.h"
#include "trace/dcm/EnvironmentVariables.h"

using namespace ZU_WEP;

namespace Zu::Wep::Trace {

namespace {

std::string LocalTimePart(int (*part)()) {
    uTime().GetLocal();
    return std::to_string(part());
}

std::atomic<int> managers{0};

/// Unloading the library leaves no open log and no memory behind. A manager of a host that ends later still logs.
struct LogEnd {
    ~LogEnd() {
        if (managers == 0) {
            uLogSystem::End();
        }
    }
} logEnd;

/// For child processes and for what comes later, which would else look in the working directory.
void Publish(const char* variable, const char* value) {
    if (uEnvironment::SetVar(variable, value) != 0) {
        throw std::bad_alloc();  // setenv(3) has no other reason here
    }
}

}  // namespace

void TraceEnvironment::ManagerBegins() noexcept { ++managers; }

void TraceEnvironment::ManagerEnds() noexcept { --managers; }

void TraceEnvironment::Prepare() noexcept {
    try {
        if (!m_done) {
            SetUp();
        }
        uLogSystem::GetLogSystem()->InitLog(m_logFileName.c_str(), kLoggingVariable, kLoggingDirectoryVariable, true);
    } catch (...) {
        // A manager works without a log and without directories.
    }
}

void TraceEnvironment::SetUp() {
    FindDebugClient();
    MakeDirectories();
    NameLogFile();
    m_done = true;
}

void TraceEnvironment::FindDebugClient() {
    m_debugClient = uEnvironment::GetVar(kDebugClientVariable);
    if (!m_debugClient.empty() &&
        uProcess::LookupProcess(uString::ToNumeric<unsigned long>(m_debugClient.c_str())) == 0) {
        m_debugClient.clear();
    }
    if (m_debugClient.empty()) {
        m_debugClient = std::to_string(uProcess::GetPid());
        Publish(kDebugClientVariable, m_debugClient.c_str());
    }
}

void TraceEnvironment::MakeDirectories() {
    uEnvironment::GetTraceLoggingDirectory(m_loggingDirectory);
    uEnvironment::GetTraceTemporaryDataDirectory(m_dataDirectory);
    uEnvironment::GetTraceUserSettingsDirectory(m_settingsDirectory);
    for (const std::string* directory : {&m_loggingDirectory, &m_dataDirectory, &m_settingsDirectory}) {
        uEnvironment::MakeDirectory(directory->c_str());
    }
    Publish(kLoggingDirectoryVariable, m_loggingDirectory.c_str());
    Publish(kDataDirectoryVariable, m_dataDirectory.c_str());
    Publish(kSettingsDirectoryVariable, m_settingsDirectory.c_str());
}

void TraceEnvironment::NameLogFile() {
    m_logFileName = "zu_trace_log_";
    m_logFileName += LocalTimePart(&uTime::GetMonth);  // counted from 0 (docs/log.md)
    m_logFileName += LocalTimePart(&uTime::GetDay);
    m_logFileName += LocalTimePart(&uTime::GetYear);
    m_logFileName += "_" + m_debugClient + ".txt";
}

}  // namespace Zu::Wep::Trace
