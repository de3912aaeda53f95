// The crash data service across the boundary between modules.

#include <tarn/services/CrashDataService.hpp>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>
#include <string>

namespace tarn::tests {

namespace {

using utils::services::CrashDataService;

TEST(CrashDataService, IsUsedAcrossModules)
{
    void* const module = ::dlopen(SHARED_LIBRARY, RTLD_NOW);
    ASSERT_NE(module, nullptr) << ::dlerror();
    std::u16string calls;
    // A service comes as a `void*`.
    const auto make = reinterpret_cast<void* (*)(std::u16string&)>(::dlsym(module, "makeProvider"));
    std::unique_ptr<CrashDataService> service(static_cast<CrashDataService*>(make(calls)));
    service->setCrashData(u"document", u"feed.xml");
    service->removeCrashData(u"document");
    EXPECT_THROW(service->setCrashData(u"", u""), std::invalid_argument);
    service.reset();
    EXPECT_EQ(calls, u"document=feed.xml;-document;~");
}

} // namespace

} // namespace tarn::tests
