#pragma once

/// Whether the processor and the system have AVX2 with BMI, BMI2 and FMA, and whether they have
/// SSSE3. False on other processors.
bool HasAvx2();
bool HasSsse3();
