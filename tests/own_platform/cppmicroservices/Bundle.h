#pragma once

#include <string>

namespace cppmicroservices {

struct Bundle
{
    Bundle(int id, const std::u16string& path) : id(id), path(path) {}
    Bundle(const Bundle&) = default;
    virtual ~Bundle() = default;

    int id;
    std::u16string path;
};

} // namespace cppmicroservices
