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
        AppendSection(appended.c_str(), name, 1, payload);
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
    for (const unsigned size : {4095u, 4096u, 1u}) {  // a name that is too long hides itself and what follows
        Save(std::string(size, 'n').c_str(), 1, "");
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

TEST_F(TDFHandlerTest, TellsEveryFailureInItsOwnWords) {
    Copy("full.tdf");
    const std::string folder = m_directory / "folder.tdf", other = m_directory / "x.dat";
    std::filesystem::create_directory(folder);
    WriteWhole(other, Reference("full.tdf"));
    const char *dir = folder.c_str(), *dat = other.c_str(), *wrong = STMDCM_TEST_DATA "/wrong-magic.tdf";
    const char *extension = "TDF file extension must be .tdf.", *open = "Could not open TDF file as specified.",
               *save = "File name passed to save file is not valid.", *format = "Invalid TDF format.",
               *load = "File name passed to load is not valid.", *missing = "n section cannot be located in the file.",
               *offset = "Section header offset to save data is not valid.", *none = "/none.tdf";
    std::string bytes(8, '\0');
    const auto data = [&](const char* p, unsigned at, const char* from, unsigned size) {
        m_handler.SaveSectionData(p, "n", at, from, size, size, m_a);
    };
    const auto get = [&](const char* p, char* to, unsigned size) {
        m_handler.LoadSectionData(p, "n", 1, to, size, m_a);
    };
    using Call = std::function<void(const char*)>;
    const Call create = [&](const char* p) { m_handler.CreateTDFFile(p); };
    const Call header = [&](const char* p) { m_handler.SaveSectionHeader(p, "n", 1, m_a); };
    const Call append = [&](const char* p) { AppendSection(p, "n", 1, "d"); };
    const Call length = [&](const char* p) { m_handler.GetSectionDataLengthInBytes(p, "n", 1, m_a); };
    const Call position = [&](const char* p) { m_handler.GetSectionDataPosition(p, "n", 1, m_a, m_b); };
    const Call saveOne = [&](const char* p) { data(p, 4, "d", 1); };
    const Call loadOne = [&](const char* p) { get(p, bytes.data(), 8); };
    const std::vector<std::pair<Call, std::vector<std::pair<const char*, const char*>>>> cases = {
        {create,
         {{nullptr, "Null file name to create TDF."},
          {dat, extension},
          {dir, "Could not create TDF file as specified."}}},
        {header, {{nullptr, save}, {"", save}, {dir, open}}},
        {append, {{nullptr, save}, {none, save}, {dir, open}}},
        {saveOne, {{nullptr, save}, {none, save}, {dir, open}}},
        {[&](const char* p) { data(p, 3, nullptr, 1); }, {{m_path, offset}}},
        {[&](const char* p) { data(p, 4, nullptr, 1); }, {{m_path, "No data to write TDF."}}},
        {[&](const char* p) { data(p, 4, "d", ~0u); }, {{m_path, offset}}},
        {[&](const char* p) { data(p, FileSize(p) - 3, "d", 1); },
         {{m_path, "Write I/O error - unable to determine section length."}}},
        {length,
         {{nullptr, "File name passed to load file is not valid."},
          {wrong, format},
          {dat, "Section size cannot be located in the file."}}},
        {loadOne, {{nullptr, load}, {dat, extension}, {wrong, format}, {m_path, missing}}},
        {[&](const char* p) { get(p, nullptr, 8); }, {{m_path, "No buffer allocated to load section data."}}},
        {[&](const char* p) { get(p, bytes.data(), 0); }, {{m_path, "No buffer allocated to load section data."}}},
        {position, {{none, load}, {dat, extension}, {wrong, format}, {m_path, missing}}},
    };
    for (const auto& [call, texts] : cases) {
        for (const auto& [path, text] : texts) {
            EXPECT_EQ(ErrorOf([&, &c = call, p = path] { c(p); }), text);
        }
    }
    EXPECT_EQ(ReadWhole(m_file), Reference("full.tdf"));
}

TEST_F(TDFHandlerTest, TellsWhichStepOfInputOrOutputFailed) {
    const auto data = [&] { m_handler.SaveSectionData(m_path, "n", 4, "d", 1, 1, m_a); };
    const auto load = [&] { m_handler.LoadSectionData(m_path, "DEVID", 1, &m_b, 4, m_a); };
    const char* size = "Write error - size of TDF header.";
    const struct {
        std::function<void()> call;
        long systemCall;
        unsigned failing;
        const char* text;
    } cases[] = {
        {[&] { m_handler.CreateTDFFile(m_path); }, SYS_pwritev, 1, "Write error -  TDF file identifier."},
        {[&] { m_handler.SaveSectionHeader(m_path, "n", 1, m_a); }, SYS_pwritev, 1,
         "Write error -  TDF section header size."},
        {[&] { m_handler.SaveSectionHeader(m_path, "n", 1, m_a); }, SYS_pwritev, 2,
         "Write error -  TDF section name and version."},
        {[&] { m_handler.SaveSectionHeader(m_path, "n", 1, m_a); }, SYS_pwritev, 3, size},
        {data, SYS_pwritev, 1, "Write I/O error - unable to write section data."},
        {data, SYS_pwritev, 2, size},
        {data, SYS_close, 2, "Write error - section data corrupted."},
        {[&] { AppendSection(m_path, "n", 1, "d"); }, SYS_pwritev, 1,
         "Write I/O error - unable to write section data."},
        {[&] { AppendSection(m_path, "n", 1, "d"); }, SYS_fdatasync, 1, "Write error - section data corrupted."},
        {load, SYS_pread64, 2, "DEVID section cannot be located in the file."},
        {load, SYS_pread64, 4, "Read I/O error - section data corrupted."},
    };
    for (const auto& c : cases) {
        Copy("full.tdf");
        stmdcm_test::FailAtSyscall(c.failing, EIO, {c.systemCall}, [&] {
            WriteWhole(m_directory / "error", ErrorOf(c.call));
            return 0;
        });
        EXPECT_EQ(ReadWhole(m_directory / "error"), c.text);
    }
}

}  // namespace
}  // namespace Zu::Wep::Trace
