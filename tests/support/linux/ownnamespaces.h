#pragma once

/// Gives this process namespaces of its own of these kinds (CLONE_NEW… of unshare(2)), as root or
/// as the root of a user namespace of its own. To be called before there are threads. False,
/// changing nothing, where the system allows neither.
bool enterOwnNamespaces(int kinds);

/// Likewise with mounts: what is mounted from here on stays with this process. In a chroot it may
/// be seen outside, until it is unmounted.
bool enterOwnMounts();
