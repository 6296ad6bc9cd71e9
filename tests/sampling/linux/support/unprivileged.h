#pragma once

#include <unistd.h>

/// Takes the privileges of root from the process, where it has them, as long as this exists.
class Unprivileged
{
public:
    static constexpr uid_t nobody = 65534;

    Unprivileged() : m_user(::geteuid())
    {
        if (m_user == 0 && ::seteuid(nobody) != 0)
            ::_exit(3);
    }
    ~Unprivileged()
    {
        if (m_user == 0 && ::seteuid(m_user) != 0)
            ::_exit(3);
    }
    Unprivileged(const Unprivileged &) = delete;
    Unprivileged &operator=(const Unprivileged &) = delete;

private:
    uid_t m_user;
};
