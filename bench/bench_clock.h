// The benchmarks' clock: seconds from the performance counter.
#pragma once

#include <windows.h>

inline double Now() {
    LARGE_INTEGER f, c;
    QueryPerformanceFrequency(&f);
    QueryPerformanceCounter(&c);
    return (double)c.QuadPart / (double)f.QuadPart;
}
