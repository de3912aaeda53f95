// The crash data service across the boundary between modules.

#include <tarn/services/CrashDataService.hpp>

#include <cstring>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>
#include <type_traits>

namespace tarn::tests {

namespace {

using utils::services::CrashDataService;

/// What crash_provider.cpp makes, by the address that it returns as a `void*`.
CrashDataService* makeProvider(int& destructions)
{
    void* const module = ::dlopen(SHARED_LIBRARY, RTLD_NOW);
    if (module == nullptr) {
        throw std::runtime_error(::dlerror());
    }
    const auto make = reinterpret_cast<void* (*)(int&)>(::dlsym(module, "makeProvider"));
    return static_cast<CrashDataService*>(make(destructions));
}

TEST(CrashDataService, IsUsedAcrossModules)
{
    int destructions = 0;
    std::unique_ptr<CrashDataService> service(makeProvider(destructions));
    service->setCrashData(u"document", u"feed.xml");
    service->removeCrashData(u"document");
    service->removeCrashData(u"never set");
    EXPECT_THROW(service->setCrashData(u"", u""), std::invalid_argument);
    service.reset();
    EXPECT_EQ(destructions, 1);
}

struct Local : CrashDataService
{
    void setCrashData(const std::u16string&, const std::u16string&) override {}
    void removeCrashData(const std::u16string&) override {}
};

TEST(CrashDataService, IsOneTypeInAllModules)
{
    int destructions = 0;
    const std::unique_ptr<CrashDataService> foreign(makeProvider(destructions));
    const std::unique_ptr<CrashDataService> local = std::make_unique<Local>();
    EXPECT_EQ(dynamic_cast<Local*>(foreign.get()), nullptr);
    EXPECT_NE(dynamic_cast<Local*>(local.get()), nullptr);
    try {
        throw foreign.get();
    } catch (const CrashDataService* caught) {
        EXPECT_EQ(caught, foreign.get());
    }
}

/// The order that the binary interface promises: destructor, setCrashData, removeCrashData.
TEST(CrashDataService, KeepsItsVirtualOperationsInOrder)
{
    static_assert(sizeof(CrashDataService) == sizeof(void*));
    static_assert(std::is_abstract_v<CrashDataService>);
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
