#pragma once

#include <functional>
#include <string>
#include <vector>

#include "trace/dcm/CDeviceConfigEvents.h"

namespace stmdcm {

/// What a manager asked about an object file, and what it was told.
struct ObjectFileQuestion {
    std::string file;
    bool changed = false;  ///< the file is there but was modified; otherwise it is missing
    std::string answer;    ///< empty: there is none
};

/// The host's end of a manager's questions; remembers them all.
class ObjectFileQuestions final : public Zu::Wep::Trace::CDeviceConfigEvents {
  public:
    /// Gives the path to use for the file in question, empty for none.
    using Answer = std::function<std::string(const ObjectFileQuestion&)>;

    explicit ObjectFileQuestions(Answer answer) : m_answer(std::move(answer)) {}

    void OnUpdateObjectFile(const std::string& file, bool timeStampChanged, std::string& newFile) override {
        ObjectFileQuestion question{file, timeStampChanged, {}};
        question.answer = m_answer ? m_answer(question) : std::string();
        newFile = question.answer;
        m_asked.push_back(std::move(question));
    }

    const std::vector<ObjectFileQuestion>& Asked() const { return m_asked; }

  private:
    Answer m_answer;
    std::vector<ObjectFileQuestion> m_asked;
};

}  // namespace stmdcm
