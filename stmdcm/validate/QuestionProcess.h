#pragma once

#include <sys/types.h>

#include <chrono>

#include "source_utilities/PosixFile.h"
#include "stmdcm/validate/Host.h"
#include "stmdcm/validate/Question.h"

namespace stmdcm::validate {

/// A question that is asked in a process of its own, which is killed with this. What the process prints goes into a
/// file of the question's folder.
class QuestionProcess {
  public:
    using Clock = std::chrono::steady_clock;

    /// Borrows the question; makes the folder. Throws Failure where no process can be started.
    QuestionProcess(const Question& question, Surroundings surroundings);
    /// Removes the folder.
    ~QuestionProcess();
    QuestionProcess(const QuestionProcess&) = delete;
    QuestionProcess& operator=(const QuestionProcess&) = delete;

    /// Can be read once the process has ended.
    int Descriptor() const { return m_ended; }
    Clock::time_point Begun() const { return m_begun; }

    /// Of a process that has ended. Of one that has not, which is killed: that its time was over.
    Answer Result();

  private:
    void Kill();
    bool Take(Answer& answer) const;

    const Question& m_question;
    Surroundings m_surroundings;
    ZU_WEP::PosixFile m_answer;  ///< in memory, shared with the process
    Clock::time_point m_begun = Clock::now();
    pid_t m_process = -1;
    int m_ended = -1;
};

}  // namespace stmdcm::validate
