#include "platform/Processor.h"

#if defined(__x86_64__) || defined(__i386__)

bool HasAvx2() {
    return __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("bmi") != 0 &&
           __builtin_cpu_supports("bmi2") != 0 && __builtin_cpu_supports("fma") != 0;
}

bool HasSsse3() {
    return __builtin_cpu_supports("ssse3") != 0;
}

#else

bool HasAvx2() {
    return false;
}

bool HasSsse3() {
    return false;
}

#endif
