#pragma once

// For programs that link the plug-in's code statically (StmDCM::static).

#include <string>

/// An object of this library, whose address tells which file the library was loaded from.
extern const char _anyAddressInThisModuleWillDo;

namespace ZU_WEP {

/// One shared library, unloaded by the destructor. Failures are told by the results and `GetError()`. Not for use by
/// several threads at once. In every call, mode -1 stands for the default, RTLD_LAZY.
class uDll {
  public:
    /// Keeps path (unless null) and mode for `Load`; loads nothing.
    uDll(const char* path, int mode);
    ~uDll();
    uDll(const uDll&) = delete;
    uDll& operator=(const uDll&) = delete;

    /// Loads `path`, or with null the path kept; a mode other than -1 replaces the one kept. True and nothing changed
    /// when a library is loaded already.
    bool Load(const char* path, int mode);
    /// Loads the library of the plain name `name` ("m" for "libm.so") along the dynamic loader's own search path, with
    /// log lines that help to find out why it was not found. Throws `source_utilities_error` when there is no working
    /// directory.
    bool FindAndLoad(const char* name, int mode);
    /// False when nothing is loaded or the loader reports an error; nothing is loaded afterwards either way.
    bool Unload();

    bool IsLoaded() const { return m_handle != nullptr; }
    void* GetLibHandle() { return m_handle; }
    /// Null when there is no such symbol or no library; valid until the library is unloaded.
    void* GetSymbolAddress(const char* symbol);

    const char* GetPath() const { return m_path.c_str(); }
    int GetMode() const { return m_mode; }
    /// The last loader error, "" after a success.
    const char* GetError() const { return m_error.c_str(); }

    /// While a library is loaded, appends the path of the file that holds this class. Returns `path`'s data.
    const char* GetModulePath(std::string& path);

    /// Whether `name` has ".so" anywhere in it and more besides.
    static bool hasExtension(const char* name);
    /// Appends the file name for a plain name ("m" gives "libm.so") to `out`; null appends nothing.
    static const char* GetPlatformName(std::string& out, const char* name);
    /// Appends the plain name for a file name: without its first and its last three characters, whatever they are.
    static const char* GetUniversalName(std::string& out, const char* name);

  private:
    bool Open();
    void TakeError();

    std::string m_path;
    int m_mode;
    void* m_handle = nullptr;
    std::string m_error;
};

}  // namespace ZU_WEP
