#include "host/check/HostCall.h"

#include <cxxabi.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "host/check/Kept.h"

namespace stmdcm_check {

namespace {

/// A call that has not ended, the callbacks left out.
struct Open {
    unsigned long number;
    pid_t thread;
    std::string name;
};

std::mutex openLock;
std::atomic<unsigned long> lastNumber{0};

/// As long as the outputs, see Output.cpp.
std::vector<Open>& OpenCalls() {
    static auto* const calls = MakeKept<std::vector<Open>>();
    return *calls;
}

std::string TypeName(const std::type_info& type) {
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> name(abi::__cxa_demangle(type.name(), nullptr, nullptr, &status),
                                                           &std::free);
    return name != nullptr ? name.get() : type.name();
}

struct Thrown {
    std::string type;
    std::string text;
};

/// What is being handled.
Thrown CurrentException() {
    const std::type_info* type = abi::__cxa_current_exception_type();
    Thrown thrown{type != nullptr ? TypeName(*type) : "a foreign exception", ""};
    try {
        throw;
    } catch (const std::exception& error) {
        thrown.text = error.what();
    } catch (...) {
        return thrown;
    }
    return thrown;
}

}  // namespace

HostCall::HostCall(std::string operation, std::string object, const JsonObject& arguments, Kind kind)
    : m_operation(std::move(operation)), m_object(std::move(object)), m_number(++lastNumber) {
    JsonObject line;
    line.Add("call", m_number).Add("object", m_object).Add("operation", m_operation);
    Trace(kind == Kind::Callback ? "callback" : "call", line.AddJson("arguments", arguments.Text()));
    if (kind != Kind::Guarded) {
        return;
    }
    std::string other;
    {
        const std::lock_guard lock(openLock);
        const pid_t thread = ::gettid();
        const auto found = std::find_if(OpenCalls().begin(), OpenCalls().end(),
                                        [thread](const Open& call) { return call.thread != thread; });
        other = found != OpenCalls().end() ? found->name : "";
        OpenCalls().push_back({m_number, thread, Name()});
    }
    if (!other.empty()) {
        Tell("another thread is in " + other + " still; one thread at a time may call");
    }
}

HostCall::~HostCall() {
    const std::lock_guard lock(openLock);
    std::erase_if(OpenCalls(), [this](const Open& call) { return call.number == m_number; });
}

std::string HostCall::Name() const {
    return m_operation + (m_object.empty() ? "" : " of " + m_object) + " (call " + std::to_string(m_number) + ")";
}

void HostCall::Tell(const std::string& sentence) const { stmdcm_check::Tell(Name() + ": " + sentence); }

void HostCall::End(const std::string& result) { TraceReturn("result", result); }

std::string HostCall::EndByException() {
    const Thrown thrown = CurrentException();
    TraceReturn("exception", JsonObject().Add("type", thrown.type).Add("text", thrown.text).Text());
    return thrown.type + (thrown.text.empty() ? "" : ": " + thrown.text);
}

void HostCall::TraceReturn(const char* how, const std::string& json) {
    JsonObject line;
    line.Add("call", m_number).AddJson(how, json);
    if (!m_given.IsEmpty()) {
        line.AddJson("given", m_given.Text());
    }
    Trace("return", line);
}

}  // namespace stmdcm_check
