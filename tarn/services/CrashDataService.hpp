// CrashDataService: the interface through which modules give a crash report its context. The guide,
// docs/guide.md, has a section on it (installed as share/doc/libtarn-utils-dev/guide.md).
#pragma once

#include "tarn/export.hpp"

#include <string>

namespace tarn::utils::services {

/// Takes entries of context for crash reports: which file was open, which version, which step.
///
/// A module that makes crash reports provides an implementation; other modules use it through a
/// pointer or a reference to this class. The library has no implementation of its own and calls
/// none. An implementation belongs to its provider, and can be deleted through this class.
///
/// **What a provider must promise**
/// - When a call that sets an entry has returned, every later crash report has that entry. Strings
///   are copied, so that the caller can destroy its own.
/// - The entries are read when a report is made: after the crash, in a process that may be damaged.
///   They are kept so that reading them takes no lock and allocates nothing.
/// - Any thread may call at any time, several at once.
/// - A call that fails throws, and leaves the entries as they were.
///
/// A provider keeps entries with any key. What a report does with keys that it does not know is up
/// to the report.
class TARN_EXPORT CrashDataService
{
public:
    CrashDataService();

    CrashDataService(const CrashDataService&) = delete;
    CrashDataService& operator=(const CrashDataService&) = delete;

    // Defined in the library, so that the virtual table and the type information are there too and
    // every module finds the same ones.
    virtual ~CrashDataService();

    /// Attaches an entry, in place of the one with the same key if there is one.
    ///
    /// @param key the name of the entry, compared code unit by code unit.
    /// @param value UTF-16 text of any length, which may be empty; surrogates need not be paired.
    virtual void setCrashData(const std::u16string& key, const std::u16string& value) = 0;

    /// Takes away the entry with the key @p key. Without such an entry nothing happens.
    virtual void removeCrashData(const std::u16string& key) = 0;
};

} // namespace tarn::utils::services
