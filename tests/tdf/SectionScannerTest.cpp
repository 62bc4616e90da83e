#include <fcntl.h>

#include <memory>
#include <utility>

#include "tests/tdf/CaptureTest.h"
#include "trace/format/ObjectFileSection.h"
#include "trace/format/StmSections.h"

namespace Zu::Wep::Trace {
namespace {

using ZU_WEP::PosixFile;

struct SectionScannerTest : CaptureTest {
    /// What every reading operation gives, "" when nothing is found; they must agree with each other.
    std::string ReadByAll(const char* name, std::size_t fileSize) {
        const std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream(std::fopen(m_path, "rb"), std::fclose);
        std::fseek(stream.get(), static_cast<long>(kFirstSectionOffset), SEEK_SET);
        unsigned int length = 0, count = 0;
        const bool found = m_handler.SeekSectionData(stream.get(), name, 1, length);
        std::string payload;
        const std::string error = ErrorOf([&] {
            payload = ReadSection(m_path, name, 1);
            m_handler.GetSectionDataPosition(m_path, name, 1, m_a, m_b);
            std::string loaded(payload.size() + 1, '\0');
            m_handler.LoadSectionData(m_path, name, 1, loaded.data(), static_cast<unsigned>(loaded.size()), count);
            EXPECT_EQ(loaded.substr(0, count), payload);
            EXPECT_EQ(length, m_b);
            EXPECT_EQ(std::ftell(stream.get()), m_a);
            EXPECT_LE(payload.size() + std::min<std::size_t>(m_a, fileSize), fileSize);
        });
        EXPECT_EQ(error.empty(), found && length != 0 && m_handler.ISTDF(m_path));
        return payload;
    }
};

TEST_F(SectionScannerTest, StaysInsideAFileCutShortAnywhereOrWithAnyBitFlipped) {
    Copy("full.tdf");
    const std::string bytes = ReadWhole(m_file), whole = ReadSection(m_path, "STMDECODERINFO", 1);
    m_handler.GetSectionDataPosition(m_path, "TRACE0", 1, m_a, m_b);
    const std::size_t trace = m_a, traceSize = m_b;  // a payload's bytes mean nothing to the container
    for (std::size_t i = 0; i < bytes.size(); i += i == trace ? traceSize : 1) {
        for (int bit = 0; bit < 8; ++bit) {
            const PosixFile file = PosixFile::Open(m_path, O_RDWR);
            ASSERT_TRUE(file.WriteAt(i, {std::string(1, static_cast<char>(bytes[i] ^ (1 << bit)))}));
            for (const char* name : {"TRACE0", "DEVID", "STMDECODERINFO"}) {
                ReadByAll(name, bytes.size());
            }
            ASSERT_TRUE(file.WriteAt(i, {bytes.substr(i, 1)}));
        }
    }
    for (std::size_t size = bytes.size(), start = size - whole.size(); size-- > 0;) {
        std::filesystem::resize_file(m_file, size);
        ASSERT_EQ(ReadByAll("STMDECODERINFO", size), size > start ? whole.substr(0, size - start) : "") << size;
        ReadByAll("TRACE0", size);
    }
}

}  // namespace
}  // namespace Zu::Wep::Trace
