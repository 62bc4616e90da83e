#include "tests/tool/CheckInputs.h"

#include <iterator>
#include <span>

#include "trace/format/RetiredSection.h"

namespace stmdcm {

using namespace std::string_literals;

namespace {

const std::string kScBlock = "{\nid=1\njobid=1\n}\n";
const std::string kScBlock2 = "{\nid=2\njobid=2\n}\n";
const std::string kCptBlock = "{\ntype=CPT\nsid=1\n}\n";
const std::string kText = "STM_ATB_Id = 7\n";
const std::string kPmiBlock = "{\ntype=PMI_CMI\nname=PMI\n}\n";

struct Case {
    std::string part;  ///< of the file: all else is without fault
    std::string expected;
};

/// Settings texts: the first ones on their own, the others behind all properties.
const Case kLooseTexts[] = {
    {"", "F-EMPTY"},
    {" \n", "T-NOTHING T-FINAL-LINE-FEED T-NOT-SET"},
    {"STM_ATB_Id = 1", "T-NOT-SET"},
    {"STM_ATB_Id = 1\nSTM_Colour = 3\nSTM_STP_Version = 2\n", "T-UNKNOWN-KEY T-NOT-READ T-NOT-SET"},
    {"STM_ATB_Id = 1\n\nSTM_STP_Version = 2\n" + kScBlock, "T-BLANK-LINE T-NOT-READ T-NOT-SET"},
};

const Case kTexts[] = {
    {"", "T-FINAL-LINE-FEED"},
    {kScBlock, ""},
    {kScBlock + kScBlock2 + kCptBlock + kPmiBlock, ""},
    {"\n" + kScBlock, "T-BLANK-LINE"},
    {"\n\n" + kScBlock, "T-BLANK-LINE U-BLANK-LINE U-NOT-READ"},
    {"STM_ATB_Id =\n" + kScBlock, "T-NO-VALUE"},
    {"type=SC\n" + kScBlock, "T-UNKNOWN-KEY"},
    {"STM_ATB_Id 1 MHz\n" + kScBlock, "T-NO-EQUALS T-EXTRA-FIELD T-DUPLICATE"},
    {"STM_ATB_Id = word\n" + kScBlock, "T-DUPLICATE T-NOT-A-NUMBER P-ATB-ID"},
    {"STM_ATB_Id = 0x10\n" + kScBlock, "T-DUPLICATE T-PARTLY-NUMBER P-ATB-ID"},
    {"STM_DTC_target_clock_hz = 2.5\n" + kScBlock, "T-DUPLICATE T-PARTLY-NUMBER"},
    {"STM_DTC_target_clock_hz = 2.5e8\n" + kScBlock, "T-DUPLICATE"},
    {"STM_DTC_target_clock_hz = inf\n" + kScBlock, "T-DUPLICATE T-NUMBER-WRAPPED P-CLOCK"},
    {"STM_DTC_target_clock_hz = 99999999999\n" + kScBlock, "T-DUPLICATE T-NUMBER-WRAPPED P-CLOCK"},
    {"HEAD_Pointer_0 = 4294967296\n" + kScBlock, "T-DUPLICATE T-NUMBER-WRAPPED"},
    {"HEAD_Pointer_0 = 4294967295\n" + kScBlock, "T-DUPLICATE T-NUMBER-SIGN P-HEAD-POINTER"},
    {"HEAD_Pointer_0 = -2147483648\n" + kScBlock, "T-DUPLICATE P-HEAD-POINTER"},
    {"STM_DTC_target_clock_hz = 0\n" + kScBlock, "T-DUPLICATE P-CLOCK"},
    {"STM_DTC_target_clock_hz = 1\n" + kScBlock, "T-DUPLICATE P-CLOCK-DEFAULT"},
    {"STM_DTC_fprocess_clock_hz = 3e9\n" + kScBlock, "T-DUPLICATE T-NUMBER-SIGN P-CLOCK"},
    {"STM_DTC_target_pins = 77\n" + kScBlock, "T-DUPLICATE P-PINS"},
    {"STM_STP_Version = 9\n" + kScBlock, "T-DUPLICATE P-STP-VERSION"},
    {"STM_ATB_Id = 300\n" + kScBlock, "T-DUPLICATE P-ATB-ID"},
    {"STM_ATB_Id = 111\n" + kScBlock, "T-DUPLICATE"},
    {"STM_ATB_Id = 112\nSTM_ATB_Id = 1\n" + kScBlock, "T-DUPLICATE"},
    {"HEAD_Pointer_1 = 5\n" + kScBlock, "T-DUPLICATE P-HEAD-POINTER"},
    {"STM_data_flip = 00\n" + kScBlock, "T-DUPLICATE T-NOT-0-OR-1"},
    {"STM_ATB_Id = 1" + std::string(1000, ' ') + "\r\n" + kScBlock, "T-DUPLICATE"},
    {"STM_ATB_Id = 1" + std::string(1000, ' ') + "x\n" + kScBlock, "T-DUPLICATE T-LINE-CUT"},
    {"STM_ATB_Id = 1\0\n"s + kScBlock, "T-DUPLICATE T-ZERO-BYTE"},
    {"{type=SC,id=1}\n{type=CPT}", ""},
    {"{type=SC,id=1}\r\n{type=CPT}", "T-PARTLY-NUMBER T-PACKED-CR"},
    {"{type=SC,id=12", "T-PACKED-END"},
    {"{type=SC,id=1}\nx = 1\nSTM_ATB_Id = 3", "T-UNKNOWN-KEY T-PACKED-REST"},
    {"{type=SC,id=1}\n" + kScBlock, "T-MIXED-BLOCKS"},
    {kScBlock + "{type=SC,id=2}\n" + kScBlock2, "T-MIXED-BLOCKS U-NOT-READ"},
    {"{\nname=" + std::string(122, 'n') + "\n}\n", "T-LINE-CUT"},
    {"{\nid=1\n", "U-UNCLOSED"},
    {"{\nid=1", "U-UNCLOSED"},
    {"{\nid=1\n" + kScBlock2, "U-UNCLOSED U-NOT-READ"},
    {"{\nid=1\n\n}\n" + kScBlock2, "U-BLANK-IN-BLOCK U-NOT-READ"},
    {"{\nid 1\n}\n" + kCptBlock, "U-NO-EQUALS"},
    {kScBlock + "{\nid=2\nbroken line\n}\n" + "{\nid=3\n}\n", "U-NO-EQUALS U-NOT-READ"},
    {kScBlock + "\n" + kScBlock2, "U-BLANK-LINE U-NOT-READ"},
    {kPmiBlock + "\n" + kScBlock, ""},
    {kScBlock + "id=2\n}\n" + kCptBlock, "U-OUTSIDE"},
    {"{\n/$\n\nformula=a:1\n$/\n}\n" + kScBlock, "U-OUTSIDE U-FORMULA-EMPTY"},
    {kScBlock + "}\n" + kScBlock2, "U-STRAY-LINE"},
    {"{\ntype=XY\n}\n" + kScBlock, "U-UNKNOWN-TYPE"},
    {"{\nid=1\ntype=CPT\n}\n", "U-LATE-TYPE"},
    {"{ id=1\nid=1\n}\n", "U-OPENER-TEXT"},
    {kScBlock + "{ x\nid=2\n}\n", "U-NOT-READ U-OPENER-TEXT"},
    {"{\n}\n", "U-EMPTY-BLOCK U-SOURCE"},
    {kScBlock + "STM_ATB_Id = 5\n" + kScBlock2, "U-STRAY-LINE"},
    {"{\nname = x\n}\n", "U-UNKNOWN-KEY"},
    {"{\nid=1\nid=2\n}\n", "U-KEY-TWICE"},
    {"{\n#1=a\n#1=b\n}\n", "U-COUNTER-TWICE"},
    {"{\n#x=a\n}\n", "T-NOT-A-NUMBER"},
    {"{\nsuppress=2\nsw=4294967295\njobid=4294967295\n}\n", "T-NUMBER-SIGN T-NOT-0-OR-1"},
    {"{\nname=a\rb\n}\n", ""},
    {kScBlock + "{\nid=1\njobid=1\nsw=7\n}\n", "U-DUPLICATE"},
    {kPmiBlock + "{\ntype=PMI_CMI\nname=PMI\nsw=7\n}\n", "U-DUPLICATE"},
    {kScBlock + kScBlock, "U-IDENTICAL"},
    {kCptBlock + kCptBlock, "U-IDENTICAL"},
    {kPmiBlock + kPmiBlock, "U-IDENTICAL"},
    {"{\ntype=PMI_CMI\nname=CMI2\n}\n", "U-SOURCE"},
    {"{\n/$\nformula=#0:10\n$/\n}\n", ""},
    {"{\n/$\nformula=10\nx\n$/\n}\n", "U-FORMULA-LINE U-FORMULA-TAG"},
    {"{\n/$\nformula=a:1234\n$/\n}\n", "U-FORMULA-TAG"},
    {"{\n/$\nformula=a:1\n\n}\n", "U-FORMULA-OPEN"},
    {"{\n/$\nformula=a:1\n}\n" + kScBlock, "U-UNCLOSED U-NOT-READ U-FORMULA-OPEN"},
    {"{\n/$\n", "U-FORMULA-EMPTY"},
};

/// The text of STMDECODERINFO has no limits for its lines, other than those of the blocks.
const Case kSections[] = {
    {"", ""},
    {"{\nname=" + std::string(251, 'n') + "\n}\n", "U-LINE-LENGTH"},
    {"{\nname=" + std::string(122, 'n') + "\n}\n", "U-CUT-ON-SAVE"},
    {"{\nname=" + std::string(121, 'n') + "\n}\n", ""},
};

const Case kDeviceTexts[] = {
    {"board=7\n\nSTM_ATB_Id = 1\n", ""},
    {"lonely\nSTM_ATB_Id = 9\n", "D-NO-VALUE D-OVERRIDDEN"},
    {"STM_ATB_Id = 300\nSTM_STP_Version = 1\n", "D-OVERRIDDEN"},
};

const Case kCommons[] = {
    {ObjectFileEntryBytes("a", "/no/such/file", 1), "O-MISSING"},
    {ObjectFileEntryBytes("a", STMDCM_TEST_DATA "/full.tdf", 1), "O-CHANGED"},
    {ObjectFileEntryBytes("a", STMDCM_TEST_DATA, 1), "O-CHANGED O-NO-IMAGE"},
    {ObjectFileEntryBytes("a", "", 1), "O-EMPTY-PATH"},
    {ObjectFileEntryBytes("a", "", 1) + ObjectFileEntryBytes("a", "", 1), "O-EMPTY-PATH O-DUPLICATE"},
    {ObjectFileEntryBytes("a", "", 1).substr(0, 9), "O-TRUNCATED"},
};

/// Bytes behind a capture without a fault.
const Case kTails[] = {
    {"x", "C-TRAILING-BYTES"},
    {"12345", "C-TORN-HEADER"},
    {MakeSection("TRACE", 1, "abc", 5), "C-TORN-PAYLOAD"},
    {MakeSection("Z", 1, "", -13) + MakeSection("STMDECODERINFO", 1, ""), "C-LENGTH-ZERO C-UNREACHABLE"},
    {MakeSection("SHORT", 1, "", -1), "C-TRAILING-BYTES C-LENGTH-SHORT"},
    {MakeSection("LONG", 1, "", 0x8000000) + MakeSection("DEVID", 1, ""), "C-LENGTH-LIMIT C-UNREACHABLE"},
    {MakeSection(std::string(4096, 'n'), 1, "") + MakeSection("TRACE", 1, ""), "C-NAME-LIMIT C-UNREACHABLE"},
    {MakeSection("a\xff", 1, ""), "C-NAME-ODD"},
    {MakeSection("DEVID", 1, ""), "C-SHADOWED"},
    {MakeSection("DCM_COMMON", 1, "") + MakeSection("STMDECODERINFO", 1, kText), "C-LATER-SAVES"},
    {MakeSection("DCM_COMMON", 1, ""), "C-LATER-SAVES C-NO-PAIR"},
    {MakeSection("DCM_COMMON", 2, "") + MakeSection("DCM_COMMON", 2, ""), "C-OTHER-VERSION C-REPEATED"},
    {MakeSection("unfinished", 1, MakeSection("STMDECODERINFO", 1, kText)), "C-UNFINISHED"},
    {MakeSection("DCM_nished", 1, "") + MakeSection("STMDECODERINFO", 1, kText), "C-LATER-SAVES C-UNFINISHED"},
    {MakeSection("DEVID", 2, ""), "C-OTHER-VERSION"},
    {MakeSection("TRACE", 2, "") + MakeSection("TRACE", 2, ""), "C-REPEATED"},
    {MakeSection("IMAGE_PINS", 1, std::string("a\0b", 3)), "O-PINS-TORN"},
    {MakeSection("IMAGE_PINS", 2, "abc"), "O-PINS-VERSION"},
    {MakeSection("DEVID", Zu::Wep::Trace::Retired(1), ""), "C-RETIRED"},
};

const Case kPinned[] = {
    {STMDCM_TEST_DATA "/full.tdf", "O-CHANGED O-NOT-CAPTURED"},
    {STMDCM_TEST_DATA, "O-CHANGED O-NOT-COMPARED"},
    {"/no/such/file", "O-MISSING"},
};

const Case kCaptures[] = {
    {"TDF2", "C-NO-COMMON C-NO-DEVID C-NO-STM"},
    {"TDF1", "F-NO-CAPTURE"},
    {CaptureParts{"", "", ""}.Bytes(), "C-EMPTY-DEVID C-EMPTY-STM"},
};

std::string AsIs(const std::string& bytes) { return bytes; }

std::string BehindProperties(const std::string& text) { return AllProperties() + text; }

std::string InSection(const std::string& text) { return CaptureParts{BehindProperties(text)}.Bytes(); }

std::string AsDevice(const std::string& text) { return CaptureParts{AllProperties(), text}.Bytes(); }

std::string AsCommon(const std::string& payload) {
    CaptureParts parts;
    parts.common = payload;
    return parts.Bytes();
}

/// A capture with the object file "a" of this machine, and the pin of another one for it.
std::string AsPinned(const std::string& path) {
    const std::string common = ObjectFileEntryBytes("a", path, 1);
    const std::string pins = EncodePins({{"a", 0, {1, std::string(kSha256Size, 'h'), "id"}}});
    return AsCommon(common) + MakeSection(kPinSectionName, kPinSectionVersion, pins);
}

std::string BehindCapture(const std::string& tail) { return CaptureParts{}.Bytes() + tail; }

}  // namespace

std::vector<CheckInput> CheckInputs() {
    std::vector<CheckInput> inputs;
    const auto add = [&](const char* name, std::span<const Case> cases, std::string (*bytes)(const std::string&)) {
        for (const Case& c : cases) {
            inputs.push_back({name, bytes(c.part), c.expected});
        }
    };
    add("settings.txt", kLooseTexts, AsIs);
    add("settings.txt", kTexts, BehindProperties);
    add("section.tdf", kSections, InSection);
    add("device.tdf", kDeviceTexts, AsDevice);
    add("common.tdf", kCommons, AsCommon);
    add("pinned.tdf", kPinned, AsPinned);
    add("tail.TDF", kTails, BehindCapture);
    add("bytes.tdf", kCaptures, AsIs);
    return inputs;
}

}  // namespace stmdcm
