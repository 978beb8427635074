#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/* Writes the CTG file of every CT file in <sessionDir>/raw through the time
   marks of <tmPath>; returns the scan lines converted, or -1 on failure. */
long ctg_floor_run(const char* sessionDir, const char* tmPath);

#ifdef __cplusplus
}
#endif
