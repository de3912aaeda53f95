// A program that uses only the installed interface of the services.
#include <tarn/services/BundleContainer.hpp>
#include <tarn/services/CrashDataService.hpp>

#include <iostream>
#include <stdexcept>
#include <string>

namespace {

class LastValue : public tarn::utils::services::CrashDataService
{
public:
    void setCrashData(const std::u16string&, const std::u16string& value) override { last = value; }
    void removeCrashData(const std::u16string&) override { last.clear(); }
    std::u16string last;
};

} // namespace

int main()
{
    LastValue values;
    tarn::utils::services::CrashDataService& service = values;
    service.setCrashData(u"step", u"linking");
    std::string message = "no exception";
    try {
        tarn::utils::services::BundleContainer(u"/nowhere/at all");
    } catch (const std::runtime_error& error) {
        message = error.what();
    }
    const bool isRight = message.find("/nowhere/at all") == 0 && values.last == u"linking" &&
                         !cppmicroservices::Bundle();
    std::cout << (isRight ? "as expected" : "wrong: " + message) << '\n';
    return isRight ? 0 : 1;
}
