#pragma once

#include <QtGlobal>

#include <sys/resource.h>

/// While it lives, this process may have no more than so many descriptors, counted with the gaps
/// between those it has.
class DescriptorLimit
{
public:
    explicit DescriptorLimit(rlim_t descriptors)
    {
        ::getrlimit(RLIMIT_NOFILE, &m_before);
        rlimit limit = m_before;
        limit.rlim_cur = descriptors;
        if (::setrlimit(RLIMIT_NOFILE, &limit) != 0)
            qFatal("setrlimit failed");
    }
    ~DescriptorLimit() { ::setrlimit(RLIMIT_NOFILE, &m_before); }
    Q_DISABLE_COPY_MOVE(DescriptorLimit)

private:
    rlimit m_before{};
};
