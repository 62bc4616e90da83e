#pragma once

#include <pybind11/pybind11.h>

#include <exception>
#include <filesystem>
#include <new>
#include <string>

#include "source_utilities/ErrnoText.h"
#include "stmdcm/Failure.h"

namespace stmdcm {

/// A piece of a file: what is no UTF-8 comes as Python's surrogates, from which "surrogateescape" makes it again.
pybind11::str TextOf(const std::string& bytes);

/// Throws the failure as the module's exception (stmdcm/_errors.py).
[[noreturn]] void Raise(const Failure& failure);

/// For long work without the interpreter's lock: throws where the user has interrupted Python meanwhile.
void LetPythonInterrupt();

/// Calls `work()` without the interpreter's lock, so that other threads run meanwhile. Whatever it throws becomes an
/// exception of Python; `file` is what the work is about.
template <class Work>
auto Unlocked(const std::string& file, Work work) {
    try {
        const pybind11::gil_scoped_release released;
        return work();
    } catch (const Failure& failure) {
        Raise(failure);
    } catch (const std::filesystem::filesystem_error& error) {
        Raise({error.path1().string(), ZU_WEP::ErrnoText(error.code().value())});
    } catch (const std::bad_alloc&) {
        throw;  // MemoryError
    } catch (const pybind11::error_already_set&) {
        throw;
    } catch (const std::exception& error) {
        Raise({file, error.what()});
    }
}

}  // namespace stmdcm
