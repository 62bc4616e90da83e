#include <sys/stat.h>

#include "tests/dcm/ManagerTest.h"
#include "trace/format/SettingsText.h"

namespace Zu::Wep::Trace {
namespace {

using SettingsTextTest = ManagerTest;

TEST_F(SettingsTextTest, WhereThePropertiesEndAndWhatTheResultIs) {
    const std::string block = "{\ntype=PMI_CMI\nname=PMI\nsw=3\n}";
    const std::string packed = "{type=PMI_CMI,name=PMI,sw=3}";
    const struct {
        const char* what;
        std::string text;
        bool result;
        int atbId;  // 1 unless the text's value was applied
        unsigned pmi;
    } cases[] = {
        {"no final line feed", "STM_ATB_Id=5", true, 5, 0},
        {"a final line feed ends with an empty line", "STM_ATB_Id=5\n", false, 5, 0},
        {"an empty file", "", false, 1, 0},
        {"further fields are ignored", " \t= STM_ATB_Id == 5 = 6 junk", true, 5, 0},
        {"CR LF", "STM_ATB_Id = 5\r\n" + block, true, 5, 1},
        {"no value ends the properties", "HEAD_Present_0\nSTM_ATB_Id=5\n" + block, false, 1, 1},
        {"an unknown name ends them", "colour = 3\nSTM_ATB_Id=5\n" + block, false, 1, 1},
        {"what came before stays", "STM_ATB_Id=5\ncolour\n" + block, false, 5, 1},
        {"a blank line ends them", "STM_ATB_Id=5\n\n" + block, false, 5, 1},
        {"two end the blocks' search too", "STM_ATB_Id=5\n\n\n" + block, false, 5, 0},
        {"a block ends them", "STM_ATB_Id=5\n" + block + "\n", true, 5, 1},
        {"a block alone", block, true, 1, 1},
        {"properties behind a block are not read", block + "\nSTM_ATB_Id=5", true, 1, 1},
        {"one-line blocks stand among properties", packed + "\nSTM_ATB_Id=5\n" + packed, true, 5, 2},
        {"a block behind one-line blocks is not read", packed + "\n" + block, true, 1, 1},
        {"a one-line block cut by CR keeps its brace", "{type=PMI_CMI,name=PMI}\r\n", false, 1, 1},
        {"an empty block counts for every kind", "{\n}\n", true, 1, 1},
        {"a blank line between blocks ends them", block + "\n\n" + block, true, 1, 1},
        {"999 characters", "STM_ATB_Id=5 " + std::string(986, 'x'), true, 5, 0},
        {"999 characters and trailing blanks", "STM_ATB_Id=5 " + std::string(986, 'x') + "  \t\r", true, 5, 0},
        {"1000 characters", "STM_ATB_Id=5 " + std::string(987, 'x'), false, 5, 0},
        {"a block line of 126 characters, CR LF", "{\r\ntype=PMI_CMI\r\nname=" + std::string(121, 'n') + "\r\n}", true,
         1, 1},
        {"a block line of 127 characters", "{\ntype=PMI_CMI\nname=" + std::string(122, 'n') + "\n}", false, 1, 1},
        {"text behind the blanks", "{\ntype=PMI_CMI\nname=n" + std::string(300, ' ') + "x\n}", false, 1, 1},
    };
    for (const auto& test : cases) {
        m_manager = Make();
        EXPECT_EQ(LoadText(test.text), test.result) << test.what;
        EXPECT_EQ(Number("STM_ATB_Id"), test.atbId) << test.what;
        EXPECT_EQ(m_manager->GetPMIUsecaseRecord()->GetNumUsecases(), test.pmi) << test.what;
    }
    LoadText("{type=PMI_CMI,sw=4,name=CMI0}\r\n");
    EXPECT_NE(Text().find("name=CMI0}\n"), std::string::npos) << "the brace stays";
}

TEST_F(SettingsTextTest, LongLinesAreNamedInTheLog) {
    LoadText("STM_ATB_Id=5" + std::string(2000, ' ') + "\r\nSTM_STP_Version=2 " + std::string(2000, 'x') + "\n{\n" +
             std::string(200, 'k') + "=1\n" + std::string(124, 'k') + "=1 \r\n}");
    auto log = TakeLog();
    std::erase_if(log, [](const std::string& line) { return line.find("longer") == line.npos; });
    const std::string line = "    E STM Device DCM: " + (m_home / "local.txt") + " line ";
    EXPECT_EQ(log, (std::vector<std::string>{line + "2 is longer than 999 characters, the rest is skipped",
                                             line + "4 is longer than 126 characters, the rest is skipped"}));
    EXPECT_EQ(Number("STM_STP_Version"), 2);
}

TEST_F(SettingsTextTest, AFileThatCannotBeReadLeavesEverything) {
    LoadText("STM_ATB_Id=5\n{\n}");
    TakeLog();
    const std::string before = Text(), none = m_home / "none", loop = m_home / "loop.tdf";
    std::filesystem::create_symlink(loop, loop);
    EXPECT_FALSE(m_manager->LoadConfiguration(m_home.Path(), TRACE_DATA_FILE_LOCAL));  // a directory
    for (const std::string& path : {none, loop}) {
        EXPECT_FALSE(m_manager->LoadConfiguration(path, TRACE_DATA_FILE_LOCAL));
        EXPECT_FALSE(m_manager->LoadConfiguration(path, TRACE_DATA_FILE_TDF));
    }
    EXPECT_EQ(Text(), before);
    const std::string error = "    E ",
                      manager = error + "STM Device DCM: ", open = "LoadSTMConfiguration fail to open file: ";
    const std::string cause = " can't be opened: Too many levels of symbolic links";
    EXPECT_EQ(TakeLog(), (std::vector{manager + m_home.Path() + " can't be read: Is a directory", manager + open + none,
                                      manager + open + loop, manager + loop + cause, error + loop + ":" + cause}));
}

TEST_F(SettingsTextTest, NothingInAFilesPlaceIsWaitedForOrReadForever) {
    const std::string fifo = m_home / "pipe.dcm", large = Write("large.txt", "STM_ATB_Id=5\n{\n}");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_FALSE(m_manager->LoadConfiguration(fifo, TRACE_DATA_FILE_LOCAL));
    EXPECT_TRUE(m_manager->SaveConfiguration("pipe", TRACE_DATA_FILE_LIVE));  // it can't be opened
    std::fstream other(fifo);
    other << "STM_ATB_Id=6\n" << std::flush;
    EXPECT_FALSE(m_manager->LoadConfiguration(fifo, TRACE_DATA_FILE_LOCAL));
    EXPECT_EQ(Number("STM_ATB_Id"), 6);

    TakeLog();
    for (const std::size_t over : {0U, 1U}) {
        std::filesystem::resize_file(large, kMaxSettingsFileSize + over);
        EXPECT_FALSE(m_manager->LoadConfiguration(large, TRACE_DATA_FILE_LOCAL));
        EXPECT_EQ(Number("STM_ATB_Id"), 5);
    }
    EXPECT_FALSE(m_manager->LoadConfiguration("/dev/zero", TRACE_DATA_FILE_LOCAL));
    std::vector<std::string> log = TakeLog();
    std::erase_if(log, [](const std::string& line) { return line.find("the rest is not read") == line.npos; });
    const std::string end = " is longer than 134217728 bytes, the rest is not read";
    EXPECT_EQ(log, (std::vector<std::string>{"    E STM Device DCM: " + large + end,
                                             "    E STM Device DCM: /dev/zero" + end}));
}

TEST_F(SettingsTextTest, SettingsFilesAndTheirNames) {
    EXPECT_FALSE(m_manager->LoadConfiguration("", TRACE_DATA_FILE_LIVE));
    Write("a.dcm", "STM_ATB_Id=5");
    Write("b.dcm.old", "STM_ATB_Id=6");
    EXPECT_TRUE(m_manager->LoadConfiguration("a", TRACE_DATA_FILE_LIVE));
    EXPECT_EQ(Number("STM_ATB_Id"), 5);
    EXPECT_TRUE(m_manager->LoadConfiguration("b.dcm.old", TRACE_DATA_FILE_LIVE));
    EXPECT_EQ(Number("STM_ATB_Id"), 6);
    EXPECT_TRUE(m_manager->SaveConfiguration("c.dcm", TRACE_DATA_FILE_LOCAL));
    EXPECT_EQ(ReadWhole(m_home / "c.dcm.dcm"), Text());
    EXPECT_TRUE(m_manager->SaveConfiguration("no/such/directory", TRACE_DATA_FILE_LIVE));

    m_manager->SaveAllConfiguration();
    EXPECT_EQ(Number(*Make(), "STM_ATB_Id"), 6);  // a new manager reads its CPU's file
    LoadText("STM_ATB_Id=7");
    m_manager->RetrieveAllConfiguration();  // switched off by loading a local file
    EXPECT_EQ(Number("STM_ATB_Id"), 7);

    ::unsetenv("ZU_TRACE_SETTINGS_DIR");
    EXPECT_THROW(m_manager->SaveConfiguration("a", TRACE_DATA_FILE_LIVE), std::logic_error);
    EXPECT_THROW(m_manager->LoadConfiguration("a", TRACE_DATA_FILE_LIVE), std::logic_error);
    EXPECT_NO_THROW(Make());
}

}  // namespace
}  // namespace Zu::Wep::Trace
