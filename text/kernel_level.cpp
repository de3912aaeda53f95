#include "text/kernel_level.hpp"

namespace tarn::text {

namespace {

bool canRun(KernelLevel level)
{
    if (level == KernelLevel::Portable) {
        return true;
    }
    if (level == KernelLevel::Ssse3) {
        return __builtin_cpu_supports("ssse3") && __builtin_cpu_supports("popcnt");
    }
    if (level == KernelLevel::Avx2) {
        return canRun(KernelLevel::Ssse3) && __builtin_cpu_supports("avx2");
    }
    return canRun(KernelLevel::Avx2) && __builtin_cpu_supports("avx512f") &&
           __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl") &&
           __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("avx512vbmi2") &&
           __builtin_cpu_supports("bmi2");
}

} // namespace

bool canUse(KernelLevel level)
{
    return level <= KernelLevel::BEST_KERNELS && canRun(level);
}

} // namespace tarn::text
