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

TEST_F(TDFHandlerTest, AppendsPayloadInPartsAndCutsItToTheBuffer) {
    Copy("empty.tdf");
    Save(nullptr, 1, "nameless");
    Save("S", 3, "0123456789");
    const unsigned int header = m_a;
    m_handler.SaveSectionData(m_path, nullptr, header, "abcdefgh", 4, 2, m_b);
    EXPECT_EQ(m_b, FileSize(m_path) - header);
    // Elements of no size are never all written.
    EXPECT_NE(ErrorOf([&] { m_handler.SaveSectionData(m_path, "", header, "", 0, 1, m_b); }), "");
    Save("S", 3, "younger");
    char buffer[12];
    m_handler.LoadSectionData(m_path, "S", 3, buffer, sizeof buffer, m_b);
    EXPECT_EQ(std::string(buffer, m_b), "0123456789ab");
    EXPECT_EQ(ReadSection(m_path, "S", 3), "0123456789abcdefgh");
    EXPECT_EQ(ReadSection(m_path, "", 1), "nameless");
}

TEST_F(TDFHandlerTest, KeepsTheRulesOfNamesAndExtensions) {
    Copy("empty.tdf");
    for (const std::size_t size : {4095, 4096, 1}) {
        Save(std::string(size, 'n').c_str(), 1, "");
        // A name that is too long hides itself and what follows.
        EXPECT_EQ(ErrorOf([&] { ReadSection(m_path, std::string(size, 'n').c_str(), 1); }).empty(), size == 4095);
    }
    const struct {
        const char *path, *extension;
        bool has;
    } cases[] = {{"a.TdF", "tdf", true}, {".tdf", "tdf", true},   {"tdf", "tdf", false},     {"xtdf", "tdf", false},
                 {"a.tdf", "", false},   {nullptr, "tdf", false}, {"a.tdf", nullptr, false}, {"a.tdf2", "tdf", false}};
    for (const auto& c : cases) {
        EXPECT_EQ(m_handler.HasExtension(c.path, c.extension), c.has) << (c.path != nullptr ? c.path : "null");
    }
}

TEST_F(TDFHandlerTest, TellsEveryFailureInItsOwnWords) {
    Copy("full.tdf");
    const std::string folder = m_directory / "folder.tdf", other = m_directory / "x.dat";
    std::filesystem::create_directory(folder);
    WriteWhole(other, Reference("full.tdf"));
    const char *dir = folder.c_str(), *dat = other.c_str(), *wrong = STMDCM_TEST_DATA "/wrong-magic.tdf";
    const char *extension = "TDF file extension must be .tdf.", *open = "Could not open TDF file as specified.",
               *save = "File name passed to save file is not valid.", *format = "Invalid TDF format.",
               *offset = "Section header offset to save data is not valid.";
    char bytes[8] = {};
    const auto data = [&](unsigned at, const void* from, unsigned size, unsigned count) {
        return [&, at, from, size, count](const char* p) {
            m_handler.SaveSectionData(p, "n", at, from, size, count, m_a);
        };
    };
    const auto load = [&](void* to, unsigned size) {
        return [&, to, size](const char* p) { m_handler.LoadSectionData(p, "n", 1, to, size, m_a); };
    };
    const struct {
        std::function<void(const char*)> call;
        std::vector<std::pair<const char*, const char*>> texts;  ///< by path
    } cases[] = {
        {[&](const char* p) { m_handler.CreateTDFFile(p); },
         {{nullptr, "Null file name to create TDF."},
          {dat, extension},
          {dir, "Could not create TDF file as specified."}}},
        {[&](const char* p) { m_handler.SaveSectionHeader(p, "n", 1, m_a); },
         {{nullptr, save}, {"", save}, {dir, open}}},
        {[&](const char* p) { AppendSection(p, "n", 1, "d"); }, {{nullptr, save}, {"/none", save}, {dir, open}}},
        {data(4, bytes, 1, 1), {{nullptr, save}, {"", save}, {dir, open}}},
        {data(3, nullptr, 1, 1), {{m_path, offset}}},
        {data(4, nullptr, 1, 1), {{m_path, "No data to write TDF."}}},
        {data(4, bytes, ~0u, ~0u), {{m_path, offset}}},
        {data(FileSize(m_path) - 3, bytes, 1, 1), {{m_path, "Write I/O error - unable to determine section length."}}},
        {[&](const char* p) { m_handler.GetSectionDataLengthInBytes(p, "n", 1, m_a); },
         {{nullptr, "File name passed to load file is not valid."},
          {wrong, format},
          {dir, format},
          {dat, "Section size cannot be located in the file."}}},
        {load(bytes, 8),
         {{nullptr, "File name passed to load is not valid."},
          {dat, extension},
          {wrong, format},
          {m_path, "n section cannot be located in the file."}}},
        {load(nullptr, 8), {{m_path, "No buffer allocated to load section data."}}},
        {load(bytes, 0), {{m_path, "No buffer allocated to load section data."}}},
        {[&](const char* p) { m_handler.GetSectionDataPosition(p, "n", 1, m_a, m_b); },
         {{nullptr, "File name passed to load is not valid."},
          {dat, extension},
          {wrong, format},
          {m_path, "n section cannot be located in the file."}}},
    };
    for (const auto& c : cases) {
        for (const auto& [path, text] : c.texts) {
            EXPECT_EQ(ErrorOf([&, p = path] { c.call(p); }), text) << (path != nullptr ? path : "null");
        }
    }
    EXPECT_EQ(ReadWhole(m_file), Reference("full.tdf"));
}

TEST_F(TDFHandlerTest, TellsWhichStepOfInputOrOutputFailed) {
    const auto data = [&] { m_handler.SaveSectionData(m_path, "n", 4, "d", 1, 1, m_a); };
    const auto append = [&] { AppendSection(m_path, "n", 1, "d"); };
    const char* unwritten = "Write I/O error - unable to write section data.";
    const struct {
        std::function<void()> call;
        long systemCall;
        std::vector<const char*> texts;  ///< when its first system call of that kind fails, its second, ...
    } cases[] = {
        {[&] { m_handler.CreateTDFFile(m_path); }, SYS_pwritev, {"Write error -  TDF file identifier."}},
        {[&] { m_handler.SaveSectionHeader(m_path, "n", 1, m_a); },
         SYS_pwritev,
         {"Write error -  TDF section header size.", "Write error -  TDF section name and version.",
          "Write error - size of TDF header."}},
        {data, SYS_pwritev, {unwritten, "Write error - size of TDF header."}},
        {data, SYS_close, {"", "Write error - section data corrupted."}},
        {append, SYS_pwritev, {unwritten}},
        {append, SYS_fdatasync, {"Write error - section data corrupted."}},
        {[&] { m_handler.LoadSectionData(m_path, "TRACE0", 1, &m_b, 4, m_a); },
         SYS_pread64,
         {"Invalid TDF format.", "TRACE0 section cannot be located in the file.",
          "Read I/O error - section data corrupted."}},
    };
    for (const auto& c : cases) {
        for (unsigned n = 1; n <= c.texts.size(); ++n) {
            Copy("full.tdf");
            stmdcm_test::FailAtSyscall(n, EIO, {c.systemCall}, [&] {
                WriteWhole(m_directory / "error", ErrorOf(c.call));
                return 0;
            });
            EXPECT_EQ(ReadWhole(m_directory / "error"), c.texts[n - 1]);
        }
    }
}

}  // namespace
}  // namespace Zu::Wep::Trace
