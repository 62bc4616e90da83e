#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "tests/support/AppendSection.h"
#include "tests/support/KillAtSyscall.h"
#include "tests/support/ScratchDir.h"
#include "trace/format/SectionScanner.h"
#include "trace/tdf/OpenCapture.h"
#include "trace/tdf/TDFHandler.h"  // FileSize and vornError come with it, as hosts expect

namespace Zu::Wep::Trace {

using stmdcm_test::ReadWhole;
using stmdcm_test::WriteWhole;

using stmdcm_test::AppendSection;

inline std::string ReadSection(const char* path, const char* name, unsigned int version) {
    return OpenCapture(path).Read({name, version});
}

/// A copy of a reference capture to work on.
struct CaptureTest : ::testing::Test {
    const stmdcm_test::ScratchDir m_directory{stmdcm_test::MemoryDirectory()};
    const std::string m_file = m_directory / "capture.tdf";
    const char* m_path = m_file.c_str();
    TDFHandler m_handler;
    unsigned int m_a = 0, m_b = 0;

    static std::string Reference(const std::string& name) { return ReadWhole(STMDCM_TEST_DATA "/" + name); }
    void Copy(const std::string& name) { WriteWhole(m_file, Reference(name)); }
    void Save(const char* name, unsigned int version, const std::string& data) {
        m_handler.SaveSectionHeader(m_path, name, version, m_a);
        m_handler.SaveSectionData(m_path, "any", m_a, data.data(), 1, static_cast<unsigned>(data.size()), m_b);
    }
    /// The text of the error that `call` raises, "" when there is none.
    static std::string ErrorOf(const std::function<void()>& call) try {
        call();
        return "";
    } catch (const Vorn::vornError& error) {
        return error.GetSeverity() == 2 ? error.what() : "wrong severity";
    }
};

}  // namespace Zu::Wep::Trace
