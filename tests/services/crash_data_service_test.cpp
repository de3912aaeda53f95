// The crash data service across the boundary between modules.

#include <tarn/services/CrashDataService.hpp>

#include <cstring>
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

/// The order that the binary interface promises: destructor, setCrashData, removeCrashData.
TEST(CrashDataService, KeepsItsVirtualOperationsInOrder)
{
    struct Recorder : CrashDataService
    {
        void setCrashData(const std::u16string&, const std::u16string&) override { called = 's'; }
        void removeCrashData(const std::u16string&) override { called = 'r'; }
        char called = ' ';
    } recorder;

    // By the Itanium ABI, which the platform uses, two entries belong to the destructor.
    using Slot = void (*)(CrashDataService*, const std::u16string*, const std::u16string*);
    const CrashDataService& service = recorder;
    const Slot* table = nullptr;
    std::memcpy(&table, static_cast<const void*>(&service), sizeof(table));
    const std::u16string text;
    table[2](&recorder, &text, &text);
    EXPECT_EQ(recorder.called, 's');
    table[3](&recorder, &text, nullptr);
    EXPECT_EQ(recorder.called, 'r');
}

} // namespace

} // namespace tarn::tests
