#pragma once

namespace stmdcm {

/// The parts of a configuration that are to be shown.
struct Selection {
    bool properties = true;
    bool usecases = true;
    bool objectFiles = true;
    bool changedOnly = false;  ///< of the properties, those alone that are not at their default
};

}  // namespace stmdcm
