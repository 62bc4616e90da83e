#include "tests/dcm/ManagerTest.h"
#include "tests/support/AllocationWatch.h"

namespace Zu::Wep::Trace {
namespace {

using stmdcm_test::largestAllocation;

class SamplesTest : public ManagerTest {
  protected:
    SamplesTest() { ResetLog(); }
    bool LoadAny(const std::string& path) {
        return m_manager->LoadConfiguration(path, path.ends_with(".tdf") ? TRACE_DATA_FILE_TDF : TRACE_DATA_FILE_LOCAL);
    }
};

TEST_F(SamplesTest, EachLoadsToWhatItsWriterSays) {
    const std::tuple<const char*, bool, int, std::vector<unsigned>> cases[] = {
        {"full.tdf", true, 12, {2, 1, 2}},
        {"packed.tdf", true, 7, {1, 1, 1}},
        {"malformed-common.tdf", true, 12, {0, 0, 0}},
        {"unterminated-common.tdf", true, 12, {0, 0, 0}},
        {"empty-devid.tdf", false, 1, {0, 0, 0}},
        {"empty-decoder.tdf", false, 9, {0, 0, 0}},
        {"shadowed.tdf", true, 1, {0, 0, 0}},
        {"no-devid.tdf", false, 1, {0, 0, 0}},
        {"empty.tdf", false, 1, {0, 0, 0}},
        {"wrong-magic.tdf", false, 1, {0, 0, 0}},
        {"torn-payload.tdf", true, 12, {0, 0, 0}},
        {"torn-header.tdf", true, 12, {0, 0, 0}},
        {"orphan-payload.tdf", false, 1, {0, 0, 0}},
        {"zero-length.tdf", false, 1, {0, 0, 0}},
        {"huge-length.tdf", false, 1, {0, 0, 0}},
        {"settings.txt", true, 12, {2, 1, 2}},
        {"settings-crlf.txt", true, 12, {1, 1, 2}},
        {"settings-packed.txt", false, 7, {1, 1, 1}},
        {"settings-unknown-key.txt", false, 5, {0, 0, 0}},
        {"settings-long-line.txt", false, -1, {2, 0, 0}},
    };
    for (const auto& [file, result, atbId, useCases] : cases) {
        m_manager = Make();
        EXPECT_EQ(LoadAny(Sample(file)), result) << file;
        EXPECT_EQ(Number("STM_ATB_Id"), atbId) << file;
        EXPECT_EQ(UseCases(), useCases) << file;
    }
    EXPECT_TRUE(LoadAny(Sample("settings-not-a-number.txt")));
    EXPECT_EQ(Number("STM_ATB_Id"), 0);
    EXPECT_EQ(Number("STM_DTC_target_clock_hz"), 250000000);
}

TEST_F(SamplesTest, FullCaptureToTheLetter) {
    ASSERT_TRUE(LoadAny(Sample("full.tdf")));
    EXPECT_EQ(Number("STM_STP_Version"), 2);  // the host's section said 9
    EXPECT_EQ(Number("OCPWP_Probe_ID"), 0);
    EXPECT_EQ(Number("HEAD_Pointer_0"), -2147483647 - 1);
    EXPECT_EQ(m_manager->GetUsecaseRecord()->GetUsecase(0)->GetFormula(0)->tagNumber, 10U);
    EXPECT_EQ(Text(), ReadWhole(Sample("settings.txt")));  // every byte of somebody else's text comes back
}

TEST_F(SamplesTest, OnlyASectionThatStatesToBeEmptyFailsTheLoad) {
    const std::string packed = ReadWhole(Sample("packed.tdf")), decoder = ReadWhole(Sample("empty-decoder.tdf"));
    std::string torn = packed + decoder.substr(26, 17), wrapped = decoder;  // a header of DEVID that states 13 bytes
    torn[30] = 2;                                                           // the version of the DEVID in front of it
    --wrapped[decoder.rfind("STMDECODERINFO") - 12];                        // the length
    const struct {
        const char* what;
        std::string bytes;
        bool result;
        int atbId;  // 3 unless the capture's was applied
        bool keepsUseCases;
    } cases[] = {
        {"DEVID", ReadWhole(Sample("empty-devid.tdf")), false, 3, true},
        {"STMDECODERINFO", decoder, false, 9, true},
        {"nothing is left of a DEVID", torn, true, 7, false},
        {"nothing is left of an STMDECODERINFO", packed.substr(0, packed.find("Instruction")), true, 3, false},
        {"its length does not cover its header", wrapped, true, 9, false},
    };
    for (const auto& test : cases) {
        m_manager = Make();
        LoadText("STM_ATB_Id=3\n{\nid=4\n}");
        TakeLog();
        const std::string path = Write("empty.tdf", test.bytes), records = Text().substr(Text().find('{'));
        EXPECT_EQ(Load(path), test.result) << test.what;
        EXPECT_EQ(Number("STM_ATB_Id"), test.atbId) << test.what;
        EXPECT_EQ(Text().ends_with("\n" + records), test.keepsUseCases) << test.what;
        EXPECT_EQ(TakeLog().back() == "    E STM Device DCM: " + path + ": No buffer allocated to load section data.",
                  !test.result)
            << test.what;
    }
}

/// The stated lengths reach 128 MiB and, wrapped, 4 GiB; the text may be copied while it grows.
TEST_F(SamplesTest, AnyTruncationAndAnyFlippedByteLoadsWithinItsBounds) {
    for (const auto& sample : std::filesystem::directory_iterator(STMDCM_TEST_DATA)) {
        const std::string bytes = ReadWhole(sample.path());
        const std::string path = Write("damaged" + sample.path().extension().string(), bytes);
        std::fstream stream(path);
        const auto load = [&](const std::string& what, std::size_t at) {
            largestAllocation = 0;
            LoadAny(path);
            EXPECT_LE(largestAllocation, 64 * 1024 + 4 * bytes.size()) << sample << what << at;
        };
        const auto put = [&stream](std::size_t at, char byte) {
            stream.seekp(static_cast<std::streamoff>(at)).put(byte).flush();
        };
        const std::size_t step = bytes.size() > 4096 ? 7 : 1;
        for (std::size_t i = 0; i < bytes.size(); i += step) {
            put(i, static_cast<char>(~bytes[i]));
            load(" flipped at ", i);
            put(i, bytes[i]);
        }
        for (std::size_t length = bytes.size(); length-- > 0;) {
            std::filesystem::resize_file(path, length);
            load(" cut to ", length);
        }
    }
}

}  // namespace
}  // namespace Zu::Wep::Trace
