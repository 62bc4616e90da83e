#pragma once

#include <exception>
#include <string>
#include <type_traits>

#include "host/check/Output.h"

namespace stmdcm_check {

/// One call, from its begin to its end: of the host into the library, or back into an object of the host's. Numbered
/// from 1, and traced. Two calls of the host that overlap in time on two threads are told.
class HostCall {
  public:
    enum class Kind {
        Guarded,  ///< one thread at a time
        Free,     ///< from any thread
        Callback  ///< of the library into the host
    };

    HostCall(std::string operation, std::string object, const JsonObject& arguments, Kind kind = Kind::Guarded);
    ~HostCall();
    HostCall(const HostCall&) = delete;
    HostCall& operator=(const HostCall&) = delete;

    /// For sentences about other calls: `Destroy (call 12)`.
    std::string Name() const;
    /// Tells what is wrong with this call.
    void Tell(const std::string& sentence) const;
    /// What the call gives apart from its result; goes into the trace.
    JsonObject& Given() { return m_given; }

    /// Calls `work()`; its result, or what it throws, is traced and passed on. `onThrow(words)` hears of the latter.
    template <class Work, class OnThrow>
    std::invoke_result_t<Work> Run(Work work, OnThrow onThrow) {
        try {
            if constexpr (std::is_void_v<std::invoke_result_t<Work>>) {
                work();
                End("null");
            } else if constexpr (std::is_pointer_v<std::invoke_result_t<Work>> &&
                                 !std::is_same_v<std::invoke_result_t<Work>, const char*>) {
                auto* const result = work();
                End(result == nullptr ? "null" : JsonOf(m_resultName));
                return result;
            } else {
                std::invoke_result_t<Work> result = work();
                End(JsonOf(result));
                return result;
            }
        } catch (...) {
            onThrow(EndByException());
            throw;
        }
    }
    template <class Work>
    std::invoke_result_t<Work> Run(Work work) {
        return Run(work, [](const std::string&) {});
    }
    /// What a result that is a pointer is called in the trace.
    void NameResult(const std::string& name) { m_resultName = name; }

  private:
    void End(const std::string& result);
    /// Gives the exception in words.
    std::string EndByException();
    void TraceReturn(const char* how, const std::string& json);

    std::string m_operation;
    std::string m_object;
    unsigned long m_number;
    JsonObject m_given;
    std::string m_resultName = "an object";
};

}  // namespace stmdcm_check
