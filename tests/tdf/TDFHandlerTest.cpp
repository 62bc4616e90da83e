#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <vector>

#include "tests/tdf/CaptureTest.h"

namespace Zu::Wep::Trace {
namespace {

struct TDFHandlerTest : CaptureTest {};

TEST_F(TDFHandlerTest, GivesTheBytesOfACaptureWrittenElsewhere) {
    const std::string full = STMDCM_TEST_DATA "/full.tdf", appended = m_directory / "appended.TDF";
    m_handler.CreateTDFFile(m_path);
    WriteWhole(appended, ReadWhole(m_file));
    for (const char* name : {"TRACE0", "DEVID", "DCM_COMMON", "STMDECODERINFO"}) {
        m_handler.GetSectionDataLengthInBytes(full.c_str(), name, 1, m_a);
        std::string payload(m_a, '\0');
        m_handler.LoadSectionData(full.c_str(), name, 1, payload.data(), m_a, m_b);
        m_handler.GetSectionDataPosition(full.c_str(), name, 1, m_a, m_b);
        EXPECT_EQ(payload, Reference("full.tdf").substr(m_a, m_b));
        Save(name, 1, payload);
        AppendSection(appended, name, 1, payload);
    }
    EXPECT_EQ(ReadSection(full.c_str(), "DEVID", 1).substr(0, 16), "device=board-7\r\n");
    EXPECT_EQ(ReadWhole(m_file), Reference("full.tdf"));
    EXPECT_EQ(ReadWhole(appended), Reference("full.tdf"));
}

TEST_F(TDFHandlerTest, KeepsTheRulesOfNamesPartsAndExtensions) {
    Copy("empty.tdf");
    Save(nullptr, 1, "nameless");
    Save("S", 3, "0123456789");
    m_handler.SaveSectionData(m_path, nullptr, m_a, "abcdefgh", 4, 2, m_b);
    EXPECT_EQ(m_b, FileSize(m_path) - m_a);
    // Elements of no size are never all written.
    EXPECT_NE(ErrorOf([&] { m_handler.SaveSectionData(m_path, "", m_a, "", 0, 1, m_b); }), "");
    Save("S", 3, "younger");
    char buffer[12];
    m_handler.LoadSectionData(m_path, "S", 3, buffer, sizeof buffer, m_b);
    EXPECT_EQ(std::string(buffer, m_b) + ReadSection(m_path, "S", 3), "0123456789ab0123456789abcdefgh");
    EXPECT_EQ(ReadSection(m_path, "", 1), "nameless");
    Save("S", 4, "");
    EXPECT_EQ(ErrorOf([&] { ReadSection(m_path, "S", 4); }), "No buffer allocated to load section data.");
    for (const unsigned size : {4095u, 4096u, 1u}) {  // a name that is too long hides itself and what follows
        Save(std::string(size, 'n').c_str(), 1, "d");
        EXPECT_EQ(ErrorOf([&] { ReadSection(m_path, std::string(size, 'n').c_str(), 1); }).empty(), size == 4095);
    }
    for (const char* path : {"a.TdF", ".tdf", "dir.x/a.tdf"}) {
        EXPECT_TRUE(m_handler.HasExtension(path, "tdf")) << path;
    }
    for (const char* path : {"tdf", "xtdf", "a.tdf2", "a.tdf ", ""}) {
        EXPECT_FALSE(m_handler.HasExtension(path, "tdf")) << path;
    }
    EXPECT_FALSE(m_handler.HasExtension(nullptr, "tdf") || m_handler.ISTDF(nullptr) || FileSize(nullptr) != 0);
}

TEST_F(TDFHandlerTest, ReadsAndWritesTheIdentifierOfAPipeAndWaitsForNobody) {
    ASSERT_EQ(::mkfifo(m_path, 0600), 0);
    EXPECT_FALSE(m_handler.ISTDF(m_path));
    EXPECT_EQ(AppendSection(m_file, "n", 1, "d"), SaveTarget::NotACapture);
    EXPECT_EQ(ErrorOf([&] { m_handler.CreateTDFFile(m_path); }), "Could not create TDF file as specified.");
    EXPECT_EQ(ErrorOf([&] { ReadSection(m_path, "n", 1); }), "Invalid TDF format.");
    const ZU_WEP::PosixFile other = ZU_WEP::PosixFile::Open(m_path, O_RDWR);  // both ends, so that nobody waits
    for (const char* bytes : {"TDF2", "TDF3"}) {
        ASSERT_TRUE(other.Write(bytes));
        EXPECT_EQ(m_handler.ISTDF(m_path), bytes == kTDFIdentifier) << bytes;
    }
    m_handler.CreateTDFFile(m_path);
    std::string written(kTDFIdentifier.size(), '\0');
    EXPECT_EQ(other.Read(written.data(), written.size()), written.size());
    EXPECT_EQ(written, kTDFIdentifier);
}

TEST_F(TDFHandlerTest, TellsEveryFailureInItsOwnWords) {
    Copy("full.tdf");
    const std::string folder = m_directory / "folder.tdf", other = m_directory / "x.dat";
    std::filesystem::create_directory(folder);
    WriteWhole(other, Reference("full.tdf"));
    const char *dir = folder.c_str(), *dat = other.c_str(), *wrong = STMDCM_TEST_DATA "/wrong-magic.tdf";
    using Call = std::function<void(const char*)>;
    const auto data = [&](unsigned at, const char* from, unsigned size) -> Call {
        return [=, this](const char* p) { m_handler.SaveSectionData(p, "n", at, from, size, size, m_a); };
    };
    const auto load = [&](void* to, unsigned size) -> Call {
        return [=, this](const char* p) { m_handler.LoadSectionData(p, "n", 1, to, size, m_a); };
    };
    const Call create = [&](const char* p) { m_handler.CreateTDFFile(p); };
    const Call header = [&](const char* p) { m_handler.SaveSectionHeader(p, "n", 1, m_a); };
    const Call length = [&](const char* p) { m_handler.GetSectionDataLengthInBytes(p, "n", 1, m_a); };
    const Call position = [&](const char* p) { m_handler.GetSectionDataPosition(p, "n", 1, m_a, m_b); };
    char bytes[8];
    const struct {
        const char* text;
        const char* path;
        std::vector<Call> calls;
    } cases[] = {
        {"Null file name to create TDF.", nullptr, {create}},
        {"Could not create TDF file as specified.", dir, {create}},
        {"TDF file extension must be .tdf.", dat, {create, load(bytes, 8), position}},
        {"File name passed to save file is not valid.", nullptr, {header, data(4, "d", 1)}},
        {"File name passed to load file is not valid.", "", {length}},
        {"File name passed to load is not valid.", "/none.tdf", {load(bytes, 8), position}},
        {"Could not open TDF file as specified.", dir, {header, data(4, "d", 1)}},
        {"Section header offset to save data is not valid.", m_path, {data(3, nullptr, 1), data(4, "d", ~0u)}},
        {"No data to write TDF.", m_path, {data(4, nullptr, 1)}},
        {"Write I/O error - unable to determine section length.", m_path, {data(FileSize(m_path) - 3, "d", 1)}},
        {"Invalid TDF format.", wrong, {length, load(bytes, 8), position}},
        {"Section size cannot be located in the file.", dat, {length}},
        {"n section cannot be located in the file.", m_path, {load(bytes, 8), position}},
        {"No buffer allocated to load section data.", m_path, {load(nullptr, 8), load(bytes, 0)}},
    };
    for (const auto& c : cases) {
        for (const Call& call : c.calls) {
            EXPECT_EQ(ErrorOf([&] { call(c.path); }), c.text);
        }
    }
    EXPECT_EQ(ReadWhole(m_file), Reference("full.tdf"));
}

TEST_F(TDFHandlerTest, TellsWhichStepOfInputOrOutputFailed) {
    using Call = std::function<void()>;
    const Call create = [&] { m_handler.CreateTDFFile(m_path); };
    const Call header = [&] { m_handler.SaveSectionHeader(m_path, "n", 1, m_a); };
    const Call data = [&] { m_handler.SaveSectionData(m_path, "n", 4, "d", 1, 1, m_a); };
    const Call load = [&] { m_handler.LoadSectionData(m_path, "DEVID", 1, &m_b, 4, m_a); };
    const struct {
        Call call;
        long systemCall;
        unsigned failing;
        const char* text;
    } cases[] = {
        {create, SYS_write, 1, "Write error -  TDF file identifier."},
        {header, SYS_pwritev, 1, "Write error -  TDF section header size."},
        {header, SYS_pwritev, 2, "Write error -  TDF section name and version."},
        {header, SYS_pwritev, 3, "Write error - size of TDF header."},
        {data, SYS_pwritev, 1, "Write I/O error - unable to write section data."},
        {data, SYS_pwritev, 2, "Write error - size of TDF header."},
        {data, SYS_close, 2, "Write error - section data corrupted."},
        {load, SYS_read, 1, "Invalid TDF format."},
        {load, SYS_pread64, 1, ""},  // what was read beyond the header is not needed
        {load, SYS_pread64, 2, ""},
        {load, SYS_pread64, 3, "Read I/O error - section data corrupted."},
    };
    for (const auto& c : cases) {
        Copy("full.tdf");
        stmdcm_test::StopAtSyscall(c.failing, EIO, {c.systemCall}, [&] {
            WriteWhole(m_directory / "error", ErrorOf(c.call));
            return 0;
        });
        EXPECT_EQ(ReadWhole(m_directory / "error"), c.text);
    }
}

}  // namespace
}  // namespace Zu::Wep::Trace
