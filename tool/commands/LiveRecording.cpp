#include "tool/commands/LiveRecording.h"

#include <fmt/format.h>

#include "stmdcm/plugin/TargetRecorder.h"
#include "stmdcm/plugin/TraceHome.h"
#include "stmdcm/plugin/WorkingFile.h"
#include "stmdcm/reading/Words.h"

namespace stmdcm {

LiveRecording::LiveRecording(const TraceHome& home, const std::string& file, bool force,
                             const std::vector<std::string>& inputs) {
    if (!file.empty()) {
        m_working = (home.Path() / "recording.json").string();
        m_output.emplace(file, force, inputs);
        RecordInto(m_working);
    }
}

std::vector<std::string> LiveRecording::Keep() {
    if (!m_output || !std::filesystem::exists(m_working)) {  // no factory was there to be asked
        return {};
    }
    const std::string scenario = ReadWorkingFile(m_working);
    m_output->Write(scenario);
    m_output->Commit();
    std::vector<std::string> sentences;
    for (const std::vector<std::string>& list : {RemarksOf(scenario), m_output->NotKept()}) {
        for (const std::string& sentence : list) {
            sentences.push_back(fmt::format("{}: {}", Shown(m_output->Path()), sentence));
        }
    }
    return sentences;
}

}  // namespace stmdcm
