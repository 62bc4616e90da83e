#pragma once

#include "host/CDeviceIdentifier.h"
#include "host/CPUInfo.h"
#include "trace/Interface.h"
#include "trace/dcm/CDeviceConfigManager.h"

/// Makes a manager for `cpu`, which it borrows together with `id` (may be null). The result points at a
/// Zu::Wep::Trace::CDeviceConfigManager, in truth a StmDeviceConfigManagerIF; null when `cpu` is null.
/// Loads the CPU's settings file where there is one. Throws only what allocation throws.
extern "C" STMDCM_EXPORT void* CreateDeviceConfigManager(Zu::Wep::Trace::CPUInfo* cpu,
                                                         Zu::Wep::Trace::CDeviceIdentifier* id);

/// Ends a manager; null is ignored. Everything borrowed from the manager ends with it.
extern "C" STMDCM_EXPORT void DestroyDeviceConfigManager(Zu::Wep::Trace::CDeviceConfigManager* manager);
