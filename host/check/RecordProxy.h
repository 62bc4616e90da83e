#pragma once

#include <map>
#include <new>
#include <sstream>
#include <string>

#include "host/check/Kept.h"
#include "host/check/UsecaseProxy.h"

namespace stmdcm_check {

/// The one scratch object of a kind, as the host gets it.
template <class Proxy>
Proxy& Scratch(const char* kind) {
    static Proxy* const scratch = MakeKept<Proxy>(UsecaseLife(kind), nullptr);
    return *scratch;
}

/// A record of the library as the host gets it. Part of its manager's proxy.
template <class RecordIF, class Proxy>
class RecordProxy final : public RecordIF {
  public:
    using Interface = typename RecordIF::UsecaseInterface;

    RecordProxy(const ManagerLife& manager, const char* kind) : m_life{manager, kind, 0, ""} {}
    /// See UsecaseProxy.
    static void operator delete(RecordProxy* self, std::destroying_delete_t) {
        HostCall call("delete", self->m_life.Name(), {});
        PassOn(call, "the record belongs to its manager", [] {});
    }

    /// The proxy for that record, which is the manager's only one of the kind.
    RecordIF* Of(RecordIF* real) {
        m_real = real;
        return this;
    }

    unsigned int GetNumUsecases() const override {
        return Do("GetNumUsecases", {}, [&](HostCall&) { return m_real->GetNumUsecases(); });
    }
    void RemoveUsecase(int selector) override {
        Change("RemoveUsecase", JsonObject().Add("selector", selector), [&] { m_real->RemoveUsecase(selector); });
    }
    void CleaupUsecases(bool keepThoseWithJob) override {
        Change("CleaupUsecases", JsonObject().Add("keepThoseWithJob", keepThoseWithJob),
               [&] { m_real->CleaupUsecases(keepThoseWithJob); });
    }
    void AddUsecase(const Interface* usecase) override {
        const KnownUsecase* known = KnownUsecase::Find(usecase);
        const std::string name = known != nullptr     ? known->life.Name()
                                 : usecase != nullptr ? "an object of the host's"
                                                      : "null";
        Change(
            "AddUsecase", JsonObject().Add("usecase", name),
            [&] {
                auto* proxy = static_cast<Proxy*>(const_cast<Interface*>(usecase));
                proxy->Settle();
                m_real->AddUsecase(proxy->Real());
            },
            ObjectionTo(usecase, known));
    }
    Interface* GetUsecase(unsigned int index) override {
        return Do("GetUsecase", JsonObject().Add("index", index), [&](HostCall& call) -> Interface* {
            Interface* const real = m_real->GetUsecase(index);
            if (real == nullptr) {
                return nullptr;
            }
            Proxy*& proxy = m_usecases[real];
            proxy = proxy != nullptr ? proxy : MakeKept<Proxy>(UsecaseLife(m_life, index), real);
            call.NameResult(proxy->life.Name());
            return proxy;
        });
    }
    Interface* GetAUsecaseInfo() override {
        auto& scratch = Scratch<Proxy>(m_life.kind);
        Do("GetAUsecaseInfo", {}, [&](HostCall& call) -> Interface* {
            scratch.EndLoans();
            scratch.SetReal(m_real->GetAUsecaseInfo());
            call.NameResult(scratch.life.Name());
            return &scratch;
        });
        return &scratch;  // also for a record that has ended: a host fills it without a look
    }
    int SaveAllRecords(std::string& out) const override {
        return Do("SaveAllRecords", {}, [&](HostCall& call) {
            const std::size_t before = out.size();
            const int result = m_real->SaveAllRecords(out);
            call.Given().Add("out", std::string_view(out).substr(before));
            return result;
        });
    }
    int RetrieveAllRecords(std::istringstream& in) override {
        const auto position = in.rdbuf()->in_avail();
        return Change("RetrieveAllRecords", JsonObject().Add("available", position),
                      [&] { return m_real->RetrieveAllRecords(in); });
    }

    /// Brings what the host wrote into borrowed data to the real one.
    void Settle() const {
        for (const auto& [real, proxy] : m_usecases) {
            proxy->Settle();
        }
    }
    /// Ends all that was borrowed from the record.
    void Changed(const HostCall& call) {
        for (const auto& [real, proxy] : m_usecases) {
            proxy->EndLoans();
        }
        m_usecases.clear();
        ++m_life.changes;
        m_life.changedBy = call.Name();
    }

  private:
    std::string ObjectionTo(const Interface* usecase, const KnownUsecase* known) const {
        if (usecase == nullptr) {
            return "the use case is null, which it must not be";
        }
        if (known == nullptr) {
            return "the use case is an object of the host's own; only what GetAUsecaseInfo and GetUsecase give may be "
                   "added";
        }
        if (known->life.Kind() != std::string(m_life.kind)) {
            return std::string("the use case is one of another kind, ") + known->life.Kind();
        }
        const std::string objection = known->life.Objection();
        return objection.empty() ? "" : "the use case is no longer valid: " + objection;
    }
    template <class Work>
    auto Do(const char* operation, const JsonObject& arguments, Work work, const std::string& objection = "") const {
        HostCall call(operation, m_life.Name(), arguments);
        const std::string first = m_life.manager.Objection();
        return PassOn(call, first.empty() ? objection : first, [&] {
            Settle();
            return work(call);
        });
    }
    template <class Work>
    auto Change(const char* operation, const JsonObject& arguments, Work work, const std::string& objection = "") {
        return Do(
            operation, arguments,
            [&](HostCall& call) {
                Settle();
                Changed(call);
                return work();
            },
            objection);
    }

    RecordLife m_life;
    RecordIF* m_real = nullptr;
    std::map<Interface*, Proxy*> m_usecases;  ///< borrowed since the last change, by the real one
};

}  // namespace stmdcm_check
