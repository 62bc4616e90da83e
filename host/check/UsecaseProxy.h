#pragma once

#include <new>
#include <string>

#include "host/check/Lent.h"
#include "host/check/Lives.h"
#include "host/check/PassOn.h"
#include "trace/usecase/CTUsecaseInfoIF.h"
#include "trace/usecase/UsecaseInfoIF.h"

namespace stmdcm_check {

/// What is known about a use case that was handed out, by its address.
class KnownUsecase {
  public:
    explicit KnownUsecase(UsecaseLife usecase) : life(std::move(usecase)) {}

    /// Null for an object that was not handed out by this library.
    static KnownUsecase* Find(const void* address);
    void Register(const void* address);

    UsecaseLife life;
};

/// A use case of the library as the host gets it: passes every call on as long as that is valid.
template <class Interface>
class UsecaseProxy : public Interface, public KnownUsecase {
  public:
    UsecaseProxy(UsecaseLife usecase, Interface* real) : KnownUsecase(std::move(usecase)), m_real(real) {
        Register(static_cast<const Interface*>(this));
    }
    virtual ~UsecaseProxy() = default;  // NOLINT(modernize-use-override): not every interface has a virtual one
    /// The host has no business with this, and gets away with it.
    static void operator delete(UsecaseProxy* self, std::destroying_delete_t) {
        HostCall call("delete", self->life.Name(), {});
        PassOn(call, "the use case belongs to the library", [] {});
        self->life.DeletedBy(call);
    }

    void SetModuleId(unsigned int id) override {
        Do("SetModuleId", JsonObject().Add("id", id), [&] { m_real->SetModuleId(id); });
    }
    unsigned int GetModuleId() const override {
        return Do("GetModuleId", {}, [&] { return m_real->GetModuleId(); });
    }
    void SetModuleName(const char* name) override {
        Do(
            "SetModuleName", JsonObject().Add("name", name), [&] { m_real->SetModuleName(name); }, NullText({name}));
    }
    const char* GetModuleName() const override {
        return Do("GetModuleName", {}, [&] { return m_real->GetModuleName(); });
    }
    void SetProbeName(const char* name) override {
        Do(
            "SetProbeName", JsonObject().Add("name", name), [&] { m_real->SetProbeName(name); }, NullText({name}));
    }
    const char* GetProbeName() const override {
        return Do("GetProbeName", {}, [&] { return m_real->GetProbeName(); });
    }
    void SetSampleWindow(unsigned int window) override {
        Do("SetSampleWindow", JsonObject().Add("window", window), [&] { m_real->SetSampleWindow(window); });
    }
    unsigned int GetSampleWindow() const override {
        return Do("GetSampleWindow", {}, [&] { return m_real->GetSampleWindow(); });
    }
    void SetJobNum(int job) override {
        Do("SetJobNum", JsonObject().Add("job", job), [&] { m_real->SetJobNum(job); });
    }
    int GetJobNum() const override {
        return Do("GetJobNum", {}, [&] { return m_real->GetJobNum(); });
    }

    Interface* Real() const { return m_real; }
    void SetReal(Interface* real) { m_real = real; }
    /// Brings what the host wrote into borrowed counters and formulas to the real ones.
    void Settle() {}
    /// Ends what was borrowed from this use case.
    void EndLoans() {}

  protected:
    static std::string NullText(std::initializer_list<const char*> texts) {
        for (const char* text : texts) {
            if (text == nullptr) {
                return "a text is null, which none may be";
            }
        }
        return "";
    }
    /// `objection`: what is wrong with the arguments.
    template <class Work>
    auto Do(const char* operation, const JsonObject& arguments, Work work, const std::string& objection = "") const {
        HostCall call(operation, life.Name(), arguments);
        const std::string first = m_real != nullptr ? life.Objection() : "there was no record to make it";
        return PassOn(call, first.empty() ? objection : first, work);
    }

  private:
    Interface* m_real;
};

class ScUsecaseProxy final : public UsecaseProxy<Zu::Wep::Trace::UsecaseInfoIF> {
  public:
    ScUsecaseProxy(UsecaseLife usecase, Zu::Wep::Trace::UsecaseInfoIF* real);

    void SetSuppress(bool suppress) override;
    bool GetSuppress() const override;
    void AddCounter(const Zu::Wep::Trace::_CounterLineInfo* counter) override;
    void AddFormula(const char* name, const char* formula, const char* unit, unsigned int ofmask) override;
    unsigned int GetNumCounters() const override;
    unsigned int GetNumFormulars() const override;
    Zu::Wep::Trace::_CounterLineInfo* GetCounterInfo(unsigned int index) override;
    Zu::Wep::Trace::FormulaInfo* GetFormula(unsigned int index) override;

    void Settle();
    void EndLoans();
    /// Tells which borrowed counters and formulas were written after their end.
    static void TellWrittenTooLate(const std::string& when);

  private:
    /// Of any use case.
    static bool IsOver(const Zu::Wep::Trace::_CounterLineInfo* counter);

    Lent<Zu::Wep::Trace::_CounterLineInfo> m_counters;
    Lent<Zu::Wep::Trace::FormulaInfo> m_formulas;
};

class CptUsecaseProxy final : public UsecaseProxy<Zu::Wep::Trace::CTUsecaseInfoIF> {
  public:
    using UsecaseProxy::UsecaseProxy;

    void SetDataOptions(Zu::Wep::Trace::eCTDataOption option, bool enable) override;
    bool IsOptionEnabled(Zu::Wep::Trace::eCTDataOption option) const override;
    void SetClockRate(unsigned int rate) override;
    unsigned int GetClockRate() const override;
    void SetDividFactor(unsigned int factor) override;
    unsigned int GetDividFactor() const override;
    void SetModuleMode(unsigned int mode) override;
    unsigned int GetModuleMode() const override;
};

using PmiUsecaseProxy = UsecaseProxy<Zu::Wep::Trace::UsecaseInfoIFBase>;

}  // namespace stmdcm_check
