#include <fmt/format.h>

#include <string>

#include "host/vorn/vornError.h"
#include "stmdcm/validate/Bytes.h"
#include "stmdcm/validate/ContainerFunctions.h"
#include "stmdcm/validate/Expect.h"
#include "stmdcm/validate/Questions.h"
#include "stmdcm/validate/Rules.h"
#include "stmdcm/validate/Subject.h"
#include "trace/format/StmSections.h"

namespace stmdcm::validate {

using namespace Zu::Wep::Trace;

namespace {

/// The library's TDFHandler, called by its symbols.
class Handle {
  public:
    explicit Handle(Host& host) : m_host(host) { host.Exported<void (*)(void*)>(kConstructor)(m_object); }
    ~Handle() { m_host.Exported<void (*)(void*)>(kDestructor)(m_object); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    template <class Function, class... Arguments>
    auto Call(const char* symbol, Arguments&&... arguments) {
        return m_host.Exported<Function*>(symbol)(m_object, std::forward<Arguments>(arguments)...);
    }

    /// Gives the section's offset.
    unsigned Save(const std::string& path, const char* name, unsigned version, const std::string& payload) {
        unsigned offset = 0;
        Call<SaveHeaderFunction>(kSaveHeader, path.c_str(), name, version, offset);
        unsigned length = 0;
        Call<SaveDataFunction>(kSaveData, path.c_str(), name, offset, payload.data(), 1U,
                               static_cast<unsigned>(payload.size()), length);
        return offset;
    }
    std::string Load(const std::string& path, const char* name, unsigned version) {
        unsigned length = 0;
        Call<LengthFunction>(kLength, path.c_str(), name, version, length);
        std::string payload(length, '\0');
        Call<LoadFunction>(kLoad, path.c_str(), name, version, payload.data(), length, length);
        return payload.substr(0, length);
    }

  private:
    Host& m_host;
    alignas(std::max_align_t) char m_object[64] = {};
};

/// That a call throws a vornError of severity 2 with that text.
template <class Call>
void ExpectError(const std::string& asked, Call call, const std::string& text) {
    std::string came = "no exception";
    try {
        call();
    } catch (const Zu::Wep::Vorn::vornError& error) {
        came = fmt::format("{}: {}", static_cast<int>(error.GetSeverity()), error.what());
    }
    Expect(asked, came, "2: " + text);
}

constexpr Question kContainerTable[] = {
    {"container.create", "CreateTDFFile makes a file of the identifier alone, or empties one", kLayoutRule,
     [](Host& host) {
         Handle handle(host);
         const std::string path = host.Write("a.tdf", "what was there before");
         handle.Call<CreateFileFunction>(kCreateFile, path.c_str());
         Expect("the file", Host::Read(path), "TDF2");
     }},
    {"container.sections", "a section that is written in steps has the bytes that the page shows", kLayoutRule,
     [](Host& host) {
         Handle handle(host);
         const std::string path = host.Path("a.tdf");
         handle.Call<CreateFileFunction>(kCreateFile, path.c_str());
         Expect("where the first section begins", handle.Save(path, "DEVID", 1, "x=1\n"), 4U);
         Expect("the file", Host::Read(path), CaptureBytes(DeviceSection("x=1\n")));
         unsigned length = 0;
         handle.Call<SaveDataFunction>(kSaveData, path.c_str(), "DEVID", 4U, "y=22", 2U, 2U, length);
         Expect("the length with more data", length, 25U);
         Expect("the file with more data", Host::Read(path), CaptureBytes(DeviceSection("x=1\ny=22")));
     }},
    {"container.first-is-found", "of sections with the same name and version every operation finds the first",
     kSearchRule,
     [](Host& host) {
         Handle handle(host);
         const std::string path =
             host.Write("a.tdf", CaptureBytes(SectionBytes("S", 2, "another version") + SectionBytes("S", 1, "first") +
                                              SectionBytes("S", 1, "second")));
         Expect("the payload", handle.Load(path, "S", 1), "first");
         Expect("the payload of version 2", handle.Load(path, "S", 2), "another version");
     }},
    {"container.both-ways", "what a manager saves a host finds through TDFHandler, and the other way round",
     kLayoutRule,
     [](Host& host) {
         Handle handle(host);
         const Subject subject(host);
         subject.Set("STM_ATB_Id", 9);
         const std::string path = host.Write("a.tdf", subject.SavedInto(BareCapture()));
         Expect("what the handler reads", handle.Load(path, kStmSectionName, 1), subject.Text());
         const std::string other = host.Write("b.tdf", BareCapture());
         handle.Save(other, kCommonSectionName, 1, "");
         handle.Save(other, kStmSectionName, 1, "STM_ATB_Id = 8\n");
         Expect("loading what the handler wrote", subject.Load(other), true);
         Expect("STM_ATB_Id that it wrote", subject.Number("STM_ATB_Id"), 8);
     }},
    {"container.is-tdf", "ISTDF is true of a file with the extension and the identifier alone", kSearchRule,
     [](Host& host) {
         Handle handle(host);
         const auto isTdf = [&](const std::string& path) {
             return handle.Call<TestFileFunction>(kIsTdf, path.c_str());
         };
         Expect("of a capture", isTdf(host.Write("a.tdf", "TDF2")), true);
         Expect("of one in capitals", isTdf(host.Write("A.TDF", "TDF2")), true);
         Expect("of a text with that extension", isTdf(host.Write("b.tdf", "text")), false);
         Expect("of a capture with another extension", isTdf(host.Write("a.dat", "TDF2")), false);
         Expect("of a missing file", isTdf(host.Path("none.tdf")), false);
         Expect("of null", handle.Call<TestFileFunction>(kIsTdf, static_cast<const char*>(nullptr)), false);
     }},
    {"container.file-size", "FileSize tells the bytes of a file, and 0 of one that can't be opened", kGrantedRule,
     [](Host& host) {
         const auto size = host.Exported<FileSizeFunction*>(kFileSize);
         Expect("of 1000 bytes", size(host.Write("a", std::string(1000, 'x')).c_str()), 1000U);
         Expect("of a missing file", size(host.Path("none").c_str()), 0U);
         Expect("of null", size(nullptr), 0U);
     }},
    {"container.errors", "each failure is a vornError of severity 2 with its own text", kErrorRule,
     [](Host& host) {
         Handle handle(host);
         const std::string missing = host.Path("none.tdf");
         const std::string capture = host.Write("a.tdf", CaptureBytes(SectionBytes("S", 1, "first")));
         const std::string text = host.Write("b.tdf", "text");
         const auto create = [&](const char* path) { handle.Call<CreateFileFunction>(kCreateFile, path); };
         ExpectError(
             "creating null", [&] { create(nullptr); }, "Null file name to create TDF.");
         ExpectError(
             "creating a.dat", [&] { create(host.Path("a.dat").c_str()); }, "TDF file extension must be .tdf.");
         ExpectError(
             "creating a directory", [&] { create(host.Path("x/y.tdf").c_str()); },
             "Could not create TDF file as specified.");
         ExpectError(
             "loading from a text", [&] { handle.Load(text, "S", 1); }, "Invalid TDF format.");
         ExpectError(
             "loading a section that is missing", [&] { handle.Load(capture, "T", 1); },
             "Section size cannot be located in the file.");
         unsigned length = 0;
         ExpectError(
             "loading into nothing",
             [&] {
                 handle.Call<LoadFunction>(kLoad, capture.c_str(), "S", 1U, static_cast<void*>(nullptr), 5U, length);
             },
             "No buffer allocated to load section data.");
     }},
};

}  // namespace

std::span<const Question> ContainerQuestions() { return kContainerTable; }

}  // namespace stmdcm::validate
