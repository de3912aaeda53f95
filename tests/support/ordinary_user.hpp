// Permissions do not bind root, so what they forbid is tried by a process of an ordinary user.
#pragma once

#include <grp.h>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace tarn::tests {

/// What @p function returns in a child process without privileges: of the user nobody, if this one
/// is root's. It must not throw.
inline std::string asOrdinaryUser(const auto& function)
{
    int result[2];
    const bool hasPipe = ::pipe(result) == 0;
    const pid_t child = ::fork();
    if (child == 0) {
        constexpr uid_t NOBODY = 65534;
        const bool isOrdinary =
            ::geteuid() != 0 ||
            (::setgroups(0, nullptr) == 0 && ::setgid(NOBODY) == 0 && ::setuid(NOBODY) == 0);
        const std::string text = isOrdinary ? function() : "cannot become an ordinary user";
        ::_exit(::write(result[1], text.data(), text.size()) < 0 ? 1 : 0);
    }
    std::string text(10'000, '\0');
    int status = 0;
    if (!hasPipe || ::waitpid(child, &status, 0) != child || status != 0) {
        throw std::runtime_error("a process of an ordinary user failed");
    }
    ::close(result[1]);
    text.resize(static_cast<std::size_t>(::read(result[0], text.data(), text.size())));
    ::close(result[0]);
    return text;
}

} // namespace tarn::tests
