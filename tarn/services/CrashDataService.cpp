#include "tarn/services/CrashDataService.hpp"

namespace tarn::utils::services {

CrashDataService::CrashDataService() = default;

CrashDataService::~CrashDataService() = default;

} // namespace tarn::utils::services
