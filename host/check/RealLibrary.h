#pragma once

#include <string>

#include "trace/dcm/DeviceConfigManager.h"

namespace stmdcm_check {

/// The library that the checker stands in front of: the one that STMDCM_CHECK_LIBRARY names, or libStmDCM.so beside the
/// checker's own file, or in the folder around that. Loaded and unloaded together with the checker.
class RealLibrary {
  public:
    /// Tells why, and stays without it, when it can't be loaded.
    static void Load();
    static void Unload();

    /// Null for the Create of a library that could not be loaded.
    static decltype(&CreateDeviceConfigManager) Create();
    static decltype(&DestroyDeviceConfigManager) Destroy();

    /// Of an exported function; throws std::runtime_error where there is none.
    template <class Function>
    static Function* Symbol(const char* name) {
        return reinterpret_cast<Function*>(Address(name));
    }

  private:
    static void* Address(const char* name);
};

}  // namespace stmdcm_check
