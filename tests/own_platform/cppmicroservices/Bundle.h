#pragma once

#include <string>

namespace cppmicroservices {

struct Bundle
{
    int id;
    std::u16string path;
};

} // namespace cppmicroservices
