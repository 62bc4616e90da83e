#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "host/CDeviceIdentifier.h"
#include "host/CPUInfo.h"

namespace stmdcm::validate {

/// Where a question is asked.
struct Surroundings {
    std::string library;  ///< an absolute path
    std::string folder;   ///< of the question's own, with empty folders "home" and "tmp" in it
    std::uint32_t seed = 0;
    bool hasTarget = false;  ///< the dynamic loader finds the simulated trace factory (docs/scenario.md)
};

/// A host that a question plays: the library, a folder, chance. HOME is "home" in the folder; no ZU_TRACE_* is set.
class Host {
  public:
    explicit Host(Surroundings surroundings);
    /// Unloads the library.
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    const std::string& LibraryPath() const { return m_surroundings.library; }
    bool HasTarget() const { return m_surroundings.hasTarget; }

    /// Loads the library, unless it is loaded; the first symbol that is asked for does so, too.
    void Load();
    void Unload();
    /// Null where it exports no such thing, or not of that version.
    void* Symbol(const char* name, const char* version = nullptr);
    template <class Function>
    Function Exported(const char* name) {
        return reinterpret_cast<Function>(ExistingSymbol(name));
    }
    void* Create(Zu::Wep::Trace::CPUInfo* cpu, Zu::Wep::Trace::CDeviceIdentifier* id);
    void Destroy(void* manager);

    /// A path in the folder.
    std::string Path(const std::string& name) const { return m_surroundings.folder + "/" + name; }
    std::string Home(const std::string& name) const { return Path("home/" + name); }
    /// A settings file, in the directory that the first manager has named.
    static std::string Settings(const std::string& name);
    /// Gives the path.
    std::string Write(const std::string& name, const std::string& bytes) const;
    /// One that was modified then, in seconds since 1970.
    std::string WriteDated(const std::string& name, std::int64_t modified) const;
    /// "(none)" where there is no such file.
    static std::string Read(const std::string& path);
    static void Remove(const std::string& path);
    /// What the process has written on its standard output and standard error so far.
    std::string Printed() const;

    /// A number from 0 on, below that one.
    std::uint32_t Chance(std::uint32_t below) { return static_cast<std::uint32_t>(m_random() % below); }
    /// Any value.
    std::int32_t AnyNumber() { return static_cast<std::int32_t>(m_random()); }
    /// The lines of the 26 properties, with values of which none is the default.
    std::string AnyProperties();

  private:
    void* ExistingSymbol(const char* name);

    Surroundings m_surroundings;
    std::mt19937 m_random;
    void* m_library = nullptr;
};

/// The regular files below a folder, by their paths in it, in order.
std::vector<std::string> FilesBelow(const std::string& folder);

/// Use cases of each kind, as a manager writes them behind its properties (docs/use-case-blocks.md).
extern const char kUsecaseBlocks[];

/// What a process holds: what a library keeps shows in it.
struct Held {
    static std::size_t Descriptors();
    static std::size_t Threads();
    /// Bytes of the heap that are in use; 0 where they can't be told.
    static std::size_t Heap();
};

}  // namespace stmdcm::validate
