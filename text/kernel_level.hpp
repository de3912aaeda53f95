// The levels of processors for which there are kernels.
#pragma once

namespace tarn::text {

/// Each level has what the ones before it have.
enum class KernelLevel
{
    Portable, ///< What every x86-64 processor has: SSE2.
    Ssse3,    ///< SSSE3 and POPCNT.
    Avx2,     ///< AVX2.
    Avx512,   ///< AVX-512 F, BW, VL, VBMI and VBMI2, and BMI2.
};

/// Whether this processor can run the kernels of @p level and the build uses them.
bool canUse(KernelLevel level);

} // namespace tarn::text
