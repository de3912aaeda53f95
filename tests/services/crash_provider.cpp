// A module that provides the crash data service.
#include <tarn/services/CrashDataService.hpp>

#include <map>
#include <stdexcept>

namespace {

class Provider : public tarn::utils::services::CrashDataService
{
public:
    explicit Provider(int& destructions) : destructions(destructions) {}
    ~Provider() override { ++destructions; }

    void setCrashData(const std::u16string& key, const std::u16string& value) override
    {
        if (key.empty()) {
            throw std::invalid_argument("an entry needs a key");
        }
        entries[key] = value;
    }

    void removeCrashData(const std::u16string& key) override { entries.erase(key); }

private:
    int& destructions;
    std::map<std::u16string, std::u16string> entries;
};

} // namespace

extern "C" __attribute__((visibility("default"))) void* makeProvider(int& destructions)
{
    return static_cast<tarn::utils::services::CrashDataService*>(new Provider(destructions));
}
