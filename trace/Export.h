#pragma once

/// Marks what the plug-in exports; everything else stays hidden (see cmake/StmDCM.map).
#define STMDCM_EXPORT __attribute__((visibility("default")))
