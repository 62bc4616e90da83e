#include "stmdcm/plugin/TraceDataFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <filesystem>

#include "host/vorn/vornError.h"
#include "stmdcm/Failure.h"

namespace stmdcm {

namespace {

/// Makes an exported member function callable. This is the C++ ABI's form of a pointer to a non-virtual member.
template <class Member>
Member Resolve(const Plugin& plugin, const std::string& mangledTail) {
    struct {
        void* function;
        std::ptrdiff_t adjustment;
    } const pointer{plugin.Symbol(("_ZN2Zu3Wep5Trace10TDFHandler" + mangledTail).c_str()), 0};
    return std::bit_cast<Member>(pointer);
}

template <class Operation>
void NamingTheFile(const std::string& path, Operation operation) {
    try {
        operation();
    } catch (const Zu::Wep::Vorn::vornError& error) {
        throw Failure(path, error.what());
    }
}

}  // namespace

TraceDataFile::TraceDataFile(const Plugin& plugin)
    : m_construct(Resolve<Lifetime>(plugin, "C1Ev")),
      m_destroy(Resolve<Lifetime>(plugin, "D1Ev")),
      m_create(Resolve<decltype(m_create)>(plugin, "13CreateTDFFileEPKc")),
      m_saveHeader(Resolve<decltype(m_saveHeader)>(plugin, "17SaveSectionHeaderEPKcS4_jRj")),
      m_saveData(Resolve<decltype(m_saveData)>(plugin, "15SaveSectionDataEPKcS4_jPKvjjRj")),
      m_position(Resolve<decltype(m_position)>(plugin, "22GetSectionDataPositionEPKcS4_jRjS5_")),
      m_load(Resolve<decltype(m_load)>(plugin, "15LoadSectionDataEPKcS4_jPvjRj")) {
    (Object().*m_construct)();
}

TraceDataFile::~TraceDataFile() { (Object().*m_destroy)(); }

void TraceDataFile::Create(const std::string& path) {
    NamingTheFile(path, [&] { (Object().*m_create)(path.c_str()); });
}

void TraceDataFile::AppendSection(const std::string& path, const char* name, unsigned version,
                                  std::string_view payload) {
    NamingTheFile(path, [&] {
        unsigned offset = 0;
        unsigned length = 0;
        (Object().*m_saveHeader)(path.c_str(), name, version, offset);
        if (!payload.empty()) {
            (Object().*m_saveData)(path.c_str(), name, offset, payload.data(), 1, static_cast<unsigned>(payload.size()),
                                   length);
        }
    });
}

std::string TraceDataFile::ReadSection(const std::string& path, const char* name, unsigned version) {
    std::string payload;
    NamingTheFile(path, [&] {
        unsigned position = 0;
        unsigned length = 0;
        (Object().*m_position)(path.c_str(), name, version, position, length);
        // The stated length may lie; the file holds no more than this.
        const std::uintmax_t size = std::filesystem::file_size(path);
        payload.resize(std::min<std::uintmax_t>(length, size - std::min<std::uintmax_t>(size, position)));
        if (!payload.empty()) {
            unsigned read = 0;
            (Object().*m_load)(path.c_str(), name, version, payload.data(), static_cast<unsigned>(payload.size()),
                               read);
            payload.resize(read);
        }
    });
    return payload;
}

}  // namespace stmdcm
