// CrashDataService: the interface through which modules say what a crash report should tell.
#pragma once

#include "tarn/export.hpp"

#include <string>

namespace tarn::utils::services {

/// Takes entries of context that a crash report carries: what was open, which version, which step.
///
/// A module that makes crash reports provides an implementation; other modules use it through a
/// pointer or a reference to this class. The library has no implementation of its own and calls
/// none. An implementation belongs to its provider, and can be deleted through this class.
///
/// **What a provider must promise**
/// - An entry counts from the return of the call that sets it: a crash report that is made
///   afterwards carries it. Strings are copied; the caller's may go.
/// - The entries are read when the report is made, which is after the crash and in a process that
///   may be damaged: by then they stand where reading them takes no lock and allocates nothing.
/// - Any thread may call, at any time, several at once.
/// - A call that fails throws, and leaves the entries as they were.
///
/// What a report does with keys that it does not know is up to it; a provider keeps them like all
/// others.
class TARN_EXPORT CrashDataService
{
public:
    CrashDataService();

    CrashDataService(const CrashDataService&) = delete;
    CrashDataService& operator=(const CrashDataService&) = delete;

    // Defined in the library, and with it the virtual table and the type information, so that every
    // module finds the same ones.
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
