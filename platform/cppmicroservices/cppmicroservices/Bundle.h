// Stand-in for the bundle handle of CppMicroServices: the part of its source interface that holders
// of installed bundles use. A program that is written for this one compiles with the real one too.
#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

namespace cppmicroservices {

class BundleRegistry;

/// A handle of an installed bundle. Copies are handles of the same bundle. Bundles are never
/// changed or removed, so that handles can be used by several threads at once.
class Bundle
{
public:
    /// An invalid handle, of no bundle.
    Bundle() = default;

    Bundle(const Bundle&) = default;
    Bundle(Bundle&&) noexcept = default;
    Bundle& operator=(const Bundle&) = default;
    Bundle& operator=(Bundle&&) noexcept = default;
    virtual ~Bundle() = default;

    /// Whether this is the handle of a bundle.
    explicit operator bool() const { return record != nullptr; }

    /// The number of the bundle among those of the process, from 1 upwards in the order in which
    /// they were installed.
    /// @throws std::invalid_argument if the handle is invalid.
    long GetBundleId() const { return valid().id; }

    /// The bundle's name: that of its folder in the archive, in UTF-8.
    /// @throws std::invalid_argument if the handle is invalid.
    std::string GetSymbolicName() const { return valid().symbolicName; }

    /// The path of the file that the bundle was installed from, in UTF-8.
    /// @throws std::invalid_argument if the handle is invalid.
    std::string GetLocation() const { return valid().location; }

    /// Whether both are handles of the same bundle, or both invalid.
    bool operator==(const Bundle& other) const { return record == other.record; }
    bool operator!=(const Bundle& other) const { return !(*this == other); }

    /// Orders handles by their bundles' numbers, and invalid ones before all others.
    bool operator<(const Bundle& other) const
    {
        return other.record != nullptr && (record == nullptr || record->id < other.record->id);
    }

private:
    friend class BundleRegistry;

    struct Record
    {
        long id;
        std::string symbolicName;
        std::string location;
    };

    explicit Bundle(std::shared_ptr<const Record> record) : record(std::move(record)) {}

    const Record& valid() const
    {
        if (record == nullptr) {
            throw std::invalid_argument("invalid bundle");
        }
        return *record;
    }

    std::shared_ptr<const Record> record;
};

} // namespace cppmicroservices
