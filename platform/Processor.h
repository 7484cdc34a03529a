#pragma once

/// Whether the processor and the system have the vector units that x86-64 compilers call x86-64-v3
/// (AVX2 and what came with it), and SSSE3. False on other processors.
bool HasAvx2();
bool HasSsse3();
