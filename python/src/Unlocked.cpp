#include "python/src/Unlocked.h"

#include <pybind11/stl.h>

namespace stmdcm {

namespace py = pybind11;

py::str TextOf(const std::string& bytes) {
    PyObject* text = PyUnicode_DecodeUTF8(bytes.data(), static_cast<Py_ssize_t>(bytes.size()), "surrogateescape");
    if (text == nullptr) {
        throw py::error_already_set();
    }
    return py::reinterpret_steal<py::str>(text);
}

void Raise(const Failure& failure) {
    const bool isRequest = failure.Reason() == Failure::Kind::Request;
    const py::object type = py::module_::import("stmdcm._errors").attr(isRequest ? "RequestError" : "Error");
    const py::object file = failure.File().empty() ? py::object(py::none()) : TextOf(failure.File());
    const py::object error = type(TextOf(failure.Cause()), file, py::cast(failure.Offset()));
    PyErr_SetObject(type.ptr(), error.ptr());
    throw py::error_already_set();
}

void LetPythonInterrupt() {
    const py::gil_scoped_acquire acquired;
    if (PyErr_CheckSignals() != 0) {
        throw py::error_already_set();
    }
}

}  // namespace stmdcm
