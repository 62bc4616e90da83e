#pragma once

namespace stmdcm {

/// How far a change of a file goes. A dry run takes every step in front of the first write, the lock too: it refuses
/// what would be refused, and tells what would be told.
enum class ChangeMode { Write, DryRun };

}  // namespace stmdcm
