#pragma once

// What every header for hosts stands on: docs/interface-policy.md.

#include <cstddef>

#if __cplusplus < 201703L
#error "libStmDCM: its headers need C++17 or newer (-std=c++17)"
#endif
#if defined(_LIBCPP_VERSION) || !defined(__GLIBCXX__)
#error "libStmDCM: hosts share std::string and std::vector with it, so they need libstdc++, as it does itself"
#endif
#if !_GLIBCXX_USE_CXX11_ABI
#error "libStmDCM: hosts share std::string with it, so they need the new one (-D_GLIBCXX_USE_CXX11_ABI=1)"
#endif

/// The version of the interface that these headers describe: what a library that has it exports bears this as its
/// symbol version, so that `dlvsym(library, "CreateDeviceConfigManager", STMDCM_INTERFACE_VERSION)` is null for
/// another.
#define STMDCM_INTERFACE_VERSION "STMDCM_1"

/// Marks what the plug-in exports; everything else stays hidden (see cmake/StmDCM.map).
#define STMDCM_EXPORT __attribute__((visibility("default")))
