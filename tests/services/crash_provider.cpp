// A module that provides the crash data service.
#include <tarn/services/CrashDataService.hpp>

#include <stdexcept>

namespace {

/// Notes its calls.
class Provider : public tarn::utils::services::CrashDataService
{
public:
    explicit Provider(std::u16string& calls) : calls(calls) {}
    ~Provider() override { calls += u'~'; }

    void setCrashData(const std::u16string& key, const std::u16string& value) override
    {
        if (key.empty()) {
            throw std::invalid_argument("an entry needs a key");
        }
        calls += key + u'=' + value + u';';
    }

    void removeCrashData(const std::u16string& key) override { calls += u'-' + key + u';'; }

private:
    std::u16string& calls;
};

} // namespace

extern "C" __attribute__((visibility("default"))) void* makeProvider(std::u16string& calls)
{
    return static_cast<tarn::utils::services::CrashDataService*>(new Provider(calls));
}
